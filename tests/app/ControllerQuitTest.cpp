#include <gtest/gtest.h>

#include "tests/WindowLayouts.h"
#include "tests/app/ControllerWatch.h"

namespace orvane::test {
namespace {

// Gives every setting another value than the built-in one, as the user would.
void changeEverySetting(Controller &tuner) {
  tuner.mReferencePitchText->setStringValue(QStringLiteral("441.5"));
  tuner.referencePitchChanged();
  tuner.mTuningPopUpButton->selectItemAtIndex(3);
  tuner.tuningPopupChanged();
  tuner.mTonicPopUpButton->selectItemAtIndex(10);
  tuner.tonicPopupChanged();
  tuner.mTransposePopUpButton->selectItemAtIndex(9);
  tuner.transposePopupChanged();
  tuner.mInputDevicePopUpButton->selectItemAtIndex(1);
  tuner.inputDevicePopupChanged();
  tuner.mDisclosureButton->performClick();
  tuner.mTuningMeterWindow->close();
  tuner.iaSpeakTune();
  tuner.iaSpeakHertz();
}

const Lines kChangedSettings = {"DisclosedKey=false",
                                "ReferencePitchKey=441.5",
                                "TonicKey=10",
                                "TuningKey=2",
                                "[General]",
                                "org.velmora.HertzSpeechKey=true",
                                "org.velmora.InputDeviceKey=Acme : Line",
                                "org.velmora.TransposeKey=-2",
                                "org.velmora.TuneSpeechKey=true",
                                "org.velmora.TunerMeterKey=false"};

class ControllerQuitTest : public testing::Test {
 protected:
  ControllerQuitTest() { rig.temperaments = twoTemperaments(rig.folder); }

  ControllerRig rig{{microphone(7, "Mic"), microphone(8, "Line")}};
};

TEST(ControllerQuit, StopsTheStreamBeforeItWritesTheSettings) {
  WatchedTuner tuner;
  tuner.controller.awakeFromNib();
  tuner.hardware.calls.clear();
  int stops = 0;
  tuner.hardware.beforeStop = [&] {
    ++stops;
    EXPECT_FALSE(std::filesystem::exists(tuner.settingsFile));
    EXPECT_EQ(tuner.defaults.objectForKey("DisclosedKey"), std::nullopt);
  };
  tuner.controller.applicationWillTerminate();
  EXPECT_EQ(stops, 1);
  EXPECT_EQ(tuner.hardware.calls, stopCalls("7"));
  EXPECT_TRUE(std::filesystem::exists(tuner.settingsFile));
}

TEST_F(ControllerQuitTest, WritesNineKeysOnAFirstLaunch) {
  rig.launch();
  EXPECT_FALSE(std::filesystem::exists(rig.settingsFile()));
  rig.quit();
  EXPECT_EQ(readSettingsLines(rig.settingsFile()),
            (Lines{"DisclosedKey=true", "ReferencePitchKey=440", "TonicKey=0", "TuningKey=0",
                   "[General]", "org.velmora.HertzSpeechKey=false",
                   "org.velmora.InputDeviceKey=Acme : Mic", "org.velmora.TransposeKey=0",
                   "org.velmora.TuneSpeechKey=false", "org.velmora.TunerMeterKey=true"}));
}

TEST_F(ControllerQuitTest, WritesWhatTheUserChanged) {
  changeEverySetting(rig.launch());
  rig.quit();
  EXPECT_EQ(readSettingsLines(rig.settingsFile()), kChangedSettings);
}

TEST_F(ControllerQuitTest, TheNextLaunchRestoresAllNineSettings) {
  changeEverySetting(rig.launch());
  const Controller &next = rig.launch();
  EXPECT_EQ(next.mSettings.mReferencePitch, 441.5F);
  EXPECT_EQ(next.mSettings.mTuning, 2);
  EXPECT_EQ(next.mTuningPopUpButton->titleOfSelectedItem(), "Beta");
  EXPECT_EQ(next.mSettings.mTonic, 10);
  // B♭ is a semitone above A: 441.5 × 2^(1/12).
  EXPECT_EQ(next.mTonicPopUpButton->titleOfSelectedItem(), "A#/Bb (467.8Hz)");
  EXPECT_TRUE(next.mTonicPopUpButton->isEnabled());
  EXPECT_EQ(next.mSettings.mTranspose, -2);
  EXPECT_EQ(next.mTransposeText->stringValue(), "C = A#/Bb (-2)");
  EXPECT_FALSE(next.disclosed);
  EXPECT_EQ(next.mContentView->size(), kCollapsedLayout);
  EXPECT_FALSE(next.mTuningMeterWindow->isVisible());
  EXPECT_EQ(next.mInputDevicePopUpButton->titleOfSelectedItem(), "Acme : Line");
  EXPECT_TRUE(next.mTuneSpeech);
  EXPECT_TRUE(next.mHertzSpeech);
  rig.quit();
  EXPECT_EQ(readSettingsLines(rig.settingsFile()), kChangedSettings);
}

TEST_F(ControllerQuitTest, KeepsWhatOthersStored) {
  writeSettings(rig.settingsFile(), {"TuneSpeechKey=YES", "org.velmora.Another=x"});
  rig.launch();
  rig.quit();
  Lines lines = readSettingsLines(rig.settingsFile());
  EXPECT_EQ(lines.size(), 1U + 9U + 2U);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "TuneSpeechKey=YES"), 1);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "org.velmora.Another=x"), 1);
}

TEST_F(ControllerQuitTest, AClampedSettingIsWrittenAsItCameToBe) {
  writeSettings(rig.settingsFile(),
                {"ReferencePitchKey=-5", "TuningKey=99", "TonicKey=99",
                 "org.velmora.TransposeKey=99", "org.velmora.InputDeviceKey=Acme : Gone"});
  rig.launch();
  rig.quit();
  const Lines lines = readSettingsLines(rig.settingsFile());
  for (const char *line : {"ReferencePitchKey=440", "TuningKey=0", "TonicKey=11",
                           "org.velmora.TransposeKey=11", "org.velmora.InputDeviceKey=Acme : Mic"})
    EXPECT_EQ(std::count(lines.begin(), lines.end(), line), 1) << line;
}

TEST_F(ControllerQuitTest, KeepsAPitchThatTheTypedLimitsWouldNotAllow) {
  writeSettings(rig.settingsFile(), {"ReferencePitchKey=300"});
  rig.launch();
  rig.quit();
  const Lines lines = readSettingsLines(rig.settingsFile());
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "ReferencePitchKey=300"), 1);
}

TEST_F(ControllerQuitTest, RemembersADeviceByWhateverTitleItHas) {
  for (const std::string name : {"a, b", "a; b = c", "\"quoted\"", "back\\slash", " blanks ",
                                 "Grüße ♪ 🎤", "%20 #1 @x", "@Invalid()", "tab\there"}) {
    rig.hardware.devices = {microphone(7, "Mic"), microphone(8, name)};
    Controller &tuner = rig.launch();
    tuner.mInputDevicePopUpButton->selectItemAtIndex(1);
    tuner.inputDevicePopupChanged();
    EXPECT_EQ(rig.launch().mInputDevicePopUpButton->indexOfSelectedItem(), 1) << name;
  }
  EXPECT_EQ(std::count_if(rig.hardware.calls.begin(), rig.hardware.calls.end(),
                          [](const std::string &call) { return call.starts_with("log"); }),
            0);
}

TEST_F(ControllerQuitTest, WritesForTwoSourcesOfOneDeviceTheOneInUse) {
  rig.hardware.devices[1].isDataSourceSettable = true;
  rig.hardware.devices[1].dataSources = {{11, "Line"}, {12, "Front"}};
  Controller &tuner = rig.launch();
  EXPECT_EQ(tuner.mInputDevicePopUpButton->numberOfItems(), 3);
  tuner.mInputDevicePopUpButton->selectItemAtIndex(2);
  tuner.inputDevicePopupChanged();
  rig.quit();
  const Lines lines = readSettingsLines(rig.settingsFile());
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "org.velmora.InputDeviceKey=Acme : Front"), 1);
}

TEST_F(ControllerQuitTest, StopsTheDeviceThatIsInUse) {
  Controller &tuner = rig.launch();
  rig.hardware.calls.clear();
  tuner.mInputDevicePopUpButton->selectItemAtIndex(1);
  tuner.inputDevicePopupChanged();
  Lines expected = stopCalls("7");
  for (const char *call : {"Get 8 0 in sfmt 40", "Info 8 0 in slay size?", "Get 8 0 in slay 24",
                           "Info 8 1 in volm writable?", "Get 8 1 in volm 4"})
    expected.emplace_back(call);
  const Lines start = startCalls("8");
  expected.insert(expected.end(), start.begin(), start.end());
  EXPECT_EQ(rig.hardware.takeCalls(), expected);
  rig.quit();
  EXPECT_EQ(rig.hardware.calls, stopCalls("8"));
}

TEST_F(ControllerQuitTest, DoesNotStopAHiddenStreamAgainButWritesTheSettings) {
  Controller &tuner = rig.launch();
  tuner.hide();
  rig.hardware.calls.clear();
  rig.quit();
  EXPECT_TRUE(rig.hardware.calls.empty());
  EXPECT_EQ(readSettingsLines(rig.settingsFile()).size(), 1U + 9U);
}

TEST_F(ControllerQuitTest, TheNeedleMeterClosedAtQuitStaysHiddenAndAnOpenOneComesBack) {
  rig.launch().mTuningMeterWindow->close();
  Controller &second = rig.launch();
  EXPECT_FALSE(second.mTuningMeterWindow->isVisible());
  second.showTuningMeterWindow();
  EXPECT_TRUE(rig.launch().mTuningMeterWindow->isVisible());
}

TEST_F(ControllerQuitTest, LeavesOutAPitchThatIsStillBeingTyped) {
  Controller &tuner = rig.launch();
  tuner.mReferencePitchText->setFocus();
  ASSERT_TRUE(tuner.mReferencePitchText->hasFocus());
  tuner.mReferencePitchText->setStringValue(QStringLiteral("12"));
  rig.hardware.calls.clear();
  rig.quit();
  EXPECT_EQ(rig.hardware.calls, stopCalls("7"));
  const Lines lines = readSettingsLines(rig.settingsFile());
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "ReferencePitchKey=440"), 1);
}

}  // namespace
}  // namespace orvane::test
