#include "core/PitchDetector.h"

#include <array>
#include <cmath>

#include "core/PeakScan.h"

namespace orvane {
namespace {

constexpr double kQuietestPitch = 0.01;  // linear peak that a block must exceed to have a pitch
constexpr double kSixteenBitRange = 65535.0;
constexpr double kFullScaleLevel = 96.0;

// By way of a 16-bit integer, so that the level is quantised as a 16-bit sample would be.
std::int64_t levelOf(float peak) {
  const auto q = static_cast<std::int32_t>(static_cast<double>(peak) * kSixteenBitRange);
  if (q == 0)
    return 0;
  return static_cast<std::int64_t>(20.0 * std::log10(q / kSixteenBitRange) + kFullScaleLevel);
}

}  // namespace

bool PitchDetector::detectPitch(const CaptureBlock &block) {
  Peaks peaks;
  findPeaks(block.samples(), peaks);
  bool detected = false;
  if (static_cast<double>(peaks.magnitude) > kQuietestPitch) {
    const float period = averageDiffs(peaks.spacings.data(), peaks.count);
    if (period != 0.0F) {
      mRawFrequency = mCapture.mSampleRate.load(std::memory_order_relaxed) / period;
      detected = true;
    }
  }
  mRawPeak = peaks.magnitude;
  mPeak = levelOf(peaks.magnitude);
  return detected;
}

float PitchDetector::averageDiffs(std::uint64_t *spacings, std::uint64_t count) const {
  if (count < 2)
    return 0.0F;
  if (count < 4) {
    // The lowest notes: a block holds one or two periods, too few to count.
    const UInt32 bufferFrames = mCapture.mBufferFrames.load(std::memory_order_relaxed);
    return spacings[1] > bufferFrames / 3 ? static_cast<float>(spacings[1]) : 0.0F;
  }

  sortSpacings(spacings, count);

  std::array<std::uint64_t, kMaximumSpacings> values;
  std::array<std::uint64_t, kMaximumSpacings> counts;
  std::size_t last = 0;
  std::size_t best = 0;
  std::uint64_t bestCount = 1;
  values[0] = spacings[0];
  counts[0] = 1;
  for (std::uint64_t i = 1; i < count; ++i) {
    if (spacings[i] != values[last]) {
      values[++last] = spacings[i];
      counts[last] = 1;
    } else if (++counts[last] > bestCount) {
      bestCount = counts[last];
      best = last;
    }
  }

  // The smallest spacing is no period, be it the most common: it is then the largest that counts.
  const std::uint64_t reference = best == 0 ? values[last] : values[best];
  // The lower edge is truncated and the upper one rounded.
  const std::uint64_t low = reference * 95 / 100;
  const std::uint64_t high = (reference * 105 + 50) / 100;
  std::uint64_t sum = 0;
  std::uint64_t total = 0;
  for (std::size_t v = 0; v <= last; ++v) {
    if (values[v] >= low && values[v] <= high) {
      sum += counts[v] * values[v];
      total += counts[v];
    }
  }
  if (total <= count / 2)
    return 0.0F;
  return static_cast<float>(sum) / static_cast<float>(total);
}

}  // namespace orvane
