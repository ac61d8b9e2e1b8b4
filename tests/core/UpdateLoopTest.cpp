#include "core/UpdateLoop.h"

#include <cmath>
#include <limits>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

const void *watchedBlock = nullptr;
bool isBlockReleased = false;

}  // namespace

// The linker puts __wrap_NAME in the place of NAME, here that of delete[].
extern "C" {
void __real__ZdaPv(void *memory);

void __wrap__ZdaPv(void *memory) {
  isBlockReleased = isBlockReleased || (memory != nullptr && memory == watchedBlock);
  __real__ZdaPv(memory);
}
}

namespace orvane::test {
namespace {

// A display that writes down what it was asked for, and shows any frequency unless told not to.
class UpdateLoopTest : public testing::Test, protected UpdateLoopDisplay {
 protected:
  // One tick at time now with a block that detects nothing of its own: the reading stands in
  // mRawFrequency as if the block before had left it. Level 0 unless a peak is given.
  std::string tick(double now, float reading = 0.0F, float peak = 0.0F) {
    mAsked.clear();
    mDetector.mRawFrequency = reading;
    const float samples[] = {0.0F, -peak};
    mTick = mLoop.updateUI(CaptureBlock::withBytes(samples, sizeof samples), now);
    return mAsked;
  }

  void updateTunerUI() override {
    mAsked += isBlockReleased ? "released tuner " : "tuner ";
    if (mShowable)
      mLoop.mDisplayFrequency = mLoop.mFrequency;
  }
  void grayCentreLamp() override { mAsked += "gray "; }
  void setLevelMeter() override {
    mAsked += "level ";
    mLoop.mDisplayPeak = mDetector.mPeak;
    mLoop.mDisplayPeakHold = mLoop.mPeakHold;
  }

  BlockQueue mQueue{nullptr};
  CaptureBuffer mCapture{mQueue};
  PitchDetector mDetector{mCapture};
  UpdateLoop mLoop{mDetector, *this};
  UpdateLoop::Tick mTick{};
  bool mShowable = true;
  std::string mAsked;
};

TEST_F(UpdateLoopTest, AReadingCloseToTheCurrentOneMovesItHalfWay) {
  mLoop.mFrequency = 440.0F;
  tick(1.0, 443.0F);
  EXPECT_EQ(mLoop.mFrequency, 441.5F);
  EXPECT_TRUE(mTick.accepted);
}

TEST_F(UpdateLoopTest, AReadingMoreThanAHundredthAwayIsTakenAtOnce) {
  mLoop.mFrequency = 440.0F;
  tick(1.0, 445.0F);
  EXPECT_EQ(mLoop.mFrequency, 445.0F);
}

TEST_F(UpdateLoopTest, TheSmoothingBandIsOpenAtBothEnds) {
  mLoop.mFrequency = 100.0F;
  tick(1.0, 101.0F);  // 101/100 rounds to the constant 1.01 itself
  EXPECT_EQ(mLoop.mFrequency, 101.0F);
  mLoop.mFrequency = 100.0F;
  tick(1.0, 99.0F);
  EXPECT_EQ(mLoop.mFrequency, 99.0F);
  mLoop.mFrequency = 100.0F;
  tick(1.0, std::nextafter(99.0F, 100.0F));
  EXPECT_GT(mLoop.mFrequency, 99.4F);
}

TEST_F(UpdateLoopTest, TheFirstReadingIsTakenAsItIsWhenThereIsNoCurrentOne) {
  tick(1.0, 200.0F);
  EXPECT_EQ(mLoop.mFrequency, 200.0F);
}

TEST_F(UpdateLoopTest, ReadingsAtTheLimitsAreRejectedAndKeptForTheNextTick) {
  mLoop.mFrequency = mLoop.mDisplayFrequency = 440.0F;
  // The nearest single-precision values on either side of 26.717 and 4311.76.
  const float lowOutside = 26.716999F;
  const float highOutside = 4311.7603F;
  for (const float reading :
       {lowOutside, highOutside, 0.0F, -100.0F, std::numeric_limits<float>::infinity(),
        std::numeric_limits<float>::quiet_NaN()}) {
    SCOPED_TRACE(reading);
    tick(1.0, reading);
    EXPECT_FALSE(mTick.accepted);
    EXPECT_EQ(mLoop.mFrequency, 440.0F);
  }
  tick(1.0, highOutside);
  EXPECT_EQ(mDetector.mRawFrequency, highOutside);
}

TEST_F(UpdateLoopTest, TheLowestAndTheHighestKeyOfAPianoAreAccepted) {
  for (const float reading : {27.5F, 4186.0F, 26.718F, 4311.7F}) {
    tick(1.0, reading);
    EXPECT_TRUE(mTick.accepted) << reading;
    EXPECT_EQ(mLoop.mFrequency, reading);
    EXPECT_EQ(mDetector.mRawFrequency, 0.0F) << "a reading is used once";
  }
}

TEST_F(UpdateLoopTest, AReadingEqualToTheCurrentOneDoesNotRedrawTheTuner) {
  tick(1.0, 440.0F);
  EXPECT_EQ(tick(1.1, 440.0F), "");
  EXPECT_TRUE(mTick.accepted);
}

TEST_F(UpdateLoopTest, AFrequencyThatCannotBeShownIsAskedForAtEveryTick) {
  mShowable = false;
  EXPECT_EQ(tick(1.0, 4300.0F), "tuner ");
  EXPECT_EQ(tick(1.1), "tuner ");
  mShowable = true;
  EXPECT_EQ(tick(1.15), "tuner ");
  EXPECT_EQ(tick(1.16), "");
}

TEST_F(UpdateLoopTest, TheDisplayIsAskedInTheOrderTunerGrayLevel) {
  mLoop.mFrequency = 440.0F;
  EXPECT_EQ(tick(1.0, 0.0F, 1.0F), "tuner gray level ");
}

TEST_F(UpdateLoopTest, SilenceForAFifthOfASecondGraysTheCentreLampAgainAndAgain) {
  tick(10.0, 440.0F);
  EXPECT_EQ(tick(10.1), "");
  EXPECT_EQ(tick(10.2), "") << "not later than the deadline yet";
  EXPECT_EQ(tick(10.2001), "gray ");
  EXPECT_EQ(tick(10.25), "");
  EXPECT_EQ(tick(10.4), "");
  EXPECT_EQ(tick(10.4002), "gray ");
  EXPECT_EQ(mLoop.mFrequency, 440.0F) << "the note stays";
}

TEST_F(UpdateLoopTest, TheFirstTickWithoutAReadingTimesOutAtOnce) {
  EXPECT_EQ(tick(0.05), "gray ");
}

TEST_F(UpdateLoopTest, AHeldLevelIsDroppedAfterASecondAndReplacedAtTheNextTick) {
  mLoop.mNextTunerUpdateTime = 1000.0;  // keeps the lamp out of this
  // 0.1625 of full scale: q = 10649, −15.78 dB, level 80. 0.05125: q = 3358, −25.81 dB, level 70.
  EXPECT_EQ(tick(10.0, 0.0F, 0.1625F), "level ");
  EXPECT_EQ(mLoop.mPeakHold, 80);
  EXPECT_EQ(tick(10.5, 0.0F, 0.05125F), "level ");
  EXPECT_EQ(mLoop.mPeakHold, 80);
  EXPECT_EQ(tick(11.0, 0.0F, 0.05125F), "") << "exactly one second is not later";
  EXPECT_EQ(mLoop.mPeakHold, 80);
  EXPECT_EQ(tick(11.0005, 0.0F, 0.05125F), "") << "released after the redraw";
  EXPECT_EQ(mTick.peakHold, 80);
  EXPECT_EQ(mLoop.mPeakHold, 0);
  EXPECT_EQ(mLoop.mNextPeakHoldTime, 12.0005);
  EXPECT_EQ(tick(11.06, 0.0F, 0.05125F), "level ");
  EXPECT_EQ(mTick.peakHold, 70);
}

TEST_F(UpdateLoopTest, AnEqualLevelRestartsTheHoldTime) {
  tick(10.0, 0.0F, 0.1625F);
  tick(10.9, 0.0F, 0.1625F);
  tick(11.5, 0.0F, 0.05125F);
  EXPECT_EQ(mLoop.mPeakHold, 80);
  tick(11.95, 0.0F, 0.05125F);
  EXPECT_EQ(mLoop.mPeakHold, 0);
}

TEST_F(UpdateLoopTest, ADetectedPitchIsReportedWithTheBlock) {
  mCapture.mSampleRate = 1000.0F;
  mCapture.mBufferFrames = 500;
  std::vector<float> samples(500, -0.5F);
  for (std::size_t place = 10; place < 500; place += 10)
    samples[place] = 0.5F;
  const auto tick =
      mLoop.updateUI(CaptureBlock::withBytes(samples.data(), samples.size() * sizeof(float)), 1.0);
  EXPECT_TRUE(tick.detected);
  EXPECT_EQ(tick.rawFrequency, 100.0F);
  EXPECT_EQ(mLoop.mFrequency, 100.0F);
}

TEST_F(UpdateLoopTest, ABlockThatDetectsNothingReportsTheReadingThatIsLeft) {
  tick(1.0, 200.0F);
  EXPECT_FALSE(mTick.detected);
  EXPECT_EQ(mTick.rawFrequency, 200.0F);
  tick(1.1);
  EXPECT_EQ(mTick.rawFrequency, 0.0F);
}

TEST_F(UpdateLoopTest, TheBlockIsReleasedBeforeTheDisplayIsAskedForAnything) {
  mLoop.mFrequency = 440.0F;
  const float sample = -0.5F;
  CaptureBlock block = CaptureBlock::withBytes(&sample, sizeof sample);
  watchedBlock = block.samples().data();
  isBlockReleased = false;
  mLoop.updateUI(std::move(block), 1.0);
  EXPECT_EQ(mAsked, "released tuner gray level ");
  watchedBlock = nullptr;
  isBlockReleased = false;
}

#ifndef NDEBUG
using UpdateLoopDeathTest = UpdateLoopTest;

TEST_F(UpdateLoopDeathTest, ATickOnASecondThreadIsCaughtInDebugBuilds) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  tick(1.0);
  EXPECT_DEATH(std::thread([this] { tick(1.1); }).join(), "mThread");
}
#endif

}  // namespace
}  // namespace orvane::test
