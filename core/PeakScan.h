// The positive peaks of a waveform and its largest magnitude, in one pass over the samples. There
// are two ways to the same result, bit for bit: sample by sample, which defines it, and by vectors,
// which findPeaks takes where the processor has them. Pure functions; any thread, real-time safe.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace orvane {

struct Peaks {
  static constexpr std::size_t kMaximumSpacings = 128;

  // Samples from peak to peak; the first is the place of the first peak. count of them are set.
  std::array<std::uint64_t, kMaximumSpacings> spacings;
  std::size_t count = 0;
  // Linear: of the accepted peaks and of all samples that are not positive, up to where the pass
  // ended. Never not-a-number.
  float magnitude = 0.0F;
};

// samples: any values; not-a-number counts as not positive. peaks: as constructed.
void findPeaks(std::span<const float> samples, Peaks &peaks);
void findPeaksOneByOne(std::span<const float> samples, Peaks &peaks);

// Three-way order of two std::uint64_t.
int compareSpacing(const void *first, const void *second);

// Sorts count spacings, at most 128, ascending. Takes no memory.
void sortSpacings(std::uint64_t *spacings, std::size_t count);

}  // namespace orvane
