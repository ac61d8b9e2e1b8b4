// Somebody sets the time of day, or the process is stopped for a while: what the windows time, the
// greying of the lamp and the hold of the peak, goes by the time that passes and by nothing else.
#include <gtest/gtest.h>

#include <chrono>
#include <ctime>

#include "tests/app/SoundingTuner.h"
#include "tests/long/SteppedClocks.h"

namespace orvane::test {
namespace {

constexpr double kHour = 3600.0;      // seconds
constexpr float kLoud = 1.0F;         // 0dB
constexpr float kQuiet = 0.05125F;    // −25.8 dB, level 70
constexpr std::size_t kPeriod = 100;  // samples

class ClockTest : public testing::Test {
 protected:
  bool isGray() const { return tuner.mNatural->image() == tuner.mGray28x28; }
  std::string heldLevel() const { return tuner.mLevelText->stringValue().toStdString(); }
  std::string note() const {
    return (tuner.mNoteText->stringValue() + tuner.mOctaveText->stringValue()).toStdString();
  }
  void playQuietly() { rig.playTone(441.0, kPeriod, kQuiet); }

  SoundingTuner rig;
  Controller &tuner = rig.tuner;
};

TEST_F(ClockTest, TheClocksAreInTheHandsOfTheTest) {
  const std::time_t wall = std::time(nullptr);
  const auto steady = std::chrono::steady_clock::now();
  stepWallClock(-kHour);
  EXPECT_LT(std::time(nullptr), wall - 3000);
  EXPECT_LT(std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()), wall - 3000);
  EXPECT_LT(std::chrono::steady_clock::now() - steady, std::chrono::seconds(600));
  passTime(kHour);
  EXPECT_GE(std::time(nullptr), wall);
  EXPECT_GE(std::chrono::steady_clock::now() - steady, std::chrono::seconds(3600));
}

TEST_F(ClockTest, TheLampGreysAFifthOfASecondAfterTheNoteWhateverTheTimeOfDay) {
  for (const double step : {kHour, -kHour, -kHour, kHour}) {
    rig.playTone(441.0);
    ASSERT_FALSE(isGray());
    stepWallClock(step);
    rig.playSilence();
    EXPECT_FALSE(isGray()) << step;
    passTime(0.21);
    rig.playSilence();
    EXPECT_TRUE(isGray()) << step;
  }
}

TEST_F(ClockTest, ThePeakIsHeldForASecondWhateverTheTimeOfDay) {
  for (const double step : {kHour, -kHour, -kHour, kHour}) {
    rig.playTone(441.0, kPeriod, kLoud);
    stepWallClock(step);
    playQuietly();
    playQuietly();
    EXPECT_EQ(heldLevel(), "0dB") << step;
    passTime(1.01);
    playQuietly();
    playQuietly();
    EXPECT_EQ(heldLevel(), "-26dB") << step;
  }
}

TEST_F(ClockTest, AfterAMinuteStoppedTheNextNoteIsShownAtOnceAndNoHoldIsStuck) {
  rig.playTone(441.0, kPeriod, kLoud);
  passTime(60.0);
  rig.playTone(330.0, kPeriod, kQuiet);
  EXPECT_EQ(note(), "E4");
  EXPECT_FALSE(isGray());
  playQuietly();
  EXPECT_EQ(note(), "A4");
  EXPECT_EQ(heldLevel(), "-26dB");
}

TEST_F(ClockTest, AfterAMinuteStoppedSilenceGreysTheLampOnceAndKeepsTheNote) {
  rig.playTone(441.0);
  passTime(60.0);
  rig.playSilence();
  EXPECT_TRUE(isGray());
  EXPECT_EQ(note(), "A4");
  // The minute does not have to be made up for, a fifth of a second after the other.
  const double next = tuner.mLoop.mNextTunerUpdateTime;
  rig.playSilence();
  EXPECT_EQ(tuner.mLoop.mNextTunerUpdateTime, next);
  rig.playTone(441.0);
  EXPECT_FALSE(isGray());
}

}  // namespace
}  // namespace orvane::test
