// A horizontal slider over whole numbers that tells what the user does with it. Main thread.
#pragma once

#include <QSlider>

#include "views/Zoomed.h"

namespace orvane {

class AutoResizeSlider : public Zoomed<QSlider> {
  Q_OBJECT

 public:
  explicit AutoResizeSlider(QWidget *parent = nullptr);

  int intValue() const { return value(); }
  float floatValue() const { return static_cast<float>(value()); }
  // Clamped to the slider's range; never an action. A float is cut; not a number is the
  // smallest value.
  void setIntValue(int value);
  void setFloatValue(float value);

 signals:
  // The user, or an assistive program for the user, has moved the slider: continuously while it is
  // dragged.
  void action();

 protected:
  void initStyleOption(QStyleOptionSlider *option) const override;
};

}  // namespace orvane
