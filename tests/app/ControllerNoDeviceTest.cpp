#include <gtest/gtest.h>

#include "tests/app/ControllerWatch.h"

namespace orvane::test {
namespace {

const std::vector<FakeDevice> kNoDevices;
const std::string kAlert = "alert [Sorry, Orvane cannot run with no audio input device.] [] [OK]";

FakeDevice loudspeaker() {
  FakeDevice device = microphone(3, "Speaker");
  device.hasInput = false;
  return device;
}

TEST(ControllerWithoutDevice, AlertsAndThenAsksToQuit) {
  ControllerRig rig(kNoDevices);
  const WindowWatch watch(
      [&rig](const std::string &name) { rig.hardware.calls.push_back("show " + name); });
  rig.launch();
  EXPECT_EQ(rig.hardware.calls,
            (Lines{"show mTuningMeterWindow", "show mWindow", "HardwareInfo dev# size?",
                   "HardwareGet dev# 0", kAlert, "terminate"}));
}

TEST(ControllerWithoutDevice, TakesADeviceThatOnlyPlaysForNone) {
  ControllerRig rig({loudspeaker()});
  const Controller &tuner = rig.launch();
  EXPECT_EQ(rig.hardware.calls, (Lines{"HardwareInfo dev# size?", "HardwareGet dev# 4",
                                       "Get 3 0 in sfmt 40", kAlert, "terminate"}));
  EXPECT_EQ(tuner.mInputDevicePopUpButton->numberOfItems(), 0);
}

TEST(ControllerWithoutDevice, HasNeitherVolumeNorSpeechWhileItAlerts) {
  WatchedTuner tuner(kNoDevices);
  tuner.defaults.setBool(true, "org.velmora.TuneSpeechKey");
  tuner.defaults.setBool(true, "org.velmora.HertzSpeechKey");
  Controller &controller = tuner.controller;
  int alerts = 0;
  tuner.system.duringAlert = [&] {
    ++alerts;
    EXPECT_TRUE(controller.mWindow->isVisible());
    EXPECT_EQ(controller.mInputVolumeSlider->intValue(), 0);
    EXPECT_EQ(controller.mInputVolumeText->stringValue(), "0");
    EXPECT_FALSE(controller.mTuneSpeech);
    EXPECT_FALSE(controller.mHertzSpeech);
    EXPECT_EQ(tuner.hardware.calls.back(), kAlert);
  };
  controller.awakeFromNib();
  EXPECT_EQ(alerts, 1);
  EXPECT_EQ(tuner.hardware.calls.back(), "terminate");
}

TEST(ControllerWithoutDevice, WritesTheKeysWithoutADeviceAndWithSpeechOff) {
  ControllerRig rig(kNoDevices);
  writeSettings(rig.settingsFile(),
                {"DisclosedKey=false", "ReferencePitchKey=441.5", "TonicKey=10", "TuningKey=1",
                 "org.velmora.HertzSpeechKey=YES", "org.velmora.InputDeviceKey=Acme : Mic",
                 "org.velmora.TransposeKey=-2", "org.velmora.TuneSpeechKey=YES",
                 "org.velmora.TunerMeterKey=false"});
  rig.launch();
  rig.hardware.calls.clear();
  rig.quit();
  EXPECT_EQ(readSettingsLines(rig.settingsFile()),
            (Lines{"DisclosedKey=false", "ReferencePitchKey=441.5", "TonicKey=10", "TuningKey=1",
                   "[General]", "org.velmora.HertzSpeechKey=false", "org.velmora.TransposeKey=-2",
                   "org.velmora.TuneSpeechKey=false", "org.velmora.TunerMeterKey=false"}));
  EXPECT_TRUE(rig.hardware.calls.empty());
}

TEST(ControllerWithoutDevice, WritesTheDefaultsOnAFirstLaunch) {
  ControllerRig rig(kNoDevices);
  rig.launch();
  rig.quit();
  EXPECT_EQ(readSettingsLines(rig.settingsFile()),
            (Lines{"DisclosedKey=true", "ReferencePitchKey=440", "TonicKey=0", "TuningKey=0",
                   "[General]", "org.velmora.HertzSpeechKey=false", "org.velmora.TransposeKey=0",
                   "org.velmora.TuneSpeechKey=false", "org.velmora.TunerMeterKey=true"}));
}

// Until the quit is under way the event loop still runs.
TEST(ControllerWithoutDevice, CallsNoHardwareWhateverTheUserStillDoes) {
  ControllerRig rig(kNoDevices);
  Controller &tuner = rig.launch();
  rig.hardware.calls.clear();
  tuner.inputDevicePopupChanged();
  tuner.mInputVolumeSlider->setIntValue(37);
  tuner.inputVolumeSliderChanged();
  tuner.hide();
  tuner.showOrvaneWindow();
  tuner.iaSpeakDetails();
  QApplication::processEvents();
  EXPECT_EQ(rig.hardware.calls, Lines{"makeSpeechSynthesizer"});
}

}  // namespace
}  // namespace orvane::test
