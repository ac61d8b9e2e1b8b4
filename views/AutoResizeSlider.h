// A horizontal slider that tells what the user does with it. Main thread.
#pragma once

#include <QSlider>

#include "views/Zoomed.h"

namespace orvane {

class AutoResizeSlider : public Zoomed<QSlider> {
  Q_OBJECT
  Q_PROPERTY(int fontPixelSize READ fontPixelSize WRITE setFontPixelSize)

 public:
  explicit AutoResizeSlider(QWidget *parent = nullptr);

  int intValue() const { return value(); }
  float floatValue() const { return static_cast<float>(value()); }
  // Clamped to the slider's range; never an action.
  void setIntValue(int value);
  void setFloatValue(float value) { setIntValue(static_cast<int>(value)); }

 signals:
  // The user has moved the slider, continuously while it is dragged.
  void action();

 protected:
  void wheelEvent(QWheelEvent *event) override;
  void initStyleOption(QStyleOptionSlider *option) const override;
};

}  // namespace orvane
