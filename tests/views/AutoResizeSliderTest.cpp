#include "views/AutoResizeSlider.h"

#include <limits>

#include <QAccessible>
#include <QHoverEvent>

#include <gtest/gtest.h>

#include "tests/views/ZoomRig.h"

namespace orvane::test {
namespace {

class Slider : public ZoomRig<AutoResizeSlider> {
 public:
  Slider() : ZoomRig(QSize(96, 26)) { control->setRange(0, 100); }
};

TEST(AutoResizeSlider, FollowsTheMouseAtEveryZoom) {
  for (const double zoom : kZooms) {
    Slider slider;
    slider.zoom(zoom);
    // The knob stands at the left end, half its own width from the edge.
    slider.mouse(QEvent::MouseButtonPress, 7.5, 13.0);
    EXPECT_EQ(slider.actions, 0);
    // The middle of the slider is the middle of its values, whatever the knob's width.
    slider.mouse(QEvent::MouseMove, 48.0, 13.0);
    EXPECT_NEAR(slider.control->intValue(), 50, 1) << zoom;
    EXPECT_EQ(slider.actions, 1) << zoom;
    slider.mouse(QEvent::MouseMove, 90.0, 13.0);
    EXPECT_EQ(slider.control->intValue(), 100) << zoom;
    slider.mouse(QEvent::MouseMove, 1.0, 13.0);
    slider.mouse(QEvent::MouseButtonRelease, 1.0, 13.0);
    EXPECT_EQ(slider.control->intValue(), 0) << zoom;
    EXPECT_EQ(slider.actions, 3) << zoom;
  }
}

TEST(AutoResizeSlider, DoesNotActWhenTheProgramSetsIt) {
  Slider slider;
  slider.control->setIntValue(37);
  slider.control->setFloatValue(49.6F);
  EXPECT_EQ(slider.control->floatValue(), 50.0F);
  slider.control->setFloatValue(1e30F);
  EXPECT_EQ(slider.control->intValue(), 100);
  slider.control->setFloatValue(std::numeric_limits<float>::quiet_NaN());
  EXPECT_EQ(slider.control->intValue(), 0);
  EXPECT_EQ(slider.actions, 0);
}

TEST(AutoResizeSlider, ActsOnKeysAndOnTheWheelOnlyWhileItHasTheFocus) {
  Slider slider;
  slider.wheel(120);
  EXPECT_EQ(slider.actions, 0);
  slider.control->setFocus();
  slider.key(Qt::Key_Right);
  EXPECT_EQ(slider.control->intValue(), 1);
  EXPECT_EQ(slider.actions, 1);
  slider.wheel(120);
  EXPECT_GT(slider.control->intValue(), 1);
  EXPECT_EQ(slider.actions, 2);
}

TEST(AutoResizeSlider, ActsForAssistivePrograms) {
  Slider slider;
  QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(slider.control);
  ASSERT_NE(interface->valueInterface(), nullptr);
  interface->valueInterface()->setCurrentValue(25);
  EXPECT_EQ(slider.control->intValue(), 25);
  EXPECT_EQ(slider.actions, 1);
}

TEST(AutoResizeSlider, IsDrawnWholeWhenTheToolkitChangesAPart) {
  Slider slider;
  slider.zoom(2.0);
  slider.settle();
  QHoverEvent hover(QEvent::HoverEnter, QPointF(15.0, 26.0), QPointF(), QPointF(-1.0, -1.0));
  QApplication::sendEvent(slider.control, &hover);
  QApplication::processEvents();
  EXPECT_EQ(slider.painted, QRegion(slider.control->rect()));
}

}  // namespace
}  // namespace orvane::test
