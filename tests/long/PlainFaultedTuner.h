// The device layer with a menu and volume controls that are plain records, and the capture, update
// loop and display of the terminal behind it, tied together as every front end does it.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "cli/TerminalTuner.h"
#include "tests/audio/FakeMainThread.h"
#include "tests/audio/FakePopUpButton.h"
#include "tests/long/FaultedTuner.h"

namespace orvane::test {

// No index may ever be one that the menu does not have.
class CheckedPopUpButton : public FakePopUpButton {
 public:
  void insertItemWithTitle(const std::string &title, std::int64_t index) override {
    ASSERT_GE(index, 0);
    ASSERT_LE(index, numberOfItems());
    FakePopUpButton::insertItemWithTitle(title, index);
  }
  void selectItemAtIndex(std::int64_t index) override {
    ASSERT_GE(index, 0);
    ASSERT_LT(index, numberOfItems());
    FakePopUpButton::selectItemAtIndex(index);
  }
};

class PlainFaultedTuner : public FaultedTuner, private VolumeSlider, private VolumeText {
 public:
  explicit PlainFaultedTuner(AudioHardware &hardware) : mUnit(hardware, &mMainThread) {
    mUnit.setIOProc(input, this);
    mUnit.setListenerProc(listen, this);
    mUnit.setupPopUpButton(&mMenu);
    if (!hasInputs())
      return;
    mUnit.setupVolumeSlider(this, this);
    mUnit.setInputDeviceWithName(std::nullopt);
    mTuner.capture().setSampleRate(mUnit.sampleRate());
  }
  ~PlainFaultedTuner() override {
    if (!mIsHidden)
      mUnit.stop();
  }

  bool hasInputs() const override { return mMenu.numberOfItems() > 0; }
  AUInputUnit &unit() override { return mUnit; }
  std::vector<std::string> titles() const override { return mMenu.items; }
  std::int64_t selected() const override { return mMenu.indexOfSelectedItem(); }
  void choose(std::int64_t index) override {
    mMenu.selectItemAtIndex(index);
    if (mIsHidden)
      mUnit.start();
    mUnit.setInputDeviceAtIndex(index);
    if (mIsHidden)
      mUnit.stop();
    mTuner.capture().setSampleRate(mUnit.sampleRate());
  }
  void hide() override {
    mIsHidden = true;
    mUnit.stop();
  }
  void unhide() override {
    mIsHidden = false;
    mUnit.start();
  }
  void moveSlider(int percent) override { mUnit.setVolume(percent); }
  void settle() override {
    mMainThread.run();
    while (const auto reading = mTuner.takeReading(mNow += 0.05))
      ASSERT_TRUE(std::isfinite(reading->frequency));
  }
  std::string volumeText() const override { return mText; }
  int sliderValue() const override { return mPercent; }
  bool isSliderEnabled() const override { return mIsEnabled; }
  float frequency() const override { return mTuner.display().frequency; }

 private:
  void setEnabled(bool isEnabled) override { mIsEnabled = isEnabled; }
  void setIntValue(int percent) override {
    mPercent = percent;
    mText = mIsEnabled ? std::to_string(percent) : "";
  }
  void setStringValue(const std::string &text) override { mText = text; }

  static OSStatus input(AudioDeviceID device, const AudioTimeStamp *now,
                        const AudioBufferList *list, const AudioTimeStamp *time,
                        AudioBufferList *output, const AudioTimeStamp *outputTime, void *self) {
    const IOProcCall call{device, now, list, time, output, outputTime};
    return static_cast<PlainFaultedTuner *>(self)->mTuner.capture().inputIOProc(&call);
  }
  static OSStatus listen(AudioDeviceID, UInt32, Boolean isInput, AudioDevicePropertyID,
                         void *self) {
    auto *tuner = static_cast<PlainFaultedTuner *>(self);
    if (isInput != 0)
      tuner->mTuner.capture().updateSampleRate(tuner->mUnit.sampleRate());
    return noErr;
  }

  const Tuning mTuning{};
  TerminalTuner mTuner{mTuning, nullptr};
  FakeMainThread mMainThread;
  CheckedPopUpButton mMenu;
  AUInputUnit mUnit;
  bool mIsHidden = false;
  bool mIsEnabled = false;
  int mPercent = 0;
  std::string mText;
  double mNow = 0.0;
};

}  // namespace orvane::test
