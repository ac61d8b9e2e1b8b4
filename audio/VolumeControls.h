// What the device layer needs of the window's volume controls: a slider from 0 to 100 and the text
// beside it. Main thread only.
#pragma once

#include <string>

namespace orvane {

class VolumeSlider {
 public:
  virtual ~VolumeSlider() = default;

  virtual void setEnabled(bool isEnabled) = 0;
  // Percent. Must not act as if the user had moved the slider.
  virtual void setIntValue(int percent) = 0;
};

class VolumeText {
 public:
  virtual ~VolumeText() = default;

  virtual void setIntValue(int percent) = 0;
  virtual void setStringValue(const std::string &text) = 0;  // UTF-8
};

}  // namespace orvane
