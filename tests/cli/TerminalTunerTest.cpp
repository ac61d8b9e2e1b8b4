#include "cli/TerminalTuner.h"

#include <gtest/gtest.h>

#include "cli/ReadingText.h"
#include "tests/cli/TestFiles.h"

namespace orvane::test {
namespace {

// A terminal tuner that is fed by hand, 500 Hz in equal temperament: 16 samples exactly at 8 kHz.
class TerminalTunerTest : public testing::Test {
 protected:
  TerminalTunerTest() { mTuner.capture().setSampleRate(8000.0); }

  // One block of 436 samples that ends at the given second.
  Reading feed(std::vector<float> samples, double now) {
    samples.resize(436);
    AudioBufferList list{};
    list.mNumberBuffers = 1;
    list.mBuffers[0] = {1, 436 * sizeof(float), samples.data()};
    const AudioTimeStamp time{1.0};
    const IOProcCall call{1, &time, &list, &time, nullptr, nullptr};
    mTuner.capture().inputIOProc(&call);
    const auto reading = mTuner.takeReading(now);
    EXPECT_TRUE(reading.has_value());
    return *reading;
  }

  const Tuning mTuning;
  TerminalTuner mTuner{mTuning, nullptr};
  const std::vector<float> mTone = sine(500.0, 8000, 0.0545, 0.9);
};

TEST_F(TerminalTunerTest, TheDisplayStartsWithTheReferencePitchAndNoLevel) {
  EXPECT_EQ(liveLine(mTuner.display(), false, 80),
            "A4    ±0 cents  ○○○○○◆○○○○○   440.0Hz, ideal  440.0Hz, ±0.0Hz   ▯▯▯▯▯▯▯▯ -96dB");
}

TEST_F(TerminalTunerTest, SilenceGraysTheCentreLampAndKeepsTheNote) {
  feed(mTone, 1.0);
  EXPECT_EQ(noteText(mTuner.display().texts), "B4");
  EXPECT_EQ(mTuner.display().centre, CentreLamp::Blue);
  feed({}, 1.1);
  EXPECT_EQ(mTuner.display().centre, CentreLamp::Blue);
  feed({}, 1.3);
  EXPECT_EQ(mTuner.display().centre, CentreLamp::Gray);
  EXPECT_EQ(noteText(mTuner.display().texts), "B4");
  EXPECT_NE(liveLine(mTuner.display(), false, 80).find("○○○○○◇●●●○○"), std::string::npos);
}

// A frequency that has been shown is not shown anew: the centre lamp that turned grey stays grey
// when the same reading comes again.
TEST_F(TerminalTunerTest, TheSameFrequencyAgainRedrawsNothing) {
  feed(mTone, 1.0);
  feed({}, 1.3);
  ASSERT_EQ(mTuner.display().centre, CentreLamp::Gray);
  EXPECT_TRUE(feed(mTone, 1.35).accepted);
  EXPECT_EQ(mTuner.display().centre, CentreLamp::Gray);
}

TEST_F(TerminalTunerTest, TheLevelIsDrawnWithItsHold) {
  feed(mTone, 1.0);  // 0.9 of full scale: −0.9 dB, level 95
  EXPECT_EQ(mTuner.display().levelText, "-1dB");
  feed({}, 1.1);
  EXPECT_EQ(mTuner.display().levelText, "-1dB");
  EXPECT_EQ(mTuner.display().segments[7], LevelSegment::Yellow);
  EXPECT_EQ(mTuner.display().segments[6], LevelSegment::Gray);
}

TEST_F(TerminalTunerTest, ANarrowTerminalLeavesOutTheFrequenciesFirstAndThenTheLevel) {
  const Display &display = mTuner.display();
  EXPECT_EQ(liveLine(display, false, 79), "A4    ±0 cents  ○○○○○◆○○○○○  ▯▯▯▯▯▯▯▯ -96dB");
  EXPECT_EQ(liveLine(display, false, 44), "A4    ±0 cents  ○○○○○◆○○○○○");
  EXPECT_EQ(liveLine(display, false, 28), "A4    ±0 cents");
  EXPECT_EQ(liveLine(display, false, 10), "A4    ±0…");
}

TEST_F(TerminalTunerTest, ColoursAreTerminalEscapesRoundTheLamps) {
  EXPECT_NE(liveLine(mTuner.display(), true, 80).find("\x1b[32m◆\x1b[0m"), std::string::npos);
}

}  // namespace
}  // namespace orvane::test
