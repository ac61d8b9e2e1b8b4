#include "views/AutoResizeSlider.h"

#include <QSignalBlocker>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QWheelEvent>

namespace orvane {

AutoResizeSlider::AutoResizeSlider(QWidget *parent) : Zoomed(parent) {
  setOrientation(Qt::Horizontal);
  setFocusPolicy(Qt::StrongFocus);
  connect(this, &QSlider::valueChanged, this, [this] {
    update();
    emit action();
  });
}

void AutoResizeSlider::setIntValue(int value) {
  const QSignalBlocker blocker(this);
  if (value == this->value())
    return;
  setValue(value);
  update();
}

void AutoResizeSlider::initStyleOption(QStyleOptionSlider *option) const {
  QSlider::initStyleOption(option);
  useBounds(*option);
}

void AutoResizeSlider::wheelEvent(QWheelEvent *event) {
  if (hasFocus())
    Zoomed::wheelEvent(event);
  else
    event->ignore();
}

}  // namespace orvane
