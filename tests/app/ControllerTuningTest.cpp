#include <gtest/gtest.h>

#include "tests/app/ControllerWatch.h"
#include "tests/app/UserInput.h"

namespace orvane::test {
namespace {

constexpr int kJustIntonation = 14;  // its item in the menu

class ControllerTuningTest : public testing::Test {
 protected:
  ControllerTuningTest() { rig.hardware.takeCalls(); }

  // Types it into the field and presses Return; how often the system beeped.
  std::size_t beepsOf(const char *typed) {
    return beepsDuring([&] {
      type(*tuner.mReferencePitchText, QString::fromUtf8(typed));
      pressKey(*tuner.mReferencePitchText, Qt::Key_Return);
    });
  }
  template <typename Action>
  std::size_t beepsDuring(const Action &action) {
    action();
    const Lines calls = rig.hardware.takeCalls();
    EXPECT_EQ(calls, Lines(calls.size(), "beep"));
    return calls.size();
  }
  // Whether the action had the tonic menu made anew and the note shown anew. Neither goes without
  // the other.
  template <typename Action>
  bool isRefreshedBy(const Action &action) {
    const QString mark = QStringLiteral("here before");
    tuner.mTonicPopUpButton->setToolTipAtIndex(mark, 5);
    tuner.mLoop.mDisplayFrequency = 0.0F;
    action();
    const bool isRebuilt = tuner.mTonicPopUpButton->toolTipAtIndex(5) != mark;
    EXPECT_EQ(tuner.mLoop.mDisplayFrequency == tuner.mLoop.mFrequency, isRebuilt);
    return isRebuilt;
  }
  bool isReferencePitch(float pitch, const char *text) const {
    return tuner.mSettings.mReferencePitch == pitch &&
           tuner.mReferencePitchStepper->floatValue() == pitch &&
           tuner.mReferencePitchText->stringValue() == QString::fromUtf8(text) &&
           tuner.mTonicPopUpButton->itemTitleAtIndex(9) ==
               QStringLiteral("A (%1Hz)").arg(static_cast<double>(pitch), 0, 'f', 1);
  }
  void stepUp() { click(*tuner.mReferencePitchStepper, {8, 5}); }
  void stepDown() { click(*tuner.mReferencePitchStepper, {8, 21}); }

  Lines tonicTitles() const {
    Lines titles;
    for (int k = 0; k < tuner.mTonicPopUpButton->numberOfItems(); ++k)
      titles.push_back(tuner.mTonicPopUpButton->itemTitleAtIndex(k).toStdString());
    return titles;
  }
  std::string shownNote() const {
    return (tuner.mNoteText->stringValue() + tuner.mAccidentalText->stringValue() +
            tuner.mOctaveText->stringValue() + QLatin1Char(' ') + tuner.mCentText->stringValue())
        .toStdString();
  }

  ControllerRig rig;
  Controller &tuner = rig.launch();
};

TEST_F(ControllerTuningTest, TakesATypedPitchWithinTheLimitsSilently) {
  EXPECT_EQ(beepsOf("349"), 0U);
  EXPECT_TRUE(isReferencePitch(349.0F, "349"));
  EXPECT_EQ(beepsOf("499.9"), 0U);
  EXPECT_TRUE(isReferencePitch(499.899993896484375F, "499.9"));
  EXPECT_EQ(beepsOf(" 442.5Hz"), 0U);
  EXPECT_TRUE(isReferencePitch(442.5F, "442.5"));
}

TEST_F(ControllerTuningTest, BeepsAtATooLowPitchAndTakesTheLowest) {
  EXPECT_EQ(beepsOf("348.9"), 1U);
  EXPECT_TRUE(isReferencePitch(349.0F, "349"));
}

TEST_F(ControllerTuningTest, BeepsAtATooHighPitchEveryTimeItIsTyped) {
  EXPECT_EQ(beepsOf("500"), 1U);
  EXPECT_TRUE(isReferencePitch(499.899993896484375F, "499.9"));
  EXPECT_TRUE(isRefreshedBy([this] { EXPECT_EQ(beepsOf("500"), 1U); }));
  EXPECT_TRUE(isReferencePitch(499.899993896484375F, "499.9"));
  EXPECT_EQ(beepsOf("499.95"), 1U);
  EXPECT_TRUE(isReferencePitch(499.899993896484375F, "499.9"));
}

TEST_F(ControllerTuningTest, BeepsAtWhatIsNoNumberEveryTimeItIsTyped) {
  for (const char *typed : {"abc", "abc", "", "nan", "inf", "-440", "Hz 440"}) {
    SCOPED_TRACE(typed);
    EXPECT_TRUE(isRefreshedBy([&] { EXPECT_EQ(beepsOf(typed), 1U); }));
    EXPECT_TRUE(isReferencePitch(349.0F, "349"));
  }
}

TEST_F(ControllerTuningTest, TakesANumberBeyondCountingForATooHighOne) {
  EXPECT_EQ(beepsOf("1e999"), 1U);
  EXPECT_TRUE(isReferencePitch(499.899993896484375F, "499.9"));
  EXPECT_EQ(beepsOf("1e-999"), 1U);
  EXPECT_TRUE(isReferencePitch(349.0F, "349"));
}

TEST_F(ControllerTuningTest, DoesNothingWhenTheTypedPitchIsTheCurrentOne) {
  for (const char *typed : {"440", "440.0", "+440 hertz"}) {
    SCOPED_TRACE(typed);
    EXPECT_FALSE(isRefreshedBy([&] { EXPECT_EQ(beepsOf(typed), 0U); }));
    EXPECT_EQ(tuner.mReferencePitchText->stringValue(), typed);
  }
}

TEST_F(ControllerTuningTest, TakesTheTypedPitchWhenTheFieldIsLeftAndOnlyOnce) {
  const auto leave = [this] { pressKey(*tuner.mTuningPopUpButton, Qt::Key_Shift); };
  EXPECT_EQ(beepsDuring([&] {
              type(*tuner.mReferencePitchText, QStringLiteral("600"));
              leave();
            }),
            1U);
  EXPECT_TRUE(isReferencePitch(499.899993896484375F, "499.9"));
  EXPECT_EQ(beepsOf("abc"), 1U);
  EXPECT_FALSE(isRefreshedBy([&] { EXPECT_EQ(beepsDuring(leave), 0U); }));
}

TEST_F(ControllerTuningTest, TakesNothingBeforeTheEditingEnds) {
  EXPECT_FALSE(isRefreshedBy([this] { type(*tuner.mReferencePitchText, QStringLiteral("415")); }));
  EXPECT_EQ(tuner.mSettings.mReferencePitch, 440.0F);
}

TEST_F(ControllerTuningTest, TakesNothingOfAnEditingThatTheEndOfTheProgramCutsOff) {
  type(*tuner.mReferencePitchText, QStringLiteral("600"));
  rig.quit();
  EXPECT_EQ(rig.hardware.takeCalls(), stopCalls("7"));
  EXPECT_EQ(rig.launch().mSettings.mReferencePitch, 440.0F);
}

TEST_F(ControllerTuningTest, ShowsTheNoteByTheNewReferencePitch) {
  EXPECT_EQ(shownNote(), "A 4 ±0");
  beepsOf("415");  // 440 Hz is 101.3 cents above it, B flat at 439.68 Hz
  EXPECT_EQ(shownNote(), "B♭4 +1");
  EXPECT_EQ(tuner.mIdealFrequencyText->stringValue(), "439.7Hz");
  EXPECT_EQ(tuner.mFrequencyDiffText->stringValue(), "+0.3Hz");
}

TEST_F(ControllerTuningTest, TheStepperSetsThePitchThatTheFieldShows) {
  EXPECT_TRUE(isRefreshedBy([this] { stepUp(); }));
  EXPECT_TRUE(isReferencePitch(441.0F, "441"));
  EXPECT_TRUE(isRefreshedBy([this] { pressKey(*tuner.mReferencePitchStepper, Qt::Key_Down); }));
  EXPECT_TRUE(isReferencePitch(440.0F, "440"));
  beepsOf("442.5");
  stepDown();
  EXPECT_TRUE(isReferencePitch(441.5F, "441.5"));
}

TEST_F(ControllerTuningTest, TheStepperStopsAtItsLimitsSilently) {
  beepsOf("499.5");
  EXPECT_EQ(beepsDuring([this] { stepUp(); }), 0U);
  EXPECT_TRUE(isReferencePitch(499.899993896484375F, "499.9"));
  EXPECT_FALSE(isRefreshedBy([this] { stepUp(); }));
  EXPECT_FALSE(isRefreshedBy([this] { pressKey(*tuner.mReferencePitchStepper, Qt::Key_Up); }));

  beepsOf("349.5");
  EXPECT_EQ(beepsDuring([this] { stepDown(); }), 0U);
  EXPECT_TRUE(isReferencePitch(349.0F, "349"));
  EXPECT_FALSE(isRefreshedBy([this] { stepDown(); }));
  EXPECT_FALSE(isRefreshedBy([this] { pressKey(*tuner.mReferencePitchStepper, Qt::Key_Down); }));
  EXPECT_TRUE(isReferencePitch(349.0F, "349"));
}

TEST_F(ControllerTuningTest, TheTonicCanBeChosenOnlyForATemperamentOfTheFile) {
  EXPECT_FALSE(tuner.mTonicPopUpButton->isEnabled());
  for (int item = 2; item < tuner.mTuningPopUpButton->numberOfItems(); ++item) {
    EXPECT_TRUE(isRefreshedBy([&] { choose(*tuner.mTuningPopUpButton, item); })) << item;
    EXPECT_EQ(tuner.mSettings.mTuning, item - 1);
    EXPECT_TRUE(tuner.mTonicPopUpButton->isEnabled());
  }
  EXPECT_TRUE(isRefreshedBy([this] { choose(*tuner.mTuningPopUpButton, 0); }));
  EXPECT_EQ(tuner.mSettings.mTuning, 0);
  EXPECT_FALSE(tuner.mTonicPopUpButton->isEnabled());
  EXPECT_FALSE(isRefreshedBy([this] { pressKey(*tuner.mTonicPopUpButton, Qt::Key_Down); }));
  EXPECT_EQ(tuner.mSettings.mTonic, 0);
}

TEST_F(ControllerTuningTest, TheUserCannotChooseTheDivider) {
  pressKey(*tuner.mTuningPopUpButton, Qt::Key_Down);
  EXPECT_EQ(tuner.mTuningPopUpButton->indexOfSelectedItem(), 2);
  EXPECT_EQ(tuner.mSettings.mTuning, 1);
  EXPECT_FALSE(isRefreshedBy([this] { choose(*tuner.mTuningPopUpButton, 1); }));
  EXPECT_EQ(tuner.mTuningPopUpButton->indexOfSelectedItem(), 2);
  pressKey(*tuner.mTuningPopUpButton, Qt::Key_Up);
  EXPECT_EQ(tuner.mTuningPopUpButton->indexOfSelectedItem(), 0);
  EXPECT_EQ(tuner.mSettings.mTuning, 0);
}

TEST_F(ControllerTuningTest, TheDividerStandsForEqualTemperament) {
  const auto selectDivider = [this] {
    tuner.mTuningPopUpButton->selectItemAtIndex(1);
    tuner.tuningPopupChanged();
  };
  EXPECT_FALSE(isRefreshedBy(selectDivider));
  choose(*tuner.mTuningPopUpButton, kJustIntonation);
  EXPECT_EQ(tonicTitles().front(), "C (264.0Hz)");  // three fifths of A
  EXPECT_TRUE(isRefreshedBy(selectDivider));
  EXPECT_EQ(tuner.mSettings.mTuning, 0);
  EXPECT_FALSE(tuner.mTonicPopUpButton->isEnabled());
  EXPECT_EQ(tonicTitles().front(), "C (261.6Hz)");
}

TEST_F(ControllerTuningTest, ChoosingWhatIsChosenAlreadyDoesNothing) {
  choose(*tuner.mTuningPopUpButton, 4);
  choose(*tuner.mTonicPopUpButton, 7);
  choose(*tuner.mTransposePopUpButton, 13);
  EXPECT_FALSE(isRefreshedBy([this] { choose(*tuner.mTuningPopUpButton, 4); }));
  EXPECT_FALSE(isRefreshedBy([this] { choose(*tuner.mTonicPopUpButton, 7); }));
  EXPECT_FALSE(isRefreshedBy([this] { choose(*tuner.mTransposePopUpButton, 13); }));
}

// The ratios above B flat are 16/15, 9/8, 6/5, 5/4, 4/3, 45/32, 3/2, 8/5, 5/3, 9/5 and, for A,
// 15/8.
TEST_F(ControllerTuningTest, EveryTonicTitleIsInTheOctaveOfMiddleC) {
  choose(*tuner.mTuningPopUpButton, kJustIntonation);
  ASSERT_EQ(tuner.mTuningPopUpButton->titleOfSelectedItem(), "Just intonation (Ellis duodene)");
  EXPECT_TRUE(isRefreshedBy([this] { choose(*tuner.mTonicPopUpButton, 10); }));
  EXPECT_EQ(tuner.mSettings.mTonic, 10);
  EXPECT_EQ(tuner.mTonicPopUpButton->indexOfSelectedItem(), 10);
  EXPECT_EQ(tonicTitles(),
            (Lines{"C (264.0Hz)", "C#/Db (281.6Hz)", "D (293.3Hz)", "D#/Eb (312.9Hz)",
                   "E (330.0Hz)", "F (352.0Hz)", "F#/Gb (375.5Hz)", "G (391.1Hz)",
                   "G#/Ab (422.4Hz)", "A (440.0Hz)", "A#/Bb (469.3Hz)", "B (500.6Hz)"}));
}

TEST_F(ControllerTuningTest, EqualTemperamentKeepsTheTonicForTheNextTemperament) {
  choose(*tuner.mTuningPopUpButton, kJustIntonation);
  choose(*tuner.mTonicPopUpButton, 10);
  choose(*tuner.mTuningPopUpButton, 0);
  EXPECT_EQ(tuner.mTonicPopUpButton->titleOfSelectedItem(), "A#/Bb (466.2Hz)");
  choose(*tuner.mTuningPopUpButton, kJustIntonation);
  EXPECT_EQ(tuner.mTonicPopUpButton->titleOfSelectedItem(), "A#/Bb (469.3Hz)");
}

TEST_F(ControllerTuningTest, ATemperamentMovesTheIdealFrequencyOfTheShownNote) {
  tuner.mLoop.mFrequency = 264.0F;  // 15.6 cents above the equal-tempered C
  tuner.updateTunerUI();
  EXPECT_EQ(shownNote(), "C 4 +15");
  choose(*tuner.mTuningPopUpButton, kJustIntonation);
  EXPECT_EQ(shownNote(), "C 4 ±0");
  EXPECT_EQ(tuner.mIdealFrequencyText->stringValue(), "264.0Hz");
}

TEST_F(ControllerTuningTest, ATranspositionTellsWhatAWrittenCSoundsAs) {
  EXPECT_TRUE(tuner.mTransposeText->isHidden());
  const std::vector<std::tuple<int, const char *, const char *>> rows = {
      {9, "C = A#/Bb (-2)", "B 4 ±0"},
      {14, "C = D#/Eb (+3)", "F♯4 ±0"},
      {18, "C = G (+7)", "D 4 ±0"},
      {8, "C = A (-3)", "C 5 ±0"},
  };
  for (const auto &[item, label, note] : rows) {
    const Lines titles = tonicTitles();
    EXPECT_TRUE(isRefreshedBy([this, item = item] { choose(*tuner.mTransposePopUpButton, item); }));
    EXPECT_FALSE(tuner.mTransposeText->isHidden());
    EXPECT_EQ(tuner.mTransposeText->stringValue(), QString::fromUtf8(label));
    EXPECT_EQ(shownNote(), note);
    EXPECT_EQ(tonicTitles(), titles);
  }
  EXPECT_TRUE(isRefreshedBy([this] { choose(*tuner.mTransposePopUpButton, 11); }));
  EXPECT_TRUE(tuner.mTransposeText->isHidden());
  EXPECT_EQ(tuner.mTransposeText->stringValue(), "");
  EXPECT_EQ(shownNote(), "A 4 ±0");
}

TEST_F(ControllerTuningTest, EveryItemOfTheTranspositionMenuIsNamedByItsSemitones) {
  ASSERT_EQ(tuner.mTransposePopUpButton->numberOfItems(), 23);
  pressKey(*tuner.mTransposePopUpButton, Qt::Key_Home);
  for (int semitones = -11; semitones <= 11; ++semitones) {
    EXPECT_EQ(tuner.mSettings.mTranspose, semitones);
    const QString name = semitones < 0   ? QString::number(semitones)
                         : semitones > 0 ? QLatin1Char('+') + QString::number(semitones)
                                         : QStringLiteral("Off");
    const QString title = tuner.mTransposePopUpButton->titleOfSelectedItem();
    EXPECT_EQ(title.section(QLatin1Char(' '), 0, 0), name);
    pressKey(*tuner.mTransposePopUpButton, Qt::Key_Down);
  }
}

}  // namespace
}  // namespace orvane::test
