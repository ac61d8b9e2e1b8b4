#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <utility>

#include <QMenu>
#include <QMenuBar>

#include "tests/app/ControllerRig.h"

namespace orvane::test {
namespace {

class ControllerSpeechTest : public testing::Test {
 protected:
  const std::string &lastSpoken() const { return rig.system.spoken.back(); }
  std::size_t spokenCount() const { return rig.system.spoken.size(); }
  // What the status command says of shown cents.
  std::string statusAt(const char *cents) {
    tuner.mCentText->setStringValue(QString::fromUtf8(cents));
    tuner.speakStatusTimer();
    return lastSpoken();
  }
  std::string details() {
    tuner.speakDetailsTimer();
    return lastSpoken();
  }
  bool isSaidInDetails(const std::string &sentence) {
    return details().find(sentence) != std::string::npos;
  }
  QAction &item(const char *name) const {
    return *tuner.mWindow->findChild<QAction *>(QString::fromLatin1(name));
  }

  ControllerRig rig;
  Controller &tuner = rig.launch();
};

TEST_F(ControllerSpeechTest, SaysTheNoteItsDeviationAndTheFrequencyOfWhatIsShown) {
  tuner.speakStatusTimer();
  EXPECT_EQ(lastSpoken(), "ay  , in tune, 440.0 hertz");
  tuner.mLoop.mFrequency = 469.0F;  // 10.5 cents above B flat
  tuner.updateTunerUI();
  tuner.speakStatusTimer();
  EXPECT_EQ(lastSpoken(), "B flat, +10 cent, 469.0 hertz");
}

TEST_F(ControllerSpeechTest, CallsADeviationOfUpToTwoCentsInTune) {
  EXPECT_EQ(statusAt("-2"), "ay  , in tune, 440.0 hertz");
  EXPECT_EQ(statusAt("±0"), "ay  , in tune, 440.0 hertz");
  EXPECT_EQ(statusAt("+2"), "ay  , in tune, 440.0 hertz");
  EXPECT_EQ(statusAt("-3"), "ay  , -3 cent, 440.0 hertz");
  EXPECT_EQ(statusAt("+3"), "ay  , +3 cent, 440.0 hertz");
}

TEST_F(ControllerSpeechTest, ReportsAllSettingsInOrder) {
  EXPECT_EQ(details(),
            "ay   4, in tune, 440.0 hertz. Reference Pitch: 440 hertz. Transpose: off. Tuning: "
            "Equal temperament. Input Device: Acme : Mic. Input Peak Level: -96 dB. ");
}

TEST_F(ControllerSpeechTest, ReportsTheTranspositionWithItsSign) {
  EXPECT_TRUE(isSaidInDetails(" Transpose: off. "));
  tuner.mTransposePopUpButton->selectItemAtIndex(9);
  EXPECT_TRUE(isSaidInDetails(" Transpose: -2. "));
  tuner.mTransposePopUpButton->selectItemAtIndex(14);
  EXPECT_TRUE(isSaidInDetails(" Transpose: +3. "));
}

TEST_F(ControllerSpeechTest, ReportsTheTonicOnlyOfATemperament) {
  tuner.mTonicPopUpButton->selectItemAtIndex(9);
  EXPECT_FALSE(isSaidInDetails("Tonic"));
  tuner.mTuningPopUpButton->selectItemAtIndex(2);
  EXPECT_TRUE(isSaidInDetails(" Tonic: ay. Input Device: "));
  tuner.mTonicPopUpButton->selectItemAtIndex(10);
  EXPECT_TRUE(isSaidInDetails(" Tonic: B flat. Input Device: "));
}

TEST_F(ControllerSpeechTest, LeavesOutAnOctaveBelowTheFirst) {
  tuner.mOctaveText->setStringValue(QStringLiteral("-"));
  EXPECT_TRUE(details().starts_with("ay  , in tune, "));
}

TEST_F(ControllerSpeechTest, SpeaksOnlyAfterTheCommandHasReturned) {
  tuner.iaSpeakStatus();
  tuner.iaSpeakDetails();
  EXPECT_EQ(spokenCount(), 0U);
  QApplication::processEvents();
  ASSERT_EQ(spokenCount(), 2U);
  EXPECT_EQ(rig.system.spoken[0], "ay  , in tune, 440.0 hertz");
  EXPECT_TRUE(rig.system.spoken[1].starts_with("ay   4, in tune, 440.0 hertz. Reference"));
}

TEST_F(ControllerSpeechTest, DropsWhatIsAskedForWhileItIsSpeaking) {
  item("iaSpeakStatus").trigger();
  QApplication::processEvents();
  rig.system.isSpeaking = true;
  item("iaSpeakStatus").trigger();
  item("iaSpeakDetails").trigger();
  QApplication::processEvents();
  EXPECT_EQ(spokenCount(), 1U);
  rig.system.isSpeaking = false;
  QApplication::processEvents();
  EXPECT_EQ(spokenCount(), 1U);
}

TEST_F(ControllerSpeechTest, MakesTheVoiceOnceAndOnlyWhenThereIsSomethingToSay) {
  const auto made = [this] {
    return std::count(rig.hardware.calls.begin(), rig.hardware.calls.end(),
                      "makeSpeechSynthesizer");
  };
  tuner.setTuningMeter(0.1F);
  EXPECT_EQ(made(), 0);
  tuner.iaSpeakTune();
  EXPECT_EQ(made(), 0);
  tuner.setTuningMeter(0.1F);
  tuner.speakStatusTimer();
  EXPECT_EQ(made(), 1);
}

TEST_F(ControllerSpeechTest, SpeaksWithEveryMeterUpdateWhatIsSwitchedOn) {
  tuner.setTuningMeter(0.125F);
  EXPECT_EQ(spokenCount(), 0U);
  tuner.iaSpeakTune();
  tuner.setTuningMeter(0.125F);
  EXPECT_EQ(lastSpoken(), "ay  , +12 cent");
  tuner.iaSpeakHertz();
  tuner.setTuningMeter(-0.055F);
  EXPECT_EQ(lastSpoken(), "ay  , -5 cent 440.0 hertz");
  tuner.iaSpeakTune();
  tuner.setTuningMeter(0.0F);
  EXPECT_EQ(lastSpoken(), "440.0 hertz");
  tuner.iaSpeakHertz();
  tuner.setTuningMeter(0.0F);
  EXPECT_EQ(spokenCount(), 3U);
}

TEST_F(ControllerSpeechTest, SpeaksTheNewestValueOnceTheLastTextHasEnded) {
  tuner.iaSpeakTune();
  tuner.setTuningMeter(0.055F);
  rig.system.isSpeaking = true;
  tuner.setTuningMeter(0.155F);
  tuner.setTuningMeter(0.255F);
  rig.system.isSpeaking = false;
  tuner.setTuningMeter(0.355F);
  EXPECT_EQ(rig.system.spoken, (std::vector<std::string>{"ay  , +5 cent", "ay  , +35 cent"}));
}

TEST_F(ControllerSpeechTest, TicksTheMenuItemsOfWhatIsSwitchedOn) {
  QMenu *menu = nullptr;
  for (const QAction *title : tuner.mWindow->menuBar()->actions()) {
    if (title->menu()->actions().contains(&item("iaSpeakTune")))
      menu = title->menu();
  }
  ASSERT_NE(menu, nullptr);
  item("iaSpeakTune").trigger();
  EXPECT_TRUE(tuner.mTuneSpeech);
  emit menu->aboutToShow();
  EXPECT_TRUE(item("iaSpeakTune").isChecked());
  EXPECT_FALSE(item("iaSpeakHertz").isChecked());

  Controller &next = rig.launch();
  EXPECT_TRUE(next.mTuneSpeech);
  EXPECT_FALSE(next.mHertzSpeech);
  QAction tune;
  tune.setObjectName(QStringLiteral("iaSpeakTune"));
  tune.setCheckable(true);
  EXPECT_TRUE(next.validateMenuItem(tune));
  EXPECT_TRUE(tune.isChecked());
}

// The columns are explained in spoken_texts.py, which wrote the table.
TEST_F(ControllerSpeechTest, SaysExactlyTheTextOfEveryShownState) {
  std::ifstream table(ORVANE_SPOKEN_TEXTS);
  std::size_t states = 0;
  // The temperaments by their places in the menu.
  std::set<std::pair<int, QString>> unsaid;
  for (int item = 2; item < tuner.mTuningPopUpButton->numberOfItems(); ++item)
    unsaid.emplace(item, tuner.mTuningPopUpButton->itemTitleAtIndex(item));
  ASSERT_FALSE(unsaid.empty());
  for (std::string line; std::getline(table, line); ++states) {
    const QStringList column = QString::fromStdString(line).split(QLatin1Char('\t'));
    ASSERT_EQ(column.size(), 17) << line;
    unsaid.erase({column[7].toInt(), column[8]});
    tuner.mNoteText->setStringValue(column[0]);
    tuner.mAccidentalText->setStringValue(column[1]);
    tuner.mOctaveText->setStringValue(column[2]);
    tuner.mCentText->setStringValue(column[3]);
    tuner.mFrequencyText->setStringValue(column[4]);
    tuner.mReferencePitchText->setStringValue(column[5]);
    tuner.mTransposePopUpButton->selectItemAtIndex(column[6].toInt());
    tuner.mTuningPopUpButton->removeAllItems();
    for (int other = 0; other < column[7].toInt(); ++other)
      tuner.mTuningPopUpButton->addItemWithTitle(QStringLiteral("another"));
    tuner.mTuningPopUpButton->addItemWithTitle(column[8]);
    tuner.mTuningPopUpButton->selectItemAtIndex(column[7].toInt());
    tuner.mTonicPopUpButton->selectItemAtIndex(column[9].toInt());
    tuner.mInputDevicePopUpButton->removeAllItems();
    tuner.mInputDevicePopUpButton->addItemWithTitle(column[10]);
    tuner.mInputDevicePopUpButton->selectItemAtIndex(0);
    tuner.mLevelText->setStringValue(column[11]);

    tuner.speakStatusTimer();
    EXPECT_EQ(lastSpoken(), column[12].toStdString()) << line;
    tuner.speakDetailsTimer();
    EXPECT_EQ(lastSpoken(), column[13].toStdString()) << line;

    // The middle of the cent, which the meter cuts off to the number shown.
    const int cents = tuner.mCentText->intValue();
    const float middle = cents < 0 ? -0.5F : 0.5F;
    const float semitones = cents == 0 ? 0.0F : (static_cast<float>(cents) + middle) / 100.0F;
    for (const auto &[tune, hertz, expected] :
         {std::tuple(true, false, column[14]), std::tuple(false, true, column[15]),
          std::tuple(true, true, column[16])}) {
      tuner.mTuneSpeech = tune;
      tuner.mHertzSpeech = hertz;
      tuner.setTuningMeter(semitones);
      EXPECT_EQ(lastSpoken(), expected.toStdString()) << line;
    }
    tuner.mTuneSpeech = false;
    tuner.mHertzSpeech = false;
    EXPECT_EQ(spokenCount(), (states + 1) * 5);
  }
  EXPECT_EQ(states, 3U * 23U * 12U);
  EXPECT_EQ(unsaid.size(), 0U);
}

}  // namespace
}  // namespace orvane::test
