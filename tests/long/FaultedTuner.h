// A tuner as a user and the hardware see it, for sequences of faults: its device menu, its volume
// controls, what it shows. Main thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "audio/AUInputUnit.h"

namespace orvane::test {

class FaultedTuner {
 public:
  virtual ~FaultedTuner() = default;

  // False when it found no input device and gave up; it must then not be asked for anything else.
  virtual bool hasInputs() const = 0;
  virtual AUInputUnit &unit() = 0;

  virtual std::vector<std::string> titles() const = 0;
  virtual std::int64_t selected() const = 0;
  // As the user does it. An index that the menu has.
  virtual void choose(std::int64_t index) = 0;
  // Alternately, hide first.
  virtual void hide() = 0;
  virtual void unhide() = 0;
  virtual void moveSlider(int percent) = 0;
  // What waits for the main thread happens.
  virtual void settle() = 0;

  // "50", "n/a".
  virtual std::string volumeText() const = 0;
  virtual int sliderValue() const = 0;
  virtual bool isSliderEnabled() const = 0;
  virtual float frequency() const = 0;  // hertz, as shown
};

}  // namespace orvane::test
