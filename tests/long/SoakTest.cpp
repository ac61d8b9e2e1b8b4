// Hours of sound through input procedure, queue and update loop, on a clock that the test moves.
// Each frame carries its own number, so that every one of them is accounted for; and the memory
// stands still. ./soak goes the long way.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <iostream>
#include <vector>

#include "core/NoteComputation.h"
#include "core/UpdateLoop.h"
#include "tests/long/CountedMemory.h"
#include "tests/long/LongRun.h"

namespace orvane::test {
namespace {

constexpr UInt32 kMostChannels = 8;
constexpr UInt32 kMostFrames = 65536;  // of a callback
// Frames are numbered anew after so many; longer than any block, so that none can stand for
// another.
constexpr std::uint64_t kNumbers = 131072;
constexpr std::array<std::uint64_t, 12> kRates = {8000,  11025, 16000, 22050, 32000,  37123,
                                                  44100, 48000, 88200, 96000, 176400, 192000};
constexpr std::uint64_t kHighestRate = 192000;
// The main thread falls behind by at most so many blocks: close to a minute.
constexpr std::size_t kMostWaiting = 1000;

// The number of a frame as a sample: no two alike, none of them zero, a tone of 100 frames a
// period.
float sampleOf(std::uint64_t number) {
  const std::uint64_t n = number % kNumbers;
  const float magnitude = static_cast<float>(n + 1) / (2.0F * kNumbers);
  return n / 50 % 2 == 0 ? magnitude : -magnitude;
}

// One and a half periods of 27.5 Hz, in whole numbers.
std::uint64_t framesOfBlock(std::uint64_t rate) {
  return rate * 3 / 55;
}

// The numbered frames, laid out in every way a device may hand them over. Their mono sum is always
// the number's sample.
class NumberedSound {
 public:
  NumberedSound() : mDuplicated(2 * kLength), mSilence(kLength) {
    for (UInt32 channels = 1; channels <= kMostChannels; ++channels) {
      std::vector<float> &samples = mInterleaved[channels];
      samples.resize(kLength * channels);
      for (std::uint64_t n = 0; n < kLength; ++n)
        samples[n * channels + n % channels] = sampleOf(n);
    }
    for (std::uint64_t n = 0; n < kLength; ++n)
      mDuplicated[2 * n] = mDuplicated[2 * n + 1] = sampleOf(n);
  }

  const float *mono(std::uint64_t number) const { return &mInterleaved[1][number % kNumbers]; }

  // A list of frames from a number on.
  AudioBufferList *list(Random &random, std::uint64_t number, UInt32 frames) {
    const auto channels = static_cast<UInt32>(1 + random.below(kMostChannels));
    auto *list = reinterpret_cast<AudioBufferList *>(mList.data());
    list->mNumberBuffers = 0;
    const auto add = [&](UInt32 count, float *samples) {
      const AudioBuffer buffer{count, static_cast<UInt32>(frames * count * sizeof(float)), samples};
      std::memcpy(mList.data() + offsetof(AudioBufferList, mBuffers) +
                      list->mNumberBuffers++ * sizeof(AudioBuffer),
                  &buffer, sizeof(buffer));
    };
    const std::uint64_t first = number % kNumbers;
    switch (random.below(4)) {
      case 0:
        add(2, &mDuplicated[2 * first]);
        break;
      case 1:
        add(1, &mInterleaved[1][first]);
        for (UInt32 c = 1; c < channels; ++c)
          add(1, mSilence.data());
        break;
      default:
        add(channels, &mInterleaved[channels][first * channels]);
        break;
    }
    return list;
  }

 private:
  static constexpr std::uint64_t kLength = kNumbers + kMostFrames;

  std::array<std::vector<float>, kMostChannels + 1> mInterleaved;
  std::vector<float> mDuplicated;
  std::vector<float> mSilence;
  alignas(AudioBufferList)
      std::array<std::byte, sizeof(AudioBufferList) + kMostChannels * sizeof(AudioBuffer)> mList{};
};

class Soak : private UpdateLoopDisplay {
 public:
  explicit Soak(std::uint64_t seed) : mRandom(seed) { setRate(48000); }

  double seconds() const { return mNow; }
  std::uint64_t blocks() const { return mBlocks; }
  std::uint64_t frames() const { return mFed; }
  std::uint64_t dropped() const { return mDropped; }

  // One callback, sometimes with a change of rate before it or a look at the queue after it.
  void step() {
    if (mRandom.below(500) == 0)
      setRate(mRandom.pick(kRates));
    callback(randomFrames());
    // Now and then the main thread is away for long.
    if (mWaiting > mPatience) {
      drain();
      mPatience = mRandom.chance(2) ? mRandom.below(kMostWaiting / 2) : mRandom.below(4);
    }
  }

  // Nothing waits, and the buffer has its largest size.
  void settle() {
    setRate(kHighestRate);
    callback(1);
    drain();
  }

  // Fed = in blocks that were taken + still in the buffer + dropped with a change of rate.
  void checkLedger() const { ASSERT_EQ(mFed, mTaken + mCollected + mDropped); }

 private:
  UInt32 randomFrames() {
    switch (mRandom.below(8)) {
      case 0:
        return static_cast<UInt32>(mRandom.below(kMostFrames + 1));
      case 1:
        return static_cast<UInt32>(mRandom.below(3));
      default:
        return static_cast<UInt32>(1U << mRandom.below(13));
    }
  }

  void setRate(std::uint64_t rate) {
    mCapture.setSampleRate(static_cast<double>(rate));
    mRate = rate;
    // The block in progress is of the old rate and never becomes whole.
    mDropped += mCollected;
    mBlockStart = mFed;
    mCollected = 0;
  }

  void callback(UInt32 frames) {
    const AudioTimeStamp time{static_cast<double>(mFed) + 1.0};
    const IOProcCall call{1, &time, mSound.list(mRandom, mFed, frames), &time, nullptr, nullptr};
    ASSERT_EQ(mCapture.inputIOProc(&call), noErr);
    mNow += static_cast<double>(frames) / static_cast<double>(mRate);
    mFed += frames;
    mCollected += frames;
    const std::uint64_t length = framesOfBlock(mRate);
    for (; mCollected >= length; mCollected -= length, mBlockStart += length) {
      ASSERT_LT(mWaiting, kMostWaiting);
      mExpected[(mFirst + mWaiting++) % kMostWaiting] = {mBlockStart, length};
    }
  }

  void drain() {
    for (; mWaiting > 0; --mWaiting, mFirst = (mFirst + 1) % kMostWaiting) {
      std::optional<CaptureBlock> block = mQueue.take();
      ASSERT_TRUE(block);
      const auto [start, frames] = mExpected[mFirst];
      ASSERT_EQ(block->length(), frames * sizeof(float));
      ASSERT_EQ(std::memcmp(block->samples().data(), mSound.mono(start), block->length()), 0)
          << "frames " << start << " to " << start + frames;
      mTaken += frames;
      ++mBlocks;
      mLoop.updateUI(std::move(*block), mNow);
      ASSERT_TRUE(std::isfinite(mLoop.mFrequency));
      ASSERT_TRUE(mLoop.mPeakHold >= 0 && mLoop.mPeakHold <= 96);
    }
    ASSERT_FALSE(mQueue.take());
    ASSERT_EQ(mQueue.lostBlocks(), 0U);
  }

  void updateTunerUI() override { mLoop.mDisplayFrequency = mLoop.mFrequency; }
  void grayCentreLamp() override {}
  void setLevelMeter() override {
    mLoop.mDisplayPeak = mDetector.mPeak;
    mLoop.mDisplayPeakHold = mLoop.mPeakHold;
  }

  struct Expected {
    std::uint64_t start;  // number of the first frame
    std::uint64_t frames;
  };

  Random mRandom;
  NumberedSound mSound;
  BlockQueue mQueue{nullptr};
  CaptureBuffer mCapture{mQueue};
  PitchDetector mDetector{mCapture};
  UpdateLoop mLoop{mDetector, *this};

  double mNow = 0.0;  // seconds
  std::uint64_t mRate = 0;
  std::uint64_t mFed = 0;        // frames
  std::uint64_t mTaken = 0;      // frames
  std::uint64_t mDropped = 0;    // frames
  std::uint64_t mCollected = 0;  // frames of the block in progress
  std::uint64_t mBlockStart = 0;
  std::uint64_t mBlocks = 0;
  std::array<Expected, kMostWaiting> mExpected{};
  std::size_t mFirst = 0;
  std::size_t mWaiting = 0;
  std::size_t mPatience = 0;
};

TEST(Soak, EveryFrameIsAccountedForAndTheMemoryStandsStillAfterTheFirstMinute) {
  const std::uint64_t minutes = longRunCount(5);
  const std::uint64_t seed = longRunSeed();
  SCOPED_TRACE("seed " + std::to_string(seed));
  Soak soak(seed);
  CountedMemory before{};
  std::uint64_t blocksBefore = 0;
  for (std::uint64_t minute = 1; minute <= minutes; ++minute) {
    while (soak.seconds() < 60.0 * static_cast<double>(minute)) {
      soak.step();
      if (HasFatalFailure())
        return;
    }
    soak.settle();
    soak.checkLedger();
    const CountedMemory now = CountedMemory::now();
    if (minute == 1) {
      before = now;
      blocksBefore = soak.blocks();
      continue;
    }
    ASSERT_EQ(now.bytes, before.bytes) << "minute " << minute;
    ASSERT_EQ(now.blocks, before.blocks) << "minute " << minute;
    // The allocator may keep a few small pieces at hand.
    ASSERT_LE(now.heap, before.heap + 16384) << "minute " << minute;
    // Of all this, one copy per block.
    ASSERT_EQ(now.allocations - before.allocations, soak.blocks() - blocksBefore);
    if (HasFatalFailure())
      return;
  }
  const CountedMemory after = CountedMemory::now();
  std::cout << soak.seconds() / 3600.0 << " h of sound, " << soak.frames() << " frames, "
            << soak.blocks() << " blocks, " << soak.dropped()
            << " frames dropped with changes of rate; after minute 1 and at the end "
            << before.bytes << " and " << after.bytes << " bytes in " << before.blocks << " and "
            << after.blocks << " blocks\n";
}

}  // namespace
}  // namespace orvane::test
