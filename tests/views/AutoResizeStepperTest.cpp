#include "views/AutoResizeStepper.h"

#include <limits>

#include <QAccessible>
#include <QLineEdit>

#include <gtest/gtest.h>

#include "tests/views/ZoomRig.h"

namespace orvane::test {
namespace {

class Stepper : public ZoomRig<AutoResizeStepper> {
 public:
  Stepper() : ZoomRig(QSize(20, 26)) {
    control->setMinimum(349.0);
    control->setMaximum(499.9);
  }
};

TEST(AutoResizeStepper, StepsByTheHalfThatIsClicked) {
  for (const double zoom : kZooms) {
    Stepper stepper;
    stepper.zoom(zoom);
    stepper.control->setFloatValue(440.0F);
    stepper.click(1.0, 1.0);
    EXPECT_EQ(stepper.control->floatValue(), 441.0F) << zoom;
    stepper.click(19.0, 12.0);
    EXPECT_EQ(stepper.control->floatValue(), 442.0F) << zoom;
    stepper.click(1.0, 14.0);
    stepper.click(19.0, 25.0);
    stepper.click(10.0, 20.0);
    EXPECT_EQ(stepper.control->floatValue(), 439.0F) << zoom;
    EXPECT_EQ(stepper.actions, 5) << zoom;
  }
}

TEST(AutoResizeStepper, KeepsTheValueItIsGivenExactly) {
  Stepper stepper;
  stepper.control->setFloatValue(440.37F);
  EXPECT_EQ(stepper.control->floatValue(), 440.37F);
  stepper.control->stepBy(1);
  EXPECT_EQ(stepper.control->floatValue(), 441.37F);
  stepper.control->setFloatValue(499.899993896484375F);
  EXPECT_EQ(stepper.control->floatValue(), 499.899993896484375F);
}

TEST(AutoResizeStepper, StaysWithinItsLimitsWithoutWrappingAround) {
  Stepper stepper;
  stepper.control->setFloatValue(500.0F);
  EXPECT_EQ(stepper.control->floatValue(), 499.899993896484375F);
  EXPECT_EQ(stepper.actions, 0);
  stepper.click(10.0, 5.0);
  EXPECT_EQ(stepper.control->floatValue(), 499.899993896484375F);
  stepper.control->setFloatValue(499.5F);
  stepper.click(10.0, 5.0);
  EXPECT_EQ(stepper.control->floatValue(), 499.899993896484375F);
  EXPECT_EQ(stepper.actions, 1);
  stepper.control->setFloatValue(-1.0F);
  EXPECT_EQ(stepper.control->floatValue(), 349.0F);
  stepper.click(10.0, 20.0);
  EXPECT_EQ(stepper.control->floatValue(), 349.0F);
  stepper.control->setFloatValue(std::numeric_limits<float>::quiet_NaN());
  EXPECT_EQ(stepper.control->floatValue(), 349.0F);
  EXPECT_EQ(stepper.actions, 1);
}

TEST(AutoResizeStepper, CountsFromNothingToAHundredByOneUnlessToldOtherwise) {
  const AutoResizeStepper stepper;
  EXPECT_EQ(stepper.minimum(), 0.0);
  EXPECT_EQ(stepper.maximum(), 100.0);
  EXPECT_EQ(stepper.increment(), 1.0);
}

TEST(AutoResizeStepper, StepsByKeysAndByTheWheelOnlyWhileItHasTheFocus) {
  Stepper stepper;
  stepper.control->setFloatValue(440.0F);
  stepper.wheel(120);
  EXPECT_EQ(stepper.actions, 0);
  stepper.control->setFocus(Qt::TabFocusReason);
  ASSERT_TRUE(stepper.control->hasFocus());
  EXPECT_EQ(stepper.control->focusPolicy(), Qt::StrongFocus);
  stepper.key(Qt::Key_Up);
  EXPECT_EQ(stepper.control->floatValue(), 441.0F);
  stepper.key(Qt::Key_PageDown);
  EXPECT_EQ(stepper.control->floatValue(), 431.0F);
  stepper.wheel(120);
  EXPECT_EQ(stepper.control->floatValue(), 432.0F);
  EXPECT_EQ(stepper.actions, 3);
}

TEST(AutoResizeStepper, ShowsWhichArrowIsPressedAndThatItHasTheFocus) {
  Stepper stepper;
  stepper.control->setFloatValue(440.0F);
  stepper.control->clearFocus();
  const QImage before = stepper.drawn();
  stepper.mouse(QEvent::MouseButtonPress, 10.0, 5.0);
  const QImage pressed = stepper.drawn();
  stepper.mouse(QEvent::MouseButtonRelease, 10.0, 5.0);
  EXPECT_NE(pressed.copy(0, 0, 20, 13), before.copy(0, 0, 20, 13));
  stepper.control->clearFocus();
  EXPECT_EQ(stepper.drawn(), before);
  stepper.control->setFocus(Qt::MouseFocusReason);
  EXPECT_NE(stepper.drawn(), before);
}

TEST(AutoResizeStepper, IsASpinBoxForAssistivePrograms) {
  Stepper stepper;
  stepper.control->setFloatValue(440.0F);
  QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(stepper.control);
  ASSERT_NE(interface, nullptr);
  EXPECT_EQ(interface->role(), QAccessible::SpinBox);
  EXPECT_EQ(interface->childCount(), 0);
  QAccessibleValueInterface *value = interface->valueInterface();
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->currentValue().toDouble(), 440.0);
  EXPECT_EQ(value->minimumValue().toDouble(), 349.0);
  EXPECT_EQ(value->maximumValue().toDouble(), 499.9);
  EXPECT_EQ(value->minimumStepSize().toDouble(), 1.0);
  EXPECT_EQ(interface->text(QAccessible::Value), QStringLiteral("440"));
  value->setCurrentValue(415.0);
  EXPECT_EQ(stepper.control->floatValue(), 415.0F);
  EXPECT_EQ(stepper.actions, 1);
}

}  // namespace
}  // namespace orvane::test
