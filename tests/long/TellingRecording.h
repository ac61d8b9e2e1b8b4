// A recording whose every block sounds at a pitch of its own, so that what is shown tells which
// block it is of; and an input procedure that counts what the input thread has handed over.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <vector>

#include "tests/audio/SoundFileMaker.h"
#include "tests/core/CaptureFeed.h"

namespace orvane::test {

class TellingRecording {
 public:
  static constexpr int kRate = 44100;
  static constexpr std::uint64_t kBlockFrames = 2405;
  // Then it begins anew. Longer than the blocks that could be lost unseen are likely to be.
  static constexpr std::uint64_t kBlocks = 41;

  // Hertz of a block, counted from 0 since the recording began. The next one is always more than a
  // hundredth away, so that no reading is smoothed.
  static float frequencyOf(std::uint64_t block) {
    return static_cast<float>(kRate) / static_cast<float>(periodOf(block));
  }

  static std::vector<float> samplesOf(std::uint64_t block) {
    return pulses(kRate, periodOf(block));
  }

  TellingRecording() {
    std::vector<float> samples;
    for (std::uint64_t block = 0; block < kBlocks; ++block) {
      const std::vector<float> tone = samplesOf(block);
      samples.insert(samples.end(), tone.begin(), tone.end());
    }
    mFile = writeSound(mFolder / "telling.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, kRate, 1, samples);
  }

  const std::filesystem::path &file() const { return mFile; }

 private:
  static std::size_t periodOf(std::uint64_t block) { return 40 + 3 * (block % kBlocks); }

  TemporaryFolder mFolder;
  std::filesystem::path mFile;
};

inline double secondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// How long the main thread is away, and how soon after that what is shown must be of now: the
// requirement.
inline constexpr std::chrono::seconds kStall{5};
inline constexpr double kCurrentWithin = 0.3;  // seconds

}  // namespace orvane::test
