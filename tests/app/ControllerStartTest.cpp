#include <gtest/gtest.h>

#include <QStandardPaths>

#include "core/TemperamentFile.h"
#include "tests/WindowLayouts.h"
#include "tests/app/ControllerWatch.h"

namespace orvane::test {
namespace {

class ControllerStartTest : public testing::Test {
 protected:
  // Starts the tuner with these settings stored.
  Controller &launchWith(const Lines &settings) {
    rig.quit();
    writeSettings(rig.settingsFile(), settings);
    rig.hardware.calls.clear();
    return rig.launch();
  }
  Lines callsBeginningWith(const std::string &start) const {
    Lines calls;
    for (const std::string &call : rig.hardware.calls) {
      if (call.starts_with(start))
        calls.push_back(call);
    }
    return calls;
  }

  ControllerRig rig;
};

TEST_F(ControllerStartTest, TheFirstLaunchShowsTheBuiltInDefaults) {
  const Controller &tuner = rig.launch();
  EXPECT_EQ(tuner.mSettings.mReferencePitch, 440.0F);
  EXPECT_EQ(tuner.mReferencePitchText->stringValue(), "440");
  EXPECT_EQ(tuner.mReferencePitchStepper->floatValue(), 440.0F);
  EXPECT_EQ(tuner.mSettings.mTuning, 0);
  EXPECT_EQ(tuner.mTuningPopUpButton->indexOfSelectedItem(), 0);
  EXPECT_EQ(tuner.mSettings.mTonic, 0);
  EXPECT_EQ(tuner.mTonicPopUpButton->titleOfSelectedItem(), "C (261.6Hz)");
  EXPECT_FALSE(tuner.mTonicPopUpButton->isEnabled());
  EXPECT_EQ(tuner.mSettings.mTranspose, 0);
  EXPECT_EQ(tuner.mTransposePopUpButton->indexOfSelectedItem(), 11);
  EXPECT_TRUE(tuner.mTransposeText->isHidden());
  EXPECT_EQ(tuner.mTransposeText->stringValue(), "");
  EXPECT_TRUE(tuner.disclosed);
  EXPECT_EQ(tuner.mDisclosureButton->state(), 1);
  EXPECT_EQ(tuner.mWindow->contentSize(), QSizeF(kFullLayout));
  EXPECT_TRUE(tuner.mWindow->isVisible());
  EXPECT_TRUE(tuner.mTuningMeterWindow->isVisible());
  EXPECT_FALSE(tuner.mTuneSpeech);
  EXPECT_FALSE(tuner.mHertzSpeech);
  EXPECT_EQ(tuner.mInputDevicePopUpButton->titleOfSelectedItem(), "Acme : Mic");
  EXPECT_EQ(tuner.mInputVolumeSlider->intValue(), 50);
  EXPECT_EQ(tuner.mInputVolumeText->stringValue(), "50");
}

TEST_F(ControllerStartTest, TheFirstDisplayIsTheReferencePitch) {
  const Controller &tuner = rig.launch();
  EXPECT_EQ(tuner.mLoop.mFrequency, 440.0F);
  EXPECT_EQ(tuner.mNoteText->stringValue(), "A");
  EXPECT_TRUE(tuner.mAccidentalText->isHidden());
  EXPECT_EQ(tuner.mOctaveText->stringValue(), "4");
  EXPECT_EQ(tuner.mCentText->stringValue(), "±0");
  EXPECT_EQ(tuner.mFrequencyText->stringValue(), "440.0Hz");
  EXPECT_EQ(tuner.mIdealFrequencyText->stringValue(), "440.0Hz");
  EXPECT_EQ(tuner.mNatural->image(), tuner.mGreen28x28);
  EXPECT_NE(tuner.mGreen28x28, nullptr);
  EXPECT_EQ(tuner.mFlat0->image(), tuner.mGray24x24);
  EXPECT_EQ(tuner.mSharp4->image(), tuner.mGray24x24);
  EXPECT_NE(tuner.mGray16x16, nullptr);
  EXPECT_EQ(tuner.mLevel0->image(), tuner.mGray16x16);
  EXPECT_EQ(tuner.mLevel7->image(), tuner.mGray16x16);
  EXPECT_EQ(tuner.mLevelText->stringValue(), "-96dB");
}

TEST_F(ControllerStartTest, GoesThroughItsStepsInOrder) {
  rig.temperaments = rig.folder / "missing.txt";
  const WindowWatch watch(
      [this](const std::string &name) { rig.hardware.calls.push_back("show " + name); });
  rig.launch();
  Lines expected = {"log failed to read Temperaments.txt. error: " + rig.temperaments.string() +
                        ": No such file or directory",
                    "show mTuningMeterWindow",
                    "show mWindow",
                    "HardwareInfo dev# size?",
                    "HardwareGet dev# 4",
                    "Get 7 0 in sfmt 40",
                    "Info 7 0 in name size?",
                    "Get 7 0 in name 4",
                    "Info 7 0 in makr size?",
                    "Get 7 0 in makr 5",
                    "Info 7 0 in ssrc writable?",
                    "Get 7 0 in sfmt 40",
                    "Info 7 0 in slay size?",
                    "Get 7 0 in slay 24",
                    "Info 7 1 in volm writable?",
                    "Get 7 1 in volm 4"};
  const Lines start = startCalls("7");
  expected.insert(expected.end(), start.begin(), start.end());
  EXPECT_EQ(rig.hardware.calls, expected);
}

TEST(ControllerStart, HasShownEverythingBeforeItTouchesTheHardware) {
  WatchedTuner tuner;
  Controller &controller = tuner.controller;
  controller.mInputVolumeSlider->setIntValue(55);
  controller.mInputVolumeText->setIntValue(55);
  int lists = 0;
  tuner.hardware.beforeDeviceList = [&] {
    ++lists;
    EXPECT_TRUE(controller.mWindow->isVisible());
    EXPECT_TRUE(controller.mTuningMeterWindow->isVisible());
    EXPECT_EQ(controller.mNoteText->stringValue(), "A");
    EXPECT_EQ(controller.mInputVolumeSlider->intValue(), 0);
    EXPECT_EQ(controller.mInputVolumeText->stringValue(), "0");
    EXPECT_EQ(controller.mInputDevicePopUpButton->numberOfItems(), 0);
  };
  controller.awakeFromNib();
  EXPECT_EQ(lists, 1);
  // The volume that was read is shown as soon as the event loop runs, not before.
  EXPECT_EQ(controller.mInputVolumeText->stringValue(), "0");
  QApplication::processEvents();
  EXPECT_EQ(controller.mInputVolumeText->stringValue(), "50");
}

TEST(ControllerStart, HasRestoredTheSettingsBeforeItShowsAWindow) {
  WatchedTuner tuner;
  Controller &controller = tuner.controller;
  tuner.defaults.setFloat(442.0F, "ReferencePitchKey");
  tuner.defaults.setInteger(1, "TuningKey");
  tuner.defaults.setInteger(2, "TonicKey");
  tuner.defaults.setInteger(-2, "org.velmora.TransposeKey");
  tuner.defaults.setBool(false, "DisclosedKey");
  tuner.defaults.setBool(true, "org.velmora.TuneSpeechKey");
  const QRectF full = controller.mWindow->contentRectForFrameRect(controller.mWindow->frame());
  Lines windows;
  const WindowWatch watch([&](const std::string &name) {
    windows.push_back(name);
    EXPECT_EQ(controller.mReferencePitchText->stringValue(), "442");
    EXPECT_EQ(controller.mTuningPopUpButton->indexOfSelectedItem(), 2);
    EXPECT_TRUE(controller.mTonicPopUpButton->isEnabled());
    EXPECT_EQ(controller.mTonicPopUpButton->indexOfSelectedItem(), 2);
    EXPECT_EQ(controller.mTransposeText->stringValue(), "C = A#/Bb (-2)");
    EXPECT_EQ(controller.mFrequencyText->stringValue(), "442.0Hz");
    EXPECT_EQ(controller.mDisclosureButton->state(), 0);
    EXPECT_EQ(controller.mWindow->contentAspectRatio(), QSizeF(kCollapsedLayout));
    // Read last, so that the first display is not spoken.
    EXPECT_FALSE(controller.mTuneSpeech);
    EXPECT_TRUE(tuner.hardware.calls.empty());
  });
  controller.awakeFromNib();
  EXPECT_EQ(windows, (Lines{"mTuningMeterWindow", "mWindow"}));
  EXPECT_TRUE(controller.mTuneSpeech);
  EXPECT_TRUE(tuner.system.spoken.empty());
  EXPECT_EQ(full.size(), QSizeF(kFullLayout));
}

TEST_F(ControllerStartTest, GivesTheKeyboardToTheMainWindow) {
  const Controller &tuner = rig.launch();
  EXPECT_EQ(QApplication::activeWindow(), tuner.mWindow);
  EXPECT_TRUE(tuner.mTuningMeterWindow->testAttribute(Qt::WA_ShowWithoutActivating));
  EXPECT_FALSE(tuner.mWindow->testAttribute(Qt::WA_ShowWithoutActivating));
}

TEST_F(ControllerStartTest, HearsTheHardwareAndReadsItsRate) {
  rig.hardware.devices[0].sampleRate = 44100.0;
  const Controller &tuner = rig.launch();
  EXPECT_EQ(tuner.mCapture.mSampleRate.load(), 44100.0F);
  EXPECT_TRUE(tuner.mCapture.mIsBufferInvalid.load());
  rig.hardware.devices[0].sampleRate = 96000.0;
  EXPECT_EQ(rig.hardware.notify(7, 0, 1, kAudioDevicePropertyStreamFormat), noErr);
  EXPECT_EQ(tuner.mCapture.mSampleRate.load(), 96000.0F);
}

TEST_F(ControllerStartTest, RestoresTheReferencePitchUnlessItIsNone) {
  struct Case {
    std::string stored;
    float pitch;
    QString text;
    float stepper;
  };
  for (const Case &c :
       {Case{"415.3", 415.3F, "415.3", 415.3F}, Case{"349", 349.0F, "349", 349.0F},
        Case{"499.9", 499.9F, "499.9", 499.9F},
        // Only what is typed has limits; the stepper has them always.
        Case{"300", 300.0F, "300", 349.0F}, Case{"600", 600.0F, "600", 499.9F},
        Case{"442 hertz", 442.0F, "442", 442.0F}, Case{"\" 442\"", 442.0F, "442", 442.0F},
        Case{"4.42e2", 442.0F, "442", 442.0F}, Case{"0", 440.0F, "440", 440.0F},
        Case{"-0", 440.0F, "440", 440.0F}, Case{"-5", 440.0F, "440", 440.0F},
        Case{"nan", 440.0F, "440", 440.0F}, Case{"inf", 440.0F, "440", 440.0F},
        Case{"-inf", 440.0F, "440", 440.0F}, Case{"1e999", 440.0F, "440", 440.0F},
        Case{"-1e999", 440.0F, "440", 440.0F}, Case{"1e-999", 440.0F, "440", 440.0F},
        Case{"abc", 440.0F, "440", 440.0F}, Case{"", 440.0F, "440", 440.0F}}) {
    const Controller &tuner = launchWith({"ReferencePitchKey=" + c.stored});
    EXPECT_EQ(tuner.mSettings.mReferencePitch, c.pitch) << c.stored;
    EXPECT_EQ(tuner.mLoop.mFrequency, c.pitch) << c.stored;
    EXPECT_EQ(tuner.mReferencePitchText->stringValue(), c.text) << c.stored;
    EXPECT_EQ(tuner.mReferencePitchStepper->floatValue(), c.stepper) << c.stored;
    EXPECT_EQ(tuner.mNoteText->stringValue(), "A") << c.stored;
    EXPECT_TRUE(callsBeginningWith("beep").empty()) << c.stored;
    EXPECT_TRUE(callsBeginningWith("log").empty()) << c.stored;
  }
}

TEST_F(ControllerStartTest, RestoresATemperamentThatThereIs) {
  struct Case {
    std::string stored;
    std::int64_t tuning;
    int item;
  };
  rig.temperaments = twoTemperaments(rig.folder);
  for (const Case &c :
       {Case{"0", 0, 0}, Case{"1", 1, 2}, Case{"2", 2, 3},
        Case{"3", 0, 0},  // one more than there are
        Case{"4", 0, 0},  // as many as the menu has items
        Case{"5", 0, 0}, Case{"-1", 0, 0}, Case{"9223372036854775807", 0, 0},
        Case{"-9223372036854775808", 0, 0}, Case{"99999999999999999999", 0, 0}, Case{"abc", 0, 0},
        Case{"2abc", 2, 3}, Case{"\" 2\"", 2, 3}, Case{"1.9", 1, 2}, Case{"", 0, 0}}) {
    const Controller &tuner = launchWith({"TuningKey=" + c.stored});
    EXPECT_EQ(tuner.mTuningPopUpButton->numberOfItems(), 4);
    EXPECT_EQ(tuner.mSettings.mTuning, c.tuning) << c.stored;
    EXPECT_EQ(tuner.mTuningPopUpButton->indexOfSelectedItem(), c.item) << c.stored;
    EXPECT_EQ(tuner.mTonicPopUpButton->isEnabled(), c.tuning != 0) << c.stored;
  }
}

TEST_F(ControllerStartTest, RestoresTheTonicWithinTheOctave) {
  struct Case {
    std::string stored;
    int tonic;
  };
  for (const Case &c : {Case{"0", 0}, Case{"9", 9}, Case{"11", 11}, Case{"12", 11}, Case{"99", 11},
                        Case{"-1", 0}, Case{"-9223372036854775808", 0}, Case{"abc", 0},
                        Case{"3abc", 3}, Case{"\" 7\"", 7}, Case{"", 0}}) {
    const Controller &tuner = launchWith({"TonicKey=" + c.stored, "TuningKey=1"});
    EXPECT_EQ(tuner.mSettings.mTonic, c.tonic) << c.stored;
    EXPECT_EQ(tuner.mTonicPopUpButton->indexOfSelectedItem(), c.tonic) << c.stored;
    EXPECT_EQ(tuner.mTonicPopUpButton->numberOfItems(), 12) << c.stored;
  }
}

TEST_F(ControllerStartTest, RestoresTheTranspositionWithinTheMenu) {
  struct Case {
    std::string stored;
    std::int64_t transpose;
    QString label;
  };
  for (const Case &c :
       {Case{"0", 0, ""}, Case{"-2", -2, "C = A#/Bb (-2)"}, Case{"+3", 3, "C = D#/Eb (+3)"},
        Case{"7", 7, "C = G (+7)"}, Case{"-11", -11, "C = C#/Db (-11)"},
        Case{"-12", -11, "C = C#/Db (-11)"}, Case{"11", 11, "C = B (+11)"},
        Case{"12", 11, "C = B (+11)"}, Case{"9223372036854775807", 11, "C = B (+11)"},
        Case{"abc", 0, ""}, Case{"3abc", 3, "C = D#/Eb (+3)"}, Case{"\" 7\"", 7, "C = G (+7)"}}) {
    const Controller &tuner = launchWith({"org.velmora.TransposeKey=" + c.stored});
    EXPECT_EQ(tuner.mSettings.mTranspose, c.transpose) << c.stored;
    EXPECT_EQ(tuner.mTransposePopUpButton->indexOfSelectedItem(), c.transpose + 11) << c.stored;
    EXPECT_EQ(tuner.mTransposeText->stringValue(), c.label) << c.stored;
    EXPECT_EQ(tuner.mTransposeText->isHidden(), c.transpose == 0) << c.stored;
  }
}

TEST_F(ControllerStartTest, StartsCollapsedWhenTheDetailsWereHidden) {
  for (const std::string no : {"false", "NO", "no", "0", "abc", ""}) {
    const Controller &tuner = launchWith({"DisclosedKey=" + no});
    EXPECT_FALSE(tuner.disclosed) << no;
    EXPECT_EQ(tuner.mDisclosureButton->state(), 0) << no;
    EXPECT_EQ(tuner.mWindow->contentSize(), QSizeF(kCollapsedLayout)) << no;
    EXPECT_EQ(tuner.mContentView->size(), kCollapsedLayout) << no;
    EXPECT_EQ(tuner.mWindow->contentAspectRatio(), QSizeF(kCollapsedLayout)) << no;
  }
  for (const std::string yes : {"true", "YES", "yes", "1"}) {
    const Controller &tuner = launchWith({"DisclosedKey=" + yes});
    EXPECT_TRUE(tuner.disclosed) << yes;
    EXPECT_EQ(tuner.mDisclosureButton->state(), 1) << yes;
    EXPECT_EQ(tuner.mContentView->size(), kFullLayout) << yes;
    EXPECT_EQ(tuner.mWindow->contentAspectRatio(), QSizeF(kFullLayout)) << yes;
  }
}

TEST_F(ControllerStartTest, ExpandsToTheFullLayoutAfterACollapsedStart) {
  Controller &tuner = launchWith({"DisclosedKey=false"});
  tuner.mDisclosureButton->performClick();
  QApplication::processEvents();
  EXPECT_TRUE(tuner.disclosed);
  EXPECT_EQ(tuner.mContentView->size(), kFullLayout);
  EXPECT_EQ(tuner.mWindow->contentAspectRatio(), QSizeF(kFullLayout));
}

TEST_F(ControllerStartTest, LeavesTheNeedleMeterHiddenUntilItIsAskedFor) {
  for (const std::string no : {"false", "NO", "0"}) {
    Controller &tuner = launchWith({"org.velmora.TunerMeterKey=" + no});
    EXPECT_TRUE(tuner.mWindow->isVisible()) << no;
    EXPECT_FALSE(tuner.mTuningMeterWindow->isVisible()) << no;
    tuner.showTuningMeterWindow();
    EXPECT_TRUE(tuner.mTuningMeterWindow->isVisible()) << no;
  }
  EXPECT_TRUE(launchWith({"org.velmora.TunerMeterKey=YES"}).mTuningMeterWindow->isVisible());
}

TEST_F(ControllerStartTest, RestoresTheSpeechFlags) {
  struct Case {
    Lines stored;
    bool tune;
    bool hertz;
  };
  for (const Case &c :
       {Case{{"org.velmora.TuneSpeechKey=YES"}, true, false},
        Case{{"org.velmora.HertzSpeechKey=true"}, false, true},
        Case{{"org.velmora.TuneSpeechKey=1", "org.velmora.HertzSpeechKey=1"}, true, true},
        Case{{"org.velmora.TuneSpeechKey=NO", "org.velmora.HertzSpeechKey=off"}, false, false},
        // Without the prefix they are no keys of the tuner's.
        Case{{"TuneSpeechKey=YES", "HertzSpeechKey=YES"}, false, false}}) {
    const Controller &tuner = launchWith(c.stored);
    EXPECT_EQ(tuner.mTuneSpeech, c.tune) << c.stored.front();
    EXPECT_EQ(tuner.mHertzSpeech, c.hertz) << c.stored.front();
  }
  EXPECT_TRUE(rig.system.spoken.empty());
}

TEST_F(ControllerStartTest, StartsTheStoredDeviceOrElseTheFirst) {
  struct Case {
    Lines stored;
    int item;
    std::string started;
  };
  rig.hardware.devices = {microphone(7, "Mic"), microphone(8, "Line")};
  for (const Case &c :
       {Case{{}, 0, "Start 7 ?"}, Case{{"org.velmora.InputDeviceKey=Acme : Mic"}, 0, "Start 7 ?"},
        Case{{"org.velmora.InputDeviceKey=Acme : Line"}, 1, "Start 8 ?"},
        Case{{"org.velmora.InputDeviceKey=Acme : Gone"}, 0, "Start 7 ?"},
        Case{{"org.velmora.InputDeviceKey=acme : line"}, 0, "Start 7 ?"},
        Case{{"org.velmora.InputDeviceKey="}, 0, "Start 7 ?"},
        Case{{"InputDeviceKey=Acme : Line"}, 0, "Start 7 ?"}}) {
    const Controller &tuner = launchWith(c.stored);
    EXPECT_EQ(tuner.mInputDevicePopUpButton->numberOfItems(), 2);
    EXPECT_EQ(tuner.mInputDevicePopUpButton->indexOfSelectedItem(), c.item);
    EXPECT_EQ(callsBeginningWith("Start"), Lines{c.started});
    EXPECT_TRUE(callsBeginningWith("Stop").empty());
  }
}

TEST_F(ControllerStartTest, SelectsTheStoredSourceOfADeviceOnceItRuns) {
  rig.hardware.devices[0].isDataSourceSettable = true;
  rig.hardware.devices[0].dataSources = {{11, "Line"}, {12, "Front"}};
  const Controller &tuner = launchWith({"org.velmora.InputDeviceKey=Acme : Front"});
  EXPECT_EQ(tuner.mInputDevicePopUpButton->indexOfSelectedItem(), 1);
  Lines expected = startCalls("7");
  expected.push_back("Set 7 0 in ssrc 4 12");
  ASSERT_GE(rig.hardware.calls.size(), expected.size());
  EXPECT_EQ(Lines(rig.hardware.calls.end() - static_cast<std::ptrdiff_t>(expected.size()),
                  rig.hardware.calls.end()),
            expected);
}

TEST_F(ControllerStartTest, TheUsersTemperamentsLieWhereTheToolkitHasTheProgramsData) {
  QCoreApplication::setOrganizationName(QStringLiteral("velmora"));
  QCoreApplication::setApplicationName(QStringLiteral("Orvane"));
  const QByteArray before = qgetenv("XDG_DATA_HOME");
  for (const char *folder : {"/somewhere/else", ""}) {
    qputenv("XDG_DATA_HOME", folder);
    const QString data = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    EXPECT_EQ(userTemperamentFile().string(), data.toStdString() + "/Temperaments.txt");
  }
  if (before.isEmpty())
    qunsetenv("XDG_DATA_HOME");
  else
    qputenv("XDG_DATA_HOME", before);
  QCoreApplication::setOrganizationName(QString());
  QCoreApplication::setApplicationName(QString());
}

}  // namespace
}  // namespace orvane::test
