// The window's controls as the device layer knows them. Main thread. Each refers to a control that
// must outlive it.
#pragma once

#include "audio/PopUpButton.h"
#include "audio/VolumeControls.h"
#include "views/AutoResizePopUpButton.h"
#include "views/AutoResizeSlider.h"
#include "views/AutoResizeTextField.h"

namespace orvane {

class DevicePopUpButton : public PopUpButton {
 public:
  explicit DevicePopUpButton(AutoResizePopUpButton &button) : mButton(button) {}

  void removeAllItems() override { mButton.removeAllItems(); }
  void insertItemWithTitle(const std::string &title, std::int64_t index) override {
    mButton.insertItemWithTitle(QString::fromStdString(title), static_cast<int>(index));
  }
  std::int64_t numberOfItems() const override { return mButton.numberOfItems(); }
  std::int64_t indexOfItemWithTitle(const std::string &title) const override {
    return mButton.indexOfItemWithTitle(QString::fromStdString(title));
  }
  void selectItemAtIndex(std::int64_t index) override {
    mButton.selectItemAtIndex(static_cast<int>(index));
  }
  std::int64_t indexOfSelectedItem() const override { return mButton.indexOfSelectedItem(); }

 private:
  AutoResizePopUpButton &mButton;
};

class InputVolumeSlider : public VolumeSlider {
 public:
  explicit InputVolumeSlider(AutoResizeSlider &slider) : mSlider(slider) {}

  void setEnabled(bool enabled) override { mSlider.setEnabled(enabled); }
  void setIntValue(int percent) override { mSlider.setIntValue(percent); }

 private:
  AutoResizeSlider &mSlider;
};

class InputVolumeText : public VolumeText {
 public:
  explicit InputVolumeText(AutoResizeTextField &text) : mText(text) {}

  void setIntValue(int percent) override { mText.setIntValue(percent); }
  void setStringValue(const std::string &text) override {
    mText.setStringValue(QString::fromStdString(text));
  }

 private:
  AutoResizeTextField &mText;
};

}  // namespace orvane
