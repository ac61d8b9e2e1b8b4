#include "core/UpdateLoop.h"

namespace orvane {
namespace {

constexpr double kLowestFrequency = 26.717;    // hertz, exclusive
constexpr double kHighestFrequency = 4311.76;  // hertz, exclusive
constexpr float kSmoothingLow = 0.99F;         // of the current frequency, exclusive
constexpr float kSmoothingHigh = 1.01F;
constexpr double kNoPitchTimeout = 0.2;  // seconds
constexpr double kPeakHoldTime = 1.0;    // seconds

}  // namespace

bool UpdateLoop::acceptFrequency(double now) {
  const float reading = mDetector.mRawFrequency;
  const auto wide = static_cast<double>(reading);
  if (!(wide > kLowestFrequency && wide < kHighestFrequency))
    return false;
  // A reading close to the current frequency moves it half way, a new note shows at once.
  const float ratio = reading / mFrequency;
  if (ratio > kSmoothingLow && ratio < kSmoothingHigh)
    mFrequency = (reading + mFrequency) * 0.5F;
  else
    mFrequency = reading;
  mDetector.mRawFrequency = 0.0F;
  mNextTunerUpdateTime = now + kNoPitchTimeout;
  return true;
}

UpdateLoop::Tick UpdateLoop::updateUI(CaptureBlock block, double now) {
  mMainThread.check();
  Tick tick;
  tick.detected = mDetector.detectPitch(block);
  tick.rawFrequency = mDetector.mRawFrequency;
  tick.accepted = acceptFrequency(now);
  block = CaptureBlock();

  if (mDisplayFrequency != mFrequency)
    mDisplay.updateTunerUI();

  if (mNextTunerUpdateTime < now) {
    mDisplay.grayCentreLamp();
    mNextTunerUpdateTime = now + kNoPitchTimeout;
  }

  if (mDetector.mPeak >= mPeakHold) {
    mPeakHold = mDetector.mPeak;
    mNextPeakHoldTime = now + kPeakHoldTime;
  }
  if (mDisplayPeakHold != mPeakHold || mDisplayPeak != mDetector.mPeak)
    mDisplay.setLevelMeter();
  tick.peakHold = mPeakHold;
  // After the redraw: the drop is drawn at the next tick, which takes the level of then as hold.
  if (mNextPeakHoldTime < now) {
    mPeakHold = 0;
    mNextPeakHoldTime = now + kPeakHoldTime;
  }
  return tick;
}

}  // namespace orvane
