// Two arrows that step a value up and down within its limits, without a text of their own.
// Main thread.
#pragma once

#include <QAbstractSpinBox>

#include "views/Zoomed.h"

namespace orvane {

class AutoResizeStepper : public Zoomed<QAbstractSpinBox> {
  Q_OBJECT
  Q_PROPERTY(double minimum READ minimum WRITE setMinimum)
  Q_PROPERTY(double maximum READ maximum WRITE setMaximum)
  Q_PROPERTY(double increment READ increment WRITE setIncrement)
  // The names by which assistive programs read it.
  Q_PROPERTY(double singleStep READ increment)
  Q_PROPERTY(double value READ value WRITE setValue)

 public:
  explicit AutoResizeStepper(QWidget *parent = nullptr);

  float floatValue() const { return static_cast<float>(mValue); }
  // Clamped to the limits, otherwise kept as it is; never an action.
  void setFloatValue(float value) { setValue(static_cast<double>(value)); }

  double value() const { return mValue; }
  void setValue(double value);
  double minimum() const { return mMinimum; }
  void setMinimum(double minimum);
  double maximum() const { return mMaximum; }
  void setMaximum(double maximum);
  double increment() const { return mIncrement; }
  void setIncrement(double increment) { mIncrement = increment; }

  void stepBy(int steps) override;
  QSize sizeHint() const override;

 signals:
  // The user has stepped.
  void action();

 protected:
  StepEnabled stepEnabled() const override;
  void resizeEvent(QResizeEvent *event) override;
  void wheelEvent(QWheelEvent *event) override;
  void initStyleOption(QStyleOptionSpinBox *option) const override;

 private:
  double mMinimum = 0.0;
  double mMaximum = 100.0;
  double mIncrement = 1.0;
  double mValue = 0.0;
};

}  // namespace orvane
