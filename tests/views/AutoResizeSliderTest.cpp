#include "views/AutoResizeSlider.h"

#include <limits>

#include "tests/views/ZoomRig.h"

namespace orvane::test {
namespace {

// The style's knob is 15 units wide, so that on a slider of 115 it moves by one unit from value to
// value: at value v it reaches from 20 + v to 35 + v across the window. The values here put its
// middle on a whole unit of the screen at every zoom.
class AutoResizeSliderTest : public testing::Test {
 protected:
  AutoResizeSliderTest() {
    mSlider->setRange(0, 100);
    QObject::connect(&*mSlider, &AutoResizeSlider::action, [this] {
      ++mActions;
      mInAction = mSlider->intValue();
    });
  }
  static QPointF knob(int value) { return {27.0 + value, 53.0}; }

  ZoomRig<AutoResizeSlider> mSlider{QRect(20, 40, 115, 26)};
  int mActions = 0;
  int mInAction = -1;
};

TEST_F(AutoResizeSliderTest, FollowsTheMouseUnitByUnitAtEveryZoom) {
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mSlider.zoomTo(zoom);
    mSlider->setIntValue(41);
    mActions = 0;
    mSlider.press(knob(41));
    EXPECT_EQ(mSlider->intValue(), 41);
    mSlider.drag(knob(57));
    EXPECT_EQ(mInAction, 57);
    mSlider.drag(knob(13));
    EXPECT_EQ(mInAction, 13);
    // Beyond its end.
    mSlider.drag(knob(150));
    EXPECT_EQ(mInAction, 100);
    mSlider.release(knob(150));
    EXPECT_EQ(mSlider->intValue(), 100);
    EXPECT_EQ(mActions, 3);
  }
}

TEST_F(AutoResizeSliderTest, IsTakenAtEitherSideOfItsKnob) {
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mSlider.zoomTo(zoom);
    for (const double edge : {-4.0, 4.0}) {
      mSlider->setIntValue(41);
      mSlider.press(knob(41) + QPointF(edge, 0.0));
      mSlider.drag(knob(45) + QPointF(edge, 0.0));
      mSlider.release(knob(45) + QPointF(edge, 0.0));
      EXPECT_EQ(mSlider->intValue(), 45);
    }
  }
}

TEST_F(AutoResizeSliderTest, StepsByAPageWhenItsGrooveIsPressed) {
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mSlider.zoomTo(zoom);
    mSlider->setIntValue(40);
    mSlider.click(knob(90));
    EXPECT_EQ(mSlider->intValue(), 50);
    mSlider.click(knob(5));
    EXPECT_EQ(mSlider->intValue(), 40);
  }
}

TEST_F(AutoResizeSliderTest, DoesNothingWhenItIsPressedOutside) {
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mSlider.zoomTo(zoom);
    mSlider->setIntValue(40);
    for (const QPointF &place :
         {QPointF(18.0, 53.0), QPointF(137.0, 53.0), QPointF(67.0, 38.0), QPointF(67.0, 68.0)})
      mSlider.click(place);
    EXPECT_EQ(mSlider->intValue(), 40);
    EXPECT_EQ(mActions, 0);
  }
}

TEST_F(AutoResizeSliderTest, IsOperatedWithTheKeysAtEveryZoom) {
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mSlider.zoomTo(zoom);
    mSlider->setFocus();
    mSlider->setIntValue(40);
    mActions = 0;
    const auto expectAfter = [&](int code, int value) {
      mSlider.key(code);
      EXPECT_EQ(mInAction, value);
    };
    expectAfter(Qt::Key_Right, 41);
    expectAfter(Qt::Key_Left, 40);
    expectAfter(Qt::Key_PageUp, 50);
    expectAfter(Qt::Key_End, 100);
    expectAfter(Qt::Key_Home, 0);
    EXPECT_EQ(mActions, 5);
    mSlider.key(Qt::Key_Left);
    EXPECT_EQ(mActions, 5);
  }
}

TEST_F(AutoResizeSliderTest, HeedsTheWheelOnlyWithTheFocus) {
  mSlider->setIntValue(40);
  mSlider->clearFocus();
  mSlider.wheel(knob(40));
  EXPECT_EQ(mSlider->intValue(), 40);
  mSlider->setFocus();
  mSlider.wheel(knob(40));
  EXPECT_GT(mSlider->intValue(), 40);
  EXPECT_EQ(mActions, 1);
}

TEST_F(AutoResizeSliderTest, IsSetWithinItsLimitsWithoutAnAction) {
  mSlider->setIntValue(37);
  EXPECT_EQ(mSlider->floatValue(), 37.0F);
  mSlider->setIntValue(101);
  EXPECT_EQ(mSlider->intValue(), 100);
  mSlider->setIntValue(-1);
  EXPECT_EQ(mSlider->intValue(), 0);
  mSlider->setFloatValue(49.4F);
  EXPECT_EQ(mSlider->intValue(), 49);
  mSlider->setFloatValue(std::numeric_limits<float>::infinity());
  EXPECT_EQ(mSlider->intValue(), 100);
  mSlider->setFloatValue(std::numeric_limits<float>::quiet_NaN());
  EXPECT_EQ(mSlider->intValue(), 0);
  EXPECT_EQ(mActions, 0);
}

TEST_F(AutoResizeSliderTest, IsDrawnAgainOnlyForAnotherValue) {
  mSlider->setIntValue(40);
  Repaints repaints(*mSlider);
  mSlider->setIntValue(40);
  EXPECT_EQ(repaints.count(), 0);
  mSlider->setIntValue(41);
  EXPECT_EQ(repaints.count(), 1);
}

TEST_F(AutoResizeSliderTest, IsDrawnAgainWhereItsKnobIsSeenUnderTheMouse) {
  mSlider.zoomTo(2.0);
  mSlider->setIntValue(90);
  mSlider.hover(QPointF(150.0, 90.0));
  Repaints repaints(*mSlider);
  mSlider.hover(knob(90));
  ASSERT_GT(repaints.count(), 0);
  // From 90 to 105 across the slider.
  EXPECT_TRUE(repaints.region().contains(QRect(180, 10, 30, 32)));
  EXPECT_EQ((QRegion(QRect(180, 10, 30, 32)) - repaints.region()), QRegion());
}

}  // namespace
}  // namespace orvane::test
