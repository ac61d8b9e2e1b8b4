// Two arrows that step a number up and down within its limits, without a text of their own. Main
// thread.
#pragma once

#include <QAbstractSpinBox>

#include "views/Zoomed.h"

namespace orvane {

class AutoResizeStepper : public Zoomed<QAbstractSpinBox> {
  Q_OBJECT
  Q_PROPERTY(double minimum READ minimum WRITE setMinimum)
  Q_PROPERTY(double maximum READ maximum WRITE setMaximum)
  Q_PROPERTY(double increment READ increment WRITE setIncrement)
  // By these names assistive programs read it, and set the value for the user.
  Q_PROPERTY(double stepSize READ increment)
  Q_PROPERTY(double value READ value WRITE chooseValue)

 public:
  explicit AutoResizeStepper(QWidget *parent = nullptr);

  float floatValue() const { return mValue; }
  // Clamped to the limits, otherwise kept exactly; never an action. Not a number is the minimum.
  void setFloatValue(float value);

  // In single precision they are the limits.
  double minimum() const { return mMinimum; }
  void setMinimum(double minimum);
  double maximum() const { return mMaximum; }
  void setMaximum(double maximum);
  double increment() const { return mIncrement; }
  void setIncrement(double increment) { mIncrement = increment; }

  double value() const { return static_cast<double>(mValue); }
  // As if the user had stepped to it.
  void chooseValue(double value);

  // As if the user had stepped so many increments.
  void stepBy(int steps) override;

 signals:
  // The user has stepped.
  void action();

 protected:
  StepEnabled stepEnabled() const override;
  QPointF placeInBounds(const QPointF &point) const override;
  void paintEvent(QPaintEvent *event) override;
  void initStyleOption(QStyleOptionSpinBox *option) const override;

 private:
  QRect arrowRect(QStyle::SubControl arrow) const;
  void drawArrow(QPainter &painter, const QStyleOptionSpinBox &stepper,
                 QStyle::SubControl arrow) const;

  double mMinimum = 0.0;
  double mMaximum = 100.0;
  double mIncrement = 1.0;
  float mValue = 0.0F;
};

}  // namespace orvane
