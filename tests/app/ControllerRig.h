// The tuner with its real windows on hardware that writes down what it is asked, with a settings
// file of its own and a system that only remembers what it was asked to do.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <QApplication>

#include "app/Controller.h"
#include "tests/TemporaryFolder.h"
#include "tests/audio/FakeHardware.h"

namespace orvane::test {

// Remembers what it was given to say, and has always just said it unless told otherwise.
class FakeSpeech : public SpeechSynthesizer {
 public:
  FakeSpeech(const bool &isSpeaking, std::vector<std::string> &spoken)
      : mIsSpeaking(isSpeaking), mSpoken(spoken) {}

  bool isSpeaking() const override { return mIsSpeaking; }
  void startSpeakingString(const std::string &string) override { mSpoken.push_back(string); }

 private:
  const bool &mIsSpeaking;
  std::vector<std::string> &mSpoken;
};

// Writes into the hardware's list of calls, so that one list holds the order of both.
class FakeSystem : public System {
 public:
  explicit FakeSystem(FakeHardware &hardware) : mHardware(hardware) {}

  void beep() override { record("beep"); }
  void openSoundSettings() override { record("openSoundSettings"); }
  void showSoundInputPage() override { record("showSoundInputPage"); }
  void runAlertPanel(const std::string &title, const std::string &message,
                     const std::string &button) override {
    record("alert [" + title + "] [" + message + "] [" + button + "]");
  }
  void terminate() override { record("terminate"); }
  std::unique_ptr<SpeechSynthesizer> makeSpeechSynthesizer() override {
    record("makeSpeechSynthesizer");
    return std::make_unique<FakeSpeech>(isSpeaking, spoken);
  }
  void log(const std::string &line) override { record("log " + line); }

  bool isSpeaking = false;
  std::vector<std::string> spoken;

 private:
  void record(const std::string &call) { mHardware.calls.push_back(call); }

  FakeHardware &mHardware;
};

inline FakeDevice microphone(AudioDeviceID id = 7, const std::string &name = "Mic") {
  FakeDevice device;
  device.id = id;
  device.name = name;
  device.manufacturer = "Acme";
  device.isVolumeSettable = {true};
  return device;
}

class ControllerRig {
 public:
  explicit ControllerRig(std::vector<FakeDevice> devices = {microphone()})
      : hardware(std::move(devices)), system(hardware) {}

  // Reads the settings file as it is now, makes the tuner and starts it. Call once per launch.
  Controller &launch() {
    quit();
    defaults = std::make_unique<UserDefaults>([this](const std::string &line) { system.log(line); },
                                              settingsFile());
    controller = std::make_unique<Controller>(
        Controller::Surroundings{hardware, *defaults, system, temperaments});
    controller->awakeFromNib();
    QApplication::processEvents();
    return *controller;
  }
  // As at the application's end: the settings are written.
  void quit() {
    if (controller == nullptr)
      return;
    controller->applicationWillTerminate();
    controller.reset();
    defaults.reset();
  }
  ~ControllerRig() { quit(); }
  ControllerRig(const ControllerRig &) = delete;
  ControllerRig &operator=(const ControllerRig &) = delete;

  std::filesystem::path settingsFile() const { return folder / "Orvane.ini"; }

  TemporaryFolder folder;
  FakeHardware hardware;
  FakeSystem system;
  std::filesystem::path temperaments =
      std::filesystem::path(ORVANE_RESOURCES_DIR) / "Temperaments.txt";
  std::unique_ptr<UserDefaults> defaults;
  std::unique_ptr<Controller> controller;
};

}  // namespace orvane::test
