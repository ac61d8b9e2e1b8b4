// The pass by vectors beside the one sample by sample, bit for bit, on waves made to meet every
// border between vectors, words and half-waves.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "core/PeakScan.h"

namespace orvane::test {
namespace {

using Random = std::mt19937;

// Copied to memory of its own size, so that the address sanitizer sees a read past either end.
void expectTheSamePeaks(const std::vector<float> &wave) {
  const std::vector<float> samples(wave.begin(), wave.end());
  Peaks expected;
  Peaks peaks;
  findPeaksOneByOne(samples, expected);
  findPeaks(samples, peaks);
  ASSERT_EQ(peaks.count, expected.count);
  ASSERT_TRUE(std::equal(peaks.spacings.begin(),
                         peaks.spacings.begin() + static_cast<std::ptrdiff_t>(peaks.count),
                         expected.spacings.begin()));
  ASSERT_EQ(std::bit_cast<std::uint32_t>(peaks.magnitude),
            std::bit_cast<std::uint32_t>(expected.magnitude));
}

void expectTheSamePeaksInRandomWaves(int count, std::size_t longest,
                                     const std::function<float(Random &, std::size_t)> &sample) {
  Random random(20);
  for (int w = 0; w < count; ++w) {
    std::vector<float> wave(random() % (longest + 1));
    for (std::size_t i = 0; i < wave.size(); ++i)
      wave[i] = sample(random, i);
    SCOPED_TRACE("wave " + std::to_string(w) + " of " + std::to_string(wave.size()) + " samples");
    expectTheSamePeaks(wave);
    if (testing::Test::HasFatalFailure())
      return;
  }
}

float chance(Random &random) {
  return static_cast<float>(random() % 2001) / 1000.0F - 1.0F;
}

TEST(PeakScan, ByVectorsNoiseHasTheSamePeaks) {
  expectTheSamePeaksInRandomWaves(3000, 700,
                                  [](Random &random, std::size_t) { return chance(random); });
}

TEST(PeakScan, ByVectorsAFewHeightsOverAndOverHaveTheSamePeaks) {
  expectTheSamePeaksInRandomWaves(3000, 300, [](Random &random, std::size_t) {
    return static_cast<float>(static_cast<int>(random() % 5) - 2) / 2.0F;
  });
}

TEST(PeakScan, ByVectorsAnyBitsHaveTheSamePeaks) {
  expectTheSamePeaksInRandomWaves(3000, 300, [](Random &random, std::size_t) {
    return std::bit_cast<float>(static_cast<std::uint32_t>(random()));
  });
}

TEST(PeakScan, ByVectorsInfinitiesNotANumberAndBothZerosHaveTheSamePeaks) {
  constexpr float kValues[] = {0.0F,
                               -0.0F,
                               1.0F,
                               -1.0F,
                               std::numeric_limits<float>::infinity(),
                               -std::numeric_limits<float>::infinity(),
                               std::numeric_limits<float>::quiet_NaN(),
                               std::numeric_limits<float>::denorm_min(),
                               -std::numeric_limits<float>::denorm_min()};
  expectTheSamePeaksInRandomWaves(3000, 200, [&](Random &random, std::size_t) {
    return kValues[random() % std::size(kValues)];
  });
}

TEST(PeakScan, ByVectorsTonesOfEveryLengthOfHalfWaveHaveTheSamePeaks) {
  Random random(3);
  for (double halfWave = 1.0; halfWave < 400.0; halfWave *= 1.013) {
    for (const float noise : {0.0F, 0.02F, 0.3F}) {
      std::vector<float> wave(2405);
      const auto phase = static_cast<double>(random() % 100);
      for (std::size_t i = 0; i < wave.size(); ++i)
        wave[i] = static_cast<float>(
                      std::sin(phase + std::numbers::pi * static_cast<double>(i) / halfWave)) +
                  noise * chance(random);
      SCOPED_TRACE("half-waves of " + std::to_string(halfWave) + " samples");
      expectTheSamePeaks(wave);
    }
  }
}

// One half-wave, at every place and of every length about the sizes of vectors and words, with its
// largest sample, twice or once, anywhere in it.
TEST(PeakScan, ByVectorsOneHalfWaveAnywhereHasTheSamePeak) {
  for (const std::size_t size : {1U, 2U, 3U, 4U, 5U, 63U, 64U, 65U, 66U, 67U, 128U, 130U}) {
    for (std::size_t begin = 0; begin < size; ++begin) {
      for (std::size_t end = begin + 1; end <= size; end += end - begin < 22 ? 1 : 13) {
        for (std::size_t peak = begin; peak < end; peak += end - begin < 22 ? 1 : 7) {
          std::vector<float> wave(size, -0.125F);
          std::fill(wave.begin() + static_cast<std::ptrdiff_t>(begin),
                    wave.begin() + static_cast<std::ptrdiff_t>(end), 0.25F);
          wave[peak] = 0.5F;
          wave[begin + (peak - begin) / 2] = 0.5F;
          SCOPED_TRACE(std::to_string(size) + " samples, positive from " + std::to_string(begin) +
                       " to " + std::to_string(end) + ", highest at " + std::to_string(peak));
          expectTheSamePeaks(wave);
          if (HasFatalFailure())
            return;
        }
      }
    }
  }
}

// The deepest sample stands before or after the end of the half-wave that fills the list.
TEST(PeakScan, ByVectorsNothingCountsBehindTheLastSpacing) {
  for (std::size_t deepest = 380; deepest < 460; ++deepest) {
    std::vector<float> wave(500);
    for (std::size_t i = 0; i < wave.size(); ++i)
      wave[i] = i % 3 == 1 ? 0.5F : -0.25F;
    wave[deepest] = -0.75F;
    SCOPED_TRACE(deepest);
    expectTheSamePeaks(wave);
  }
}

TEST(PeakScan, SpacingsCompareAsUnsignedNumbersOfSixtyFourBits) {
  const std::uint64_t small = 1;
  const std::uint64_t large = 0xFFFFFFFFFFFFFFFF;
  EXPECT_EQ(compareSpacing(&small, &large), -1);
  EXPECT_EQ(compareSpacing(&large, &small), 1);
  EXPECT_EQ(compareSpacing(&small, &small), 0);
}

TEST(PeakScan, SpacingsOfAnySizeAreSorted) {
  Random random(5);
  for (const std::uint64_t range :
       {1UL, 2UL, 60UL, 64UL, 65UL, 4095UL, 4096UL, 4097UL, 1UL << 40}) {
    for (std::size_t count = 0; count <= Peaks::kMaximumSpacings; ++count) {
      std::vector<std::uint64_t> spacings(count);
      for (auto &spacing : spacings)
        spacing = random() % 3 == 0 ? range - 1 : random() % range;
      std::vector<std::uint64_t> expected = spacings;
      std::sort(expected.begin(), expected.end());
      sortSpacings(spacings.data(), spacings.size());
      ASSERT_EQ(spacings, expected) << count << " below " << range;
    }
  }
}

}  // namespace
}  // namespace orvane::test
