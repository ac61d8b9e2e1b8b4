#include "views/AutoResizeSlider.h"

#include <cmath>

#include <QSignalBlocker>

namespace orvane {

AutoResizeSlider::AutoResizeSlider(QWidget *parent) : Zoomed(parent) {
  setOrientation(Qt::Horizontal);
  setFocusPolicy(Qt::StrongFocus);
  connect(this, &QSlider::valueChanged, this, &AutoResizeSlider::action);
}

void AutoResizeSlider::setIntValue(int value) {
  const QSignalBlocker blocker(this);
  setValue(value);
}

void AutoResizeSlider::setFloatValue(float value) {
  const auto smallest = static_cast<float>(minimum());
  const auto largest = static_cast<float>(maximum());
  setIntValue(static_cast<int>(std::fmin(std::fmax(value, smallest), largest)));
}

void AutoResizeSlider::initStyleOption(QStyleOptionSlider *option) const {
  QSlider::initStyleOption(option);
  useBounds(*option);
}

}  // namespace orvane
