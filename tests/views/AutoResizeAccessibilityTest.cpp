#include <QAccessible>

#include "tests/views/ZoomRig.h"
#include "views/AutoResizeSlider.h"
#include "views/AutoResizeStepper.h"

namespace orvane::test {
namespace {

TEST(AutoResizeAccessibility, TheStepperIsASpinBoxWhoseValueCanBeSetForTheUser) {
  ZoomRig<AutoResizeStepper> stepper(QRect(20, 40, 20, 26));
  stepper->setMinimum(349.0);
  stepper->setMaximum(499.9);
  stepper->setFloatValue(440.0F);
  int actions = 0;
  QObject::connect(&*stepper, &AutoResizeStepper::action, [&] { ++actions; });
  QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(&*stepper);
  ASSERT_NE(interface, nullptr);
  EXPECT_EQ(interface->role(), QAccessible::SpinBox);
  EXPECT_EQ(interface->childCount(), 0);
  EXPECT_EQ(interface->text(QAccessible::Value), QStringLiteral("440"));
  QAccessibleValueInterface *value = interface->valueInterface();
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->currentValue().toDouble(), 440.0);
  EXPECT_EQ(value->minimumValue().toDouble(), 349.0);
  EXPECT_EQ(value->maximumValue().toDouble(), 499.9);
  EXPECT_EQ(value->minimumStepSize().toDouble(), 1.0);
  value->setCurrentValue(415.0);
  EXPECT_EQ(stepper->floatValue(), 415.0F);
  EXPECT_EQ(actions, 1);
}

TEST(AutoResizeAccessibility, TheSlidersValueCanBeSetForTheUser) {
  ZoomRig<AutoResizeSlider> slider(QRect(20, 40, 96, 26));
  slider->setRange(0, 100);
  int actions = 0;
  QObject::connect(&*slider, &AutoResizeSlider::action, [&] { ++actions; });
  QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(&*slider);
  ASSERT_NE(interface, nullptr);
  ASSERT_NE(interface->valueInterface(), nullptr);
  interface->valueInterface()->setCurrentValue(25);
  EXPECT_EQ(slider->intValue(), 25);
  EXPECT_EQ(actions, 1);
}

}  // namespace
}  // namespace orvane::test
