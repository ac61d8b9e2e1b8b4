// The windows, their device menu and their volume controls under random sequences of faults.
// ./faults goes the long way.
#include <gtest/gtest.h>

#include <iostream>

#include "tests/app/ControllerRig.h"
#include "tests/app/UserInput.h"
#include "tests/long/FaultSequence.h"

namespace orvane::test {
namespace {

class WindowFaultedTuner : public FaultedTuner {
 public:
  explicit WindowFaultedTuner(RandomFaultHardware &hardware)
      : mSystem(hardware),
        mController({hardware, mDefaults, mSystem,
                     std::filesystem::path(ORVANE_RESOURCES_DIR) / "Temperaments.txt"}) {
    mController.awakeFromNib();
    QApplication::processEvents();
  }
  ~WindowFaultedTuner() override { mController.applicationWillTerminate(); }

  bool hasInputs() const override { return menu().numberOfItems() > 0; }
  AUInputUnit &unit() override { return *mController.mAUInputUnit; }
  std::vector<std::string> titles() const override {
    std::vector<std::string> titles;
    for (int i = 0; i < menu().numberOfItems(); ++i)
      titles.push_back(menu().itemTitleAtIndex(i).toStdString());
    return titles;
  }
  std::int64_t selected() const override { return menu().indexOfSelectedItem(); }
  void choose(std::int64_t index) override {
    orvane::test::choose(menu(), static_cast<int>(index));
    QApplication::processEvents();
  }
  void hide() override {
    mController.hide();
    QApplication::processEvents();
  }
  void unhide() override {
    mController.showOrvaneWindow();
    QApplication::processEvents();
  }
  void moveSlider(int percent) override {
    if (slider().isEnabled())
      slider().setValue(percent);
  }
  void settle() override { QApplication::processEvents(); }

  std::string volumeText() const override {
    return mController.mInputVolumeText->stringValue().toStdString();
  }
  int sliderValue() const override { return slider().intValue(); }
  bool isSliderEnabled() const override { return slider().isEnabled(); }
  float frequency() const override { return mController.mLoop.mDisplayFrequency; }

 private:
  AutoResizePopUpButton &menu() const { return *mController.mInputDevicePopUpButton; }
  AutoResizeSlider &slider() const { return *mController.mInputVolumeSlider; }

  TemporaryFolder mFolder;
  FakeSystem mSystem;
  UserDefaults mDefaults{{}, mFolder / "Orvane.ini"};
  Controller mController;
};

TEST(WindowFaultSequence, TheWindowIsWellAgainAfterAnySequenceOfFaults) {
  const std::uint64_t count = longRunCount(20);
  std::size_t faults = 0;
  int launches = 0;
  for (std::uint64_t seed = longRunSeed(); seed < longRunSeed() + count; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    FaultSequence sequence(seed, [](RandomFaultHardware &hardware) {
      return std::make_unique<WindowFaultedTuner>(hardware);
    });
    sequence.run(50);
    faults += sequence.faults();
    launches += sequence.launches();
    if (HasFailure())
      return;
  }
  std::cout << count << " sequences of 50 steps, " << faults << " faults, " << launches
            << " launches\n";
  EXPECT_GT(faults, count);
}

}  // namespace
}  // namespace orvane::test
