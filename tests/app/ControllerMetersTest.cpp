#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cmath>
#include <numbers>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <QElapsedTimer>

#include "tests/app/PaintWatch.h"
#include "tests/app/SoundingTuner.h"
#include "tests/app/UserInput.h"

namespace orvane::test {
namespace {

// A block of a sine whose first peak comes soon, so that of the lowest note two fit in.
std::vector<float> sine(double hertz, double sampleRate) {
  std::vector<float> samples(blockFrames(sampleRate));
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double periods = static_cast<double>(i) * hertz / sampleRate + 0.15;
    samples[i] = static_cast<float>(0.5 * std::sin(2.0 * std::numbers::pi * periods));
  }
  return samples;
}

class ControllerMetersTest : public testing::Test {
 protected:
  // From flat to sharp: r lit, G B x the centre lamp in green, blue or gray.
  std::string lamps() const {
    std::string row;
    for (const AutoResizeImageView *lamp :
         {tuner.mFlat4, tuner.mFlat3, tuner.mFlat2, tuner.mFlat1, tuner.mFlat0, tuner.mNatural,
          tuner.mSharp0, tuner.mSharp1, tuner.mSharp2, tuner.mSharp3, tuner.mSharp4})
      row += letterOf(lamp->image());
    return row;
  }
  // From quiet to loud: green, yellow or red.
  std::string levels() const {
    std::string row;
    for (const AutoResizeImageView *lamp :
         {tuner.mLevel0, tuner.mLevel1, tuner.mLevel2, tuner.mLevel3, tuner.mLevel4, tuner.mLevel5,
          tuner.mLevel6, tuner.mLevel7})
      row += letterOf(lamp->image());
    return row;
  }
  char letterOf(const std::shared_ptr<const Picture> &picture) const {
    const std::array<std::pair<std::shared_ptr<const Picture>, char>, 9> letters = {
        {{tuner.mGray24x24, '-'},
         {tuner.mRed24x24, 'r'},
         {tuner.mGreen28x28, 'G'},
         {tuner.mBlue28x28, 'B'},
         {tuner.mGray28x28, 'x'},
         {tuner.mGray16x16, '-'},
         {tuner.mGreen16x16, 'g'},
         {tuner.mYellow16x16, 'y'},
         {tuner.mRed16x16, 'r'}}};
    for (const auto &[known, letter] : letters) {
      if (known != nullptr && known == picture)
        return letter;
    }
    return '?';
  }
  std::string shown() const {
    return (tuner.mNoteText->stringValue() + tuner.mAccidentalText->stringValue() +
            tuner.mOctaveText->stringValue() + QLatin1Char(' ') + tuner.mCentText->stringValue() +
            QLatin1Char(' ') + tuner.mFrequencyText->stringValue())
        .toStdString();
  }
  std::string level() const {
    return levels() + ' ' + tuner.mLevelText->stringValue().toStdString();
  }
  // Plays a tone until the smoothing has come to its end.
  void playSteadily(double hertz) {
    const auto target = static_cast<float>(hertz);
    for (int block = 0; block < 60 && tuner.mLoop.mFrequency != target; ++block)
      rig.playTone(hertz);
    ASSERT_EQ(tuner.mLoop.mFrequency, target);
  }

  SoundingTuner rig;
  Controller &tuner = rig.tuner;
};

TEST_F(ControllerMetersTest, TheLampsGrowOutwardsInStepsOfTenCents) {
  struct Row {
    float semitones;
    const char *lamps;
    const char *cents;
  };
  const std::vector<Row> rows = {
      {0.0F, "-----G-----", "±0"},     {-0.004F, "-----G-----", "±0"},
      {0.02F, "-----Gr----", "+1"},    {0.025F, "-----Gr----", "+2"},
      {0.035F, "-----Br----", "+3"},   {0.11F, "-----Br----", "+10"},
      {0.115F, "-----Brr---", "+11"},  {0.205F, "-----Brr---", "+20"},
      {0.215F, "-----Brrr--", "+21"},  {0.305F, "-----Brrr--", "+30"},
      {0.315F, "-----Brrrr-", "+31"},  {0.405F, "-----Brrrr-", "+40"},
      {0.415F, "-----Brrrrr", "+41"},  {0.625F, "-----Brrrrr", "+62"},
      {-0.015F, "----rG-----", "-1"},  {-0.025F, "----rG-----", "-2"},
      {-0.035F, "----rB-----", "-3"},  {-0.105F, "----rB-----", "-10"},
      {-0.115F, "---rrB-----", "-11"}, {-0.205F, "---rrB-----", "-20"},
      {-0.215F, "--rrrB-----", "-21"}, {-0.305F, "--rrrB-----", "-30"},
      {-0.315F, "-rrrrB-----", "-31"}, {-0.405F, "-rrrrB-----", "-40"},
      {-0.415F, "rrrrrB-----", "-41"}, {-0.5F, "rrrrrB-----", "-50"},
      {0.5F, "-----Brrrrr", "+50"},    {0.0F, "-----G-----", "±0"},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(row.semitones);
    tuner.setTuningMeter(row.semitones);
    EXPECT_EQ(lamps(), row.lamps);
    EXPECT_EQ(tuner.mCentText->stringValue(), QString::fromUtf8(row.cents));
  }
}

TEST_F(ControllerMetersTest, TheLevelLampsShowTheLevelAndTheHeldPeak) {
  struct Row {
    std::int64_t peak;
    std::int64_t hold;
    const char *shown;
  };
  const std::vector<Row> rows = {
      {0, 0, "-------- -96dB"},   {61, 63, "-------- -33dB"}, {63, 64, "y------- -32dB"},
      {64, 64, "y------- -32dB"}, {67, 67, "y------- -29dB"}, {64, 68, "gy------ -28dB"},
      {68, 68, "gy------ -28dB"}, {70, 90, "gg----y- -6dB"},  {91, 91, "ggggggy- -5dB"},
      {92, 92, "gggggggy -4dB"},  {95, 95, "gggggggy -1dB"},  {95, 96, "gggggggr 0dB"},
      {96, 96, "gggggggr 0dB"},   {0, 96, "-------r 0dB"},    {95, 60, "gggggggg -36dB"},
      {96, 60, "gggggggr -36dB"}, {72, 84, "ggg--y-- -12dB"},
  };
  for (const Row &row : rows) {
    SCOPED_TRACE(std::to_string(row.peak) + " " + std::to_string(row.hold));
    tuner.mDetector.mPeak = row.peak;
    tuner.mLoop.mPeakHold = row.hold;
    tuner.setLevelMeter();
    EXPECT_EQ(level(), row.shown);
    EXPECT_EQ(tuner.mLoop.mDisplayPeak, row.peak);
    EXPECT_EQ(tuner.mLoop.mDisplayPeakHold, row.hold);
  }
}

TEST_F(ControllerMetersTest, ShowsTheNotesThatAreHeard) {
  const std::vector<std::pair<double, const char *>> notes = {
      {440.0, "A 4"},  {466.16, "B♭4"}, {27.5, "A 0"},   {4186.0, "C 8"},
      {277.18, "C♯4"}, {82.41, "E 2"},  {1864.66, "B♭6"}};
  for (const auto &[hertz, note] : notes) {
    rig.play(sine(hertz, 48000.0));
    rig.play(sine(hertz, 48000.0));
    EXPECT_EQ(shown().substr(0, std::string(note).size()), note) << hertz;
    EXPECT_EQ(tuner.mAccidentalText->isHidden(), note[1] == ' ') << hertz;
    // The period is measured to a fraction of a sample.
    EXPECT_LE(std::abs(tuner.mCentText->intValue()), 3) << hertz;
    EXPECT_NEAR(static_cast<double>(tuner.mFrequencyText->floatValue()), hertz, 0.002 * hertz);
  }
}

TEST_F(ControllerMetersTest, ABlockGivenByHandIsShownAtOnce) {
  const std::vector<float> samples = pulses(48000.0, 100);
  tuner.updateUI(CaptureBlock::withBytes(samples.data(), samples.size() * sizeof(float)));
  EXPECT_EQ(shown(), "B 4 -49 480.0Hz");  // B is 493.88 Hz
  EXPECT_EQ(lamps(), "rrrrrB-----");
}

TEST_F(ControllerMetersTest, BlocksWaitForTheMainThreadAndAreShownInOrder) {
  rig.hardware.setSampleRate(44100.0);
  rig.hardware.sound({{1, pulses(44100.0, 100)}});
  rig.hardware.sound({{1, pulses(44100.0, 50)}});
  EXPECT_EQ(shown(), "A 4 ±0 440.0Hz");
  QApplication::processEvents();
  EXPECT_EQ(shown(), "A 5 +3 882.0Hz");
  EXPECT_FALSE(tuner.mBlocks.take());
}

TEST_F(ControllerMetersTest, ACloseReadingMovesTheFrequencyHalfWay) {
  rig.playTone(443.0);
  EXPECT_EQ(tuner.mLoop.mFrequency, 441.5F);
  EXPECT_EQ(shown(), "A 4 +5 441.5Hz");  // 5.9 cents
  EXPECT_EQ(tuner.mFrequencyDiffText->stringValue(), "+1.5Hz");
  EXPECT_EQ(lamps(), "-----Br----");
}

TEST_F(ControllerMetersTest, AReadingMoreThanAHundredthAwayIsShownAtOnce) {
  rig.playTone(445.0);
  EXPECT_EQ(tuner.mLoop.mFrequency, 445.0F);
  EXPECT_EQ(shown(), "A 4 +19 445.0Hz");  // 19.6 cents
}

TEST_F(ControllerMetersTest, AReadingEqualToTheCurrentOneIsNotShownAgain) {
  tuner.mNoteText->setStringValue(QStringLiteral("X"));
  rig.playTone(440.0);
  EXPECT_EQ(tuner.mNoteText->stringValue(), "X");
  rig.playTone(441.0);
  EXPECT_EQ(tuner.mNoteText->stringValue(), "A");
}

TEST_F(ControllerMetersTest, ReadingsBeyondTheLimitsAreNotAccepted) {
  rig.playTone(26.7, 1000);
  EXPECT_EQ(tuner.mDetector.mRawFrequency, 26.7F);
  EXPECT_EQ(shown(), "A 4 ±0 440.0Hz");
  rig.playTone(4311.8, 10);
  EXPECT_EQ(tuner.mDetector.mRawFrequency, 4311.8F);
  EXPECT_EQ(shown(), "A 4 ±0 440.0Hz");
  EXPECT_EQ(tuner.mLoop.mFrequency, 440.0F);

  rig.playTone(26.72, 1000);  // 49.8 cents below A0
  EXPECT_EQ(shown(), "A 0 -49 26.7Hz");
  EXPECT_EQ(tuner.mDetector.mRawFrequency, 0.0F);
  rig.playTone(4300.0, 10);  // 46.5 cents above C8
  EXPECT_EQ(shown(), "C 8 +46 4300.0Hz");
}

TEST_F(ControllerMetersTest, AnAcceptedFrequencyAboveTheHighestNoteChangesNothingThatIsShown) {
  rig.playTone(26.72, 1000);
  const std::string lampsBefore = lamps();
  rig.playTone(4311.7, 10);
  EXPECT_EQ(tuner.mLoop.mFrequency, 4311.7F);
  EXPECT_EQ(tuner.mLoop.mDisplayFrequency, 26.72F);
  EXPECT_EQ(shown(), "A 0 -49 26.7Hz");
  EXPECT_EQ(lamps(), lampsBefore);
  // It is tried again with every block.
  tuner.mSettings.mReferencePitch = 450.0F;
  rig.playSilence();
  EXPECT_EQ(shown(), "C 8 +12 4311.7Hz");  // 12.3 cents
}

TEST_F(ControllerMetersTest, TheFirstSilenceGraysTheCentreLampAtOnce) {
  EXPECT_EQ(lamps(), "-----G-----");
  rig.playSilence();
  EXPECT_EQ(lamps(), "-----x-----");
  EXPECT_EQ(shown(), "A 4 ±0 440.0Hz");
}

TEST_F(ControllerMetersTest, AFifthOfASecondWithoutAPitchGraysOnlyTheCentreLamp) {
  QElapsedTimer sinceTone;
  sinceTone.start();
  rig.playTone(446.0);  // 23.4 cents
  EXPECT_EQ(lamps(), "-----Brrr--");
  while (lamps() == "-----Brrr--" && sinceTone.elapsed() < 20000) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    rig.playSilence();
  }
  EXPECT_EQ(lamps(), "-----xrrr--");
  EXPECT_GE(sinceTone.elapsed(), 200);
  EXPECT_EQ(shown(), "A 4 +23 446.0Hz");
  // The next pitch lights it again.
  rig.playTone(441.0);
  EXPECT_EQ(lamps()[5], 'B');
}

TEST_F(ControllerMetersTest, ShowsThePeakOfEveryBlock) {
  rig.playTone(441.0, 100, 0.5F);  // 20·log10(32767/65535) + 96 = 89.98
  EXPECT_EQ(level(), "ggggggy- -7dB");
  rig.playTone(441.0, 100, 1.0F);
  EXPECT_EQ(level(), "gggggggr 0dB");
}

TEST_F(ControllerMetersTest, HoldsThePeakForASecondAndThenJumpsToTheLevel) {
  QElapsedTimer sincePeak;
  sincePeak.start();
  rig.playTone(441.0, 100, 1.0F);
  rig.playTone(441.0, 100, 0.05125F);  // level 70
  EXPECT_EQ(level(), "gg-----r 0dB");
  while (tuner.mLoop.mPeakHold == 96 && sincePeak.elapsed() < 20000) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    rig.playTone(441.0, 100, 0.05125F);
  }
  EXPECT_GE(sincePeak.elapsed(), 1000);
  EXPECT_EQ(tuner.mLoop.mPeakHold, 0);
  EXPECT_EQ(level(), "gg-----r 0dB");  // the drop is drawn with the next block
  rig.playTone(441.0, 100, 0.05125F);
  EXPECT_EQ(level(), "gy------ -26dB");
}

TEST_F(ControllerMetersTest, TheDetailsStandStillWhileTheyAreHidden) {
  rig.playTone(445.0, 100, 1.0F);
  pressKey(*tuner.mDisclosureButton, Qt::Key_Space);
  ASSERT_FALSE(tuner.disclosed);
  PaintWatch watch;
  rig.playTone(460.0, 100, 0.05125F);
  rig.playTone(460.0, 100, 0.05125F);
  EXPECT_EQ(level(), "gggggggr 0dB");
  EXPECT_EQ(shown(), "B♭4 -23 445.0Hz");  // B flat is 466.16 Hz
  EXPECT_EQ(tuner.mLoop.mDisplayPeak, 70);
  EXPECT_EQ(tuner.mLoop.mDisplayPeakHold, 96);
  const Paints paints = watch.settle();
  EXPECT_TRUE(paints.contains("mCentText"));
  EXPECT_FALSE(paints.contains("mLevelText"));
  EXPECT_FALSE(paints.contains("mLevel7"));

  pressKey(*tuner.mDisclosureButton, Qt::Key_Space);
  ASSERT_TRUE(tuner.disclosed);
  EXPECT_EQ(level(), "gg-----r 0dB");
  EXPECT_EQ(shown(), "B♭4 -23 460.0Hz");
  rig.playTone(460.0, 100, 0.1625F);  // level 80
  EXPECT_EQ(level(), "ggggg--r 0dB");
}

TEST_F(ControllerMetersTest, ASteadyToneRepaintsNothing) {
  playSteadily(441.0);
  PaintWatch watch;
  watch.settle();
  for (int block = 0; block < 5; ++block)
    rig.playTone(441.0);
  EXPECT_EQ(watch.settle(), Paints());
}

TEST_F(ControllerMetersTest, SteadySilenceRepaintsNothing) {
  rig.playSilence();
  PaintWatch watch;
  watch.settle();
  for (int block = 0; block < 5; ++block) {
    tuner.mLoop.mNextTunerUpdateTime = 0.0;  // long past, so that the lamp is made gray again
    rig.playSilence();
  }
  EXPECT_EQ(watch.settle(), Paints());
}

TEST_F(ControllerMetersTest, ANewFrequencyRepaintsOnlyWhatItChanges) {
  playSteadily(441.0);
  EXPECT_EQ(shown(), "A 4 +3 441.0Hz");
  PaintWatch watch;
  watch.settle();
  rig.playTone(446.0);
  EXPECT_EQ(shown(), "A 4 +23 446.0Hz");
  const Paints paints = watch.settle();
  for (const char *changed : {"mCentText", "mSharp1", "mSharp2", "mFrequencyText",
                              "mFrequencyDiffText", "mTuningMeterView"})
    EXPECT_EQ(paints.contains(changed) ? paints.at(changed) : 0, 1) << changed;
  for (const char *unchanged :
       {"mNoteText", "mAccidentalText", "mOctaveText", "mNatural", "mSharp0", "mSharp3", "mSharp4",
        "mFlat0", "mFlat4", "mIdealFrequencyText", "mLevelText", "mLevel0", "mLevel6", "mLevel7",
        "mTonicPopUpButton", "mReferencePitchText"})
    EXPECT_FALSE(paints.contains(unchanged)) << unchanged;
}

TEST_F(ControllerMetersTest, ANewLevelRepaintsOnlyWhatItChanges) {
  playSteadily(441.0);
  EXPECT_EQ(level(), "ggggggy- -7dB");
  PaintWatch watch;
  watch.settle();
  rig.playTone(441.0, 100, 1.0F);
  EXPECT_EQ(level(), "gggggggr 0dB");
  Paints paints = watch.settle();
  for (const char *changed : {"mLevel6", "mLevel7", "mLevelText"})
    EXPECT_EQ(paints[changed], 1) << changed;
  for (const char *unchanged : {"mLevel0", "mLevel5", "mCentText", "mNatural", "mFrequencyText"})
    EXPECT_FALSE(paints.contains(unchanged)) << unchanged;
}

TEST_F(ControllerMetersTest, ShowingTheSameAgainRepaintsNothing) {
  tuner.setTuningMeter(-0.235F);
  tuner.mTuningMeterView->setCent(-23.5F);
  tuner.mDetector.mPeak = 70;
  tuner.mLoop.mPeakHold = 90;
  tuner.setLevelMeter();
  PaintWatch watch;
  watch.settle();
  tuner.setTuningMeter(-0.236F);
  tuner.mTuningMeterView->setCent(-23.5F);
  tuner.setLevelMeter();
  tuner.updateTransposeText();
  EXPECT_EQ(watch.settle(), Paints());
}

}  // namespace
}  // namespace orvane::test
