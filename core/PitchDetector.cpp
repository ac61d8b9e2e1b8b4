#include "core/PitchDetector.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <span>

namespace orvane {
namespace {

constexpr double kQuietestPitch = 0.01;  // linear peak that a block must exceed to have a pitch
constexpr double kPeakThreshold = 0.9;   // of the last accepted peak
constexpr double kSixteenBitRange = 65535.0;
constexpr double kFullScaleLevel = 96.0;

struct Peaks {
  std::array<std::uint64_t, PitchDetector::kMaximumSpacings> spacings;
  std::uint64_t count = 0;
  float magnitude = 0.0F;
};

// Walks the block half-wave by half-wave. The threshold M carries the decayed height of the last
// accepted peak, so a half-wave yields a peak only when it reaches that; equal samples move the
// peak to the later index. Index 0 stands for no peak.
void findPeaks(std::span<const float> samples, Peaks &peaks) {
  const std::size_t n = samples.size();
  const float *x = samples.data();
  float magnitude = 0.0F;
  float threshold = 0.0F;
  std::size_t peak = 0;
  std::size_t previousPeak = 0;
  std::size_t i = 0;
  while (true) {
    // Written as a negation so that not-a-number counts as not positive.
    while (i < n && !(x[i] > 0.0F)) {
      if (-x[i] > magnitude)
        magnitude = -x[i];
      ++i;
    }
    while (i < n && x[i] > 0.0F) {
      if (x[i] >= threshold) {
        threshold = x[i];
        peak = i;
      }
      ++i;
    }
    if (i == n)  // a half-wave that is still open adds nothing
      break;
    if (peak != 0) {
      if (threshold > magnitude)
        magnitude = threshold;
      peaks.spacings[peaks.count++] = peak - previousPeak;
      if (peaks.count == PitchDetector::kMaximumSpacings)
        break;
      threshold = static_cast<float>(static_cast<double>(threshold) * kPeakThreshold);
      previousPeak = peak;
    }
    peak = 0;
  }
  peaks.magnitude = magnitude;
}

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

int PitchDetector::compareSpacing(const void *first, const void *second) {
  const std::uint64_t a = *static_cast<const std::uint64_t *>(first);
  const std::uint64_t b = *static_cast<const std::uint64_t *>(second);
  return a < b ? -1 : a > b ? 1 : 0;
}

float PitchDetector::averageDiffs(std::uint64_t *spacings, std::uint64_t count) const {
  if (count < 2)
    return 0.0F;
  if (count < 4) {
    // The lowest notes: a block holds one or two periods, too few to count.
    const UInt32 bufferFrames = mCapture.mBufferFrames.load(std::memory_order_relaxed);
    return spacings[1] > bufferFrames / 3 ? static_cast<float>(spacings[1]) : 0.0F;
  }

  std::qsort(spacings, count, sizeof *spacings, compareSpacing);

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
