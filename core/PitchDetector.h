// Measures one capture block: the fundamental from the distances between successive positive peaks
// of the waveform, and the peak level. Keeps nothing from block to block but its three results;
// allocates nothing. Main thread.
#pragma once

#include <cstdint>

#include "core/CaptureBlock.h"
#include "core/CaptureBuffer.h"
#include "core/PeakScan.h"

namespace orvane {

class PitchDetector {
 public:
  static constexpr std::uint64_t kMaximumSpacings = Peaks::kMaximumSpacings;

  // Sample rate and block length are read from the capture buffer, which must outlive this.
  explicit PitchDetector(const CaptureBuffer &capture) : mCapture(capture) {}

  // One pass over the block. Writes mRawPeak and mPeak always, mRawFrequency only when the block
  // has a pitch; returns whether it has.
  bool detectPitch(const CaptureBlock &block);

  // The average period in samples of count peak spacings (0 to 128), or 0.0 for no pitch. Sorts the
  // list in place when it holds more than three.
  float averageDiffs(std::uint64_t *spacings, std::uint64_t count) const;

  float mRawFrequency = 0.0F;  // hertz, of the last block that had a pitch; cleared once accepted
  float mRawPeak = 0.0F;       // linear, 0.0 to 1.0
  std::int64_t mPeak = 0;      // 0 to 96, one step a decibel, 96 is full scale

 private:
  const CaptureBuffer &mCapture;
};

}  // namespace orvane
