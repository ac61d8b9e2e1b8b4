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

  // What the picture reaches, and as far beyond as the value does.
  double minimum() const;
  void setMinimum(double minimum) { mMinimum = minimum; }
  double maximum() const;
  void setMaximum(double maximum) { mMaximum = maximum; }

  int value() const { return mValue; }
  // Tells assistive programs only of changes.
  void setValue(int value);

 protected:
  // widget must be the same object, and outlive this part of it.
  AccessibleMeter(QWidget &widget, double minimum, double maximum);

 private:
  QWidget &mWidget;
  double mMinimum;
  double mMaximum;
  int mValue = 0;
};

}  // namespace orvane
