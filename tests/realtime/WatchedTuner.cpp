#include "tests/realtime/WatchedTuner.h"

#include "tests/realtime/Storm.h"

namespace orvane::test {

class WatchedTuner::NoSystem : public System {
 public:
  void beep() override {}
  void openSoundSettings() override {}
  void showSoundInputPage() override {}
  void runAlertPanel(const std::string &, const std::string &, const std::string &) override {}
  void terminate() override {}
  std::unique_ptr<SpeechSynthesizer> makeSpeechSynthesizer() override {
    class NoSpeech : public SpeechSynthesizer {
     public:
      bool isSpeaking() const override { return false; }
      void startSpeakingString(const std::string &) override {}
    };
    return std::make_unique<NoSpeech>();
  }
  void log(const std::string &) override {}
};

WatchedTuner::WatchedTuner(MakeHardware makeHardware)
    : mMakeHardware(std::move(makeHardware)), mSystem(std::make_unique<NoSystem>()) {
  start();
}

WatchedTuner::~WatchedTuner() {
  quit();
}

void WatchedTuner::start() {
  quit();
  mHardware = std::make_unique<GuardedHardware>(mMakeHardware(), mWatch);
  mDefaults = std::make_unique<UserDefaults>(UserDefaults::Log(), mFolder / "Orvane.ini");
  mController = std::make_unique<Controller>(
      Controller::Surroundings{*mHardware, *mDefaults, *mSystem,
                               std::filesystem::path(ORVANE_RESOURCES_DIR) / "Temperaments.txt"});
  mWatch.setCapture(&mController->mCapture, mController->mWakeUp.descriptor());
  mController->awakeFromNib();
}

void WatchedTuner::quit() {
  if (mController == nullptr)
    return;
  mController->applicationWillTerminate();
  mController.reset();
  mDefaults.reset();
  mHardware.reset();
}

void WatchedTuner::choose(int item) {
  mController->mInputDevicePopUpButton->selectItemAtIndex(item);
  mController->inputDevicePopupChanged();
}

bool WatchedTuner::choose(const std::string &endOfTitle) {
  for (int item = 0; item < numberOfDevices(); ++item) {
    if (!mController->mInputDevicePopUpButton->itemText(item).endsWith(
            QString::fromStdString(endOfTitle)))
      continue;
    choose(item);
    return true;
  }
  return false;
}

void WatchedTuner::hide() {
  mController->hide();
}

void WatchedTuner::unhide() {
  mController->showOrvaneWindow();
}

bool WatchedTuner::comesToShow(const QString &letter, const QString &octave) {
  // What is shown may be of before.
  const std::uint64_t blocks = totals().blocks + 3;
  return comesTrue([&] {
    return totals().blocks >= blocks && mController->mNoteText->stringValue() == letter &&
           mController->mOctaveText->stringValue() == octave;
  });
}

}  // namespace orvane::test
