#include "views/AutoResizeStepper.h"

#include <algorithm>

#include <QLineEdit>
#include <QStyle>
#include <QStyleOptionSpinBox>
#include <QWheelEvent>

namespace orvane {

AutoResizeStepper::AutoResizeStepper(QWidget *parent) : Zoomed(parent) {
  // The text's focus policy would be handed on to the stepper.
  lineEdit()->setReadOnly(true);
  lineEdit()->hide();
  setFocusPolicy(Qt::StrongFocus);
}

void AutoResizeStepper::setValue(double value) {
  const double clamped = std::clamp(value, mMinimum, std::max(mMinimum, mMaximum));
  if (clamped == mValue)
    return;
  mValue = clamped;
  update();
}

void AutoResizeStepper::setMinimum(double minimum) {
  mMinimum = minimum;
  setValue(mValue);
}

void AutoResizeStepper::setMaximum(double maximum) {
  mMaximum = maximum;
  setValue(mValue);
}

void AutoResizeStepper::stepBy(int steps) {
  setValue(mValue + steps * mIncrement);
  emit action();
}

QSize AutoResizeStepper::sizeHint() const {
  return {19, 24};
}

QAbstractSpinBox::StepEnabled AutoResizeStepper::stepEnabled() const {
  StepEnabled enabled = StepNone;
  if (mValue < mMaximum)
    enabled |= StepUpEnabled;
  if (mValue > mMinimum)
    enabled |= StepDownEnabled;
  return enabled;
}

void AutoResizeStepper::initStyleOption(QStyleOptionSpinBox *option) const {
  QAbstractSpinBox::initStyleOption(option);
  useBounds(*option);
  option->subControls = QStyle::SC_SpinBoxUp | QStyle::SC_SpinBoxDown | QStyle::SC_SpinBoxFrame;
}

void AutoResizeStepper::resizeEvent(QResizeEvent * /*event*/) {
  // The base class would lay out the text that is not there.
  lineEdit()->hide();
}

void AutoResizeStepper::wheelEvent(QWheelEvent *event) {
  if (hasFocus())
    Zoomed::wheelEvent(event);
  else
    event->ignore();
}

}  // namespace orvane
