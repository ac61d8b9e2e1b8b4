// The part of a view that shows a number as a picture: by it assistive programs read the number.
// Main thread.
#pragma once

class QWidget;

namespace orvane {

class AccessibleMeter {
 public:
  AccessibleMeter(const AccessibleMeter &) = delete;
  AccessibleMeter &operator=(const AccessibleMeter &) = delete;
  virtual ~AccessibleMeter() = default;

  double minimum() const { return mMinimum; }
  void setMinimum(double minimum) { mMinimum = minimum; }
  double maximum() const { return mMaximum; }
  void setMaximum(double maximum) { mMaximum = maximum; }

  // Within the limits, beyond which a meter does not reach.
  double value() const;
  // Drops the fraction, and what is not a number; tells assistive programs only of changes.
  void setValue(double value);

 protected:
  // widget must be the same object, and outlive this part of it.
  AccessibleMeter(QWidget &widget, double minimum, double maximum);

 private:
  QWidget &mWidget;
  double mMinimum;
  double mMaximum;
  double mValue = 0.0;
};

}  // namespace orvane
