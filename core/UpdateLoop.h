// The display tick. No timer drives it: each capture block does, about 18.3 times a second. Detects
// the pitch, accepts and smooths the frequency, times out the centre lamp and holds the peak, and
// asks the display for exactly what changed. Main thread; allocates nothing.
#pragma once

#include <cstdint>

#include "core/CaptureBlock.h"
#include "core/OneThread.h"
#include "core/PitchDetector.h"

namespace orvane {

// What a tick may ask of the display, in this order.
class UpdateLoopDisplay {
 public:
  virtual ~UpdateLoopDisplay() = default;
  // The frequency differs from the one shown. Sets mDisplayFrequency when it could be shown.
  virtual void updateTunerUI() = 0;
  // No reading was accepted for a while: the centre lamp turns grey, the rest stays.
  virtual void grayCentreLamp() = 0;
  // The level or its hold differs from what is drawn. Sets mDisplayPeak and mDisplayPeakHold.
  virtual void setLevelMeter() = 0;
};

class UpdateLoop {
 public:
  struct Tick {
    bool detected;          // this block had a pitch
    float rawFrequency;     // hertz; of this block when it was detected
    bool accepted;          // a frequency was accepted
    std::int64_t peakHold;  // as drawn by this tick, before a release
  };

  // Both must outlive this.
  UpdateLoop(PitchDetector &detector, UpdateLoopDisplay &display)
      : mDetector(detector), mDisplay(display) {}

  // now: seconds on a monotonic clock, read once per tick.
  Tick updateUI(CaptureBlock block, double now);

  float mFrequency = 0.0F;            // hertz, accepted and smoothed
  float mDisplayFrequency = 0.0F;     // hertz, what the display last showed
  double mNextTunerUpdateTime = 0.0;  // seconds, on the clock of `now`
  std::int64_t mDisplayPeak = 0;      // levels 0 to 96
  std::int64_t mPeakHold = 0;
  std::int64_t mDisplayPeakHold = 0;
  double mNextPeakHoldTime = 0.0;  // seconds, on the clock of `now`

 private:
  bool acceptFrequency(double now);

  PitchDetector &mDetector;
  UpdateLoopDisplay &mDisplay;
  OneThread mMainThread;
};

}  // namespace orvane
