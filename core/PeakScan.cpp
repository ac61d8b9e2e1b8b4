#include "core/PeakScan.h"

#include <algorithm>
#include <bit>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace orvane {
namespace {

constexpr double kPeakThreshold = 0.9;  // of the last accepted peak

float decayed(float threshold) {
  return static_cast<float>(static_cast<double>(threshold) * kPeakThreshold);
}

}  // namespace

// Walks the block half-wave by half-wave. The threshold carries the decayed height of the last
// accepted peak, so a half-wave yields a peak only when it reaches that; equal samples move the
// peak to the later index. Index 0 stands for no peak.
void findPeaksOneByOne(std::span<const float> samples, Peaks &peaks) {
  const std::size_t n = samples.size();
  const float *x = samples.data();
  float magnitude = 0.0F;
  float threshold = 0.0F;
  std::size_t previousPeak = 0;
  std::size_t i = 0;
  for (;;) {
    std::size_t peak = 0;
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
      magnitude = std::max(magnitude, threshold);
      peaks.spacings[peaks.count++] = peak - previousPeak;
      if (peaks.count == Peaks::kMaximumSpacings)
        break;
      threshold = decayed(threshold);
      previousPeak = peak;
    }
  }
  peaks.magnitude = magnitude;
}

#ifdef __SSE2__

// A half-wave yields a peak exactly when its largest sample reaches the threshold, and the peak is
// then the last sample of that height. So the places where the sign changes are gathered first, 64
// samples at a time, and where in a half-wave its largest sample is only matters when that is a
// peak.
namespace {

constexpr std::size_t kWordSamples = 64;
constexpr std::size_t kLanes = 4;
constexpr std::size_t kStep = 4 * kLanes;  // four at a time, as each would wait for the one before

unsigned lanesEqual(__m128 lanes, __m128 value) {
  return static_cast<unsigned>(_mm_movemask_ps(_mm_cmpeq_ps(lanes, value)));
}

float largestLane(__m128 lanes) {
  lanes = _mm_max_ps(lanes, _mm_movehl_ps(lanes, lanes));
  return _mm_cvtss_f32(_mm_max_ss(lanes, _mm_shuffle_ps(lanes, lanes, 1)));
}

__m128 largestLanes(const float *x) {
  return _mm_max_ps(_mm_max_ps(_mm_loadu_ps(x), _mm_loadu_ps(x + kLanes)),
                    _mm_max_ps(_mm_loadu_ps(x + 2 * kLanes), _mm_loadu_ps(x + 3 * kLanes)));
}

std::size_t highestBit(unsigned bits) {
  return static_cast<std::size_t>(std::bit_width(bits)) - 1;
}

// The largest of the positive samples from begin to end, more than 8.
float largestOfMany(const float *x, std::size_t begin, std::size_t end) {
  __m128 largest = _mm_loadu_ps(x + end - kLanes);
  std::size_t i = begin;
  for (; i + kStep < end; i += kStep)
    largest = _mm_max_ps(largest, largestLanes(x + i));
  for (; i + kLanes < end; i += kLanes)
    largest = _mm_max_ps(largest, _mm_loadu_ps(x + i));
  return largestLane(largest);
}

// The same of at most 8; 8 can be read. Without a branch, because noise changes their number with
// every half-wave.
float largestOfFew(const float *x, std::size_t begin, std::size_t end) {
  constexpr std::uint32_t kKept = ~0U;
  static constexpr std::array<std::uint32_t, 4 *kLanes> kMask = {kKept, kKept, kKept, kKept,
                                                                 kKept, kKept, kKept, kKept};
  const auto kept = [&](std::size_t lane) noexcept {
    const void *mask = kMask.data() + 2 * kLanes - (end - begin) + lane;
    return _mm_and_ps(_mm_loadu_ps(x + begin + lane),
                      _mm_castsi128_ps(_mm_loadu_si128(static_cast<const __m128i *>(mask))));
  };
  return largestLane(_mm_max_ps(kept(0), kept(kLanes)));
}

float largestOf(std::span<const float> samples, std::size_t begin, std::size_t end) {
  if (end - begin > 2 * kLanes)
    return largestOfMany(samples.data(), begin, end);
  if (begin + 2 * kLanes <= samples.size())
    return largestOfFew(samples.data(), begin, end);
  return *std::max_element(samples.data() + begin, samples.data() + end);
}

// The last place before end where the sample is value; there is one.
std::size_t lastOf(float value, const float *x, std::size_t end) {
  const __m128 values = _mm_set1_ps(value);
  while (end >= kLanes) {
    const unsigned equal = lanesEqual(_mm_loadu_ps(x + end - kLanes), values);
    if (equal != 0)
      return end - kLanes + highestBit(equal);
    end -= kLanes;
  }
  do {
    --end;
  } while (x[end] != value);
  return end;
}

// Bit i is set when sample i of 64 is positive.
std::uint64_t positiveBits(const float *x) {
  const auto positive = [](const float *from) noexcept {
    return _mm_castps_si128(_mm_cmpgt_ps(_mm_loadu_ps(from), _mm_setzero_ps()));
  };
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < kWordSamples; i += kStep, x += kStep) {
    const __m128i bytes =
        _mm_packs_epi16(_mm_packs_epi32(positive(x), positive(x + kLanes)),
                        _mm_packs_epi32(positive(x + 2 * kLanes), positive(x + 3 * kLanes)));
    bits |= static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(bytes))) << i;
  }
  return bits;
}

// A number below zero with its sign turned, or 0. Of not-a-number and another the minimum is here
// the second.
float largestNegative(std::span<const float> samples) {
  const float *x = samples.data();
  __m128 a = _mm_setzero_ps();
  __m128 b = a;
  __m128 c = a;
  __m128 d = a;
  std::size_t i = 0;
  for (; i + kStep <= samples.size(); i += kStep) {
    a = _mm_min_ps(_mm_loadu_ps(x + i), a);
    b = _mm_min_ps(_mm_loadu_ps(x + i + kLanes), b);
    c = _mm_min_ps(_mm_loadu_ps(x + i + 2 * kLanes), c);
    d = _mm_min_ps(_mm_loadu_ps(x + i + 3 * kLanes), d);
  }
  const __m128 lowest = _mm_min_ps(_mm_min_ps(a, b), _mm_min_ps(c, d));
  float magnitude = largestLane(_mm_sub_ps(_mm_setzero_ps(), lowest));
  for (; i < samples.size(); ++i)
    magnitude = std::max(magnitude, -x[i]);
  return magnitude;
}

// Sets count, magnitude and spacings but for what the samples that are not positive add; returns
// how many samples were looked at: all, or those before the end of the half-wave that filled the
// list.
std::size_t gatherPeaks(std::span<const float> samples, Peaks &peaks) {
  const std::size_t n = samples.size();
  float threshold = 0.0F;
  std::size_t previousPeak = 0;
  // Where the sign changes; first comes the beginning of a half-wave still open after the last
  // word.
  std::array<std::size_t, kWordSamples + 1> changes{};
  std::size_t changeCount = 0;
  std::uint64_t wasPositive = 0;
  std::array<float, kWordSamples> padded{};
  for (std::size_t word = 0; word < n; word += kWordSamples) {
    const float *x = samples.data() + word;
    if (n - word < kWordSamples) {
      std::copy(x, x + (n - word), padded.begin());
      x = padded.data();
    }
    const std::uint64_t positive = positiveBits(x);
    for (std::uint64_t left = positive ^ (positive << 1 | wasPositive); left != 0; left &= left - 1)
      changes[changeCount++] = word + static_cast<std::size_t>(std::countr_zero(left));
    wasPositive = positive >> (kWordSamples - 1);

    std::size_t at = 0;
    for (; at + 1 < changeCount && changes[at + 1] < n; at += 2) {
      const std::size_t end = changes[at + 1];
      const float largest = largestOf(samples, changes[at], end);
      if (largest < threshold)
        continue;
      const std::size_t peak = lastOf(largest, samples.data(), end);
      threshold = largest;
      if (peak == 0)
        continue;
      peaks.magnitude = std::max(peaks.magnitude, largest);
      peaks.spacings[peaks.count++] = peak - previousPeak;
      if (peaks.count == Peaks::kMaximumSpacings)
        return end;
      threshold = decayed(largest);
      previousPeak = peak;
    }
    changes[0] = changes[at];
    changeCount -= at;
  }
  return n;
}

}  // namespace

void findPeaks(std::span<const float> samples, Peaks &peaks) {
  const std::size_t seen = gatherPeaks(samples, peaks);
  peaks.magnitude = std::max(peaks.magnitude, largestNegative(samples.first(seen)));
}

#else

void findPeaks(std::span<const float> samples, Peaks &peaks) {
  findPeaksOneByOne(samples, peaks);
}

#endif

int compareSpacing(const void *first, const void *second) {
  const std::uint64_t a = *static_cast<const std::uint64_t *>(first);
  const std::uint64_t b = *static_cast<const std::uint64_t *>(second);
  return a < b ? -1 : a > b ? 1 : 0;
}

void sortSpacings(std::uint64_t *spacings, std::size_t count) {
  // Few numbers in a small range: counted rather than compared.
  constexpr std::size_t kRange = 4096;
  constexpr std::size_t kWordBits = 64;
  if (std::any_of(spacings, spacings + count, [](std::uint64_t s) { return s >= kRange; })) {
    // Not by qsort, which may take memory.
    std::sort(spacings, spacings + count,
              [](std::uint64_t a, std::uint64_t b) { return compareSpacing(&a, &b) < 0; });
    return;
  }
  std::array<std::uint8_t, kRange> counts;  // set for the numbers that occur
  std::array<std::uint64_t, kRange / kWordBits> occurs{};
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint64_t s = spacings[i];
    std::uint64_t &word = occurs[s / kWordBits];
    const std::uint64_t bit = std::uint64_t{1} << s % kWordBits;
    counts[s] = static_cast<std::uint8_t>((word & bit) != 0 ? counts[s] + 1 : 1);
    word |= bit;
  }
  std::uint64_t *out = spacings;
  for (std::size_t w = 0; w < occurs.size(); ++w) {
    for (std::uint64_t left = occurs[w]; left != 0; left &= left - 1) {
      const std::size_t s = w * kWordBits + static_cast<std::size_t>(std::countr_zero(left));
      out = std::fill_n(out, counts[s], s);
    }
  }
}

}  // namespace orvane
