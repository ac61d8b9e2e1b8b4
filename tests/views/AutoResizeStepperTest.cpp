#include "views/AutoResizeStepper.h"

#include "tests/views/ZoomRig.h"

namespace orvane::test {
namespace {

// The window's stepper: 16 by 26, so that its arrows meet 53 below the window's top.
class AutoResizeStepperTest : public testing::Test {
 protected:
  AutoResizeStepperTest() {
    QObject::connect(&*mStepper, &AutoResizeStepper::action, [this] { ++mActions; });
  }

  ZoomRig<AutoResizeStepper> mStepper{QRect(20, 40, 16, 26)};
  int mActions = 0;
};

TEST_F(AutoResizeStepperTest, StepsByTheArrowThatIsPressedAtEveryZoom) {
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mStepper.zoomTo(zoom);
    mStepper->setFloatValue(50.0F);
    mActions = 0;
    const auto expectAfter = [&](const QPointF &place, float value) {
      mStepper.click(place);
      EXPECT_EQ(mStepper->floatValue(), value);
    };
    // Each arrow's middle, then its edges.
    expectAfter(QPointF(28.0, 47.0), 51.0F);
    expectAfter(QPointF(28.0, 59.0), 50.0F);
    expectAfter(QPointF(28.0, 42.5), 51.0F);
    expectAfter(QPointF(28.0, 51.0), 52.0F);
    expectAfter(QPointF(28.0, 55.0), 51.0F);
    expectAfter(QPointF(28.0, 63.5), 50.0F);
    EXPECT_EQ(mActions, 6);
    for (const QPointF &place :
         {QPointF(18.0, 47.0), QPointF(38.0, 59.0), QPointF(28.0, 38.0), QPointF(28.0, 68.0)})
      expectAfter(place, 50.0F);
    EXPECT_EQ(mActions, 6);
  }
}

TEST_F(AutoResizeStepperTest, IsOperatedWithTheKeysAtEveryZoom) {
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mStepper.zoomTo(zoom);
    mStepper->setFocus();
    mStepper->setFloatValue(50.0F);
    mStepper.key(Qt::Key_Up);
    EXPECT_EQ(mStepper->floatValue(), 51.0F);
    mStepper.key(Qt::Key_Down);
    EXPECT_EQ(mStepper->floatValue(), 50.0F);
    mStepper.key(Qt::Key_PageUp);
    EXPECT_EQ(mStepper->floatValue(), 60.0F);
    mStepper.key(Qt::Key_PageDown);
    EXPECT_EQ(mStepper->floatValue(), 50.0F);
  }
}

TEST_F(AutoResizeStepperTest, GoesOnSteppingWhileTheButtonIsHeld) {
  mStepper.press(QPointF(28.0, 47.0));
  EXPECT_TRUE(waitFor([this] { return mStepper->floatValue() >= 3.0F; }));
  mStepper.release(QPointF(28.0, 47.0));
  EXPECT_EQ(mActions, static_cast<int>(mStepper->floatValue()));
}

TEST_F(AutoResizeStepperTest, GoesFromNoughtToAHundredByOneUnlessToldOtherwise) {
  EXPECT_EQ(mStepper->minimum(), 0.0);
  EXPECT_EQ(mStepper->maximum(), 100.0);
  EXPECT_EQ(mStepper->increment(), 1.0);
  EXPECT_EQ(mStepper->floatValue(), 0.0F);
}

TEST_F(AutoResizeStepperTest, StopsAtItsLimits) {
  mStepper->setMaximum(499.9);
  mStepper->setMinimum(349.0);
  EXPECT_EQ(mStepper->floatValue(), 349.0F);
  mStepper->setFloatValue(499.5F);
  mStepper.click(QPointF(28.0, 47.0));
  EXPECT_EQ(mStepper->floatValue(), 499.9F);
  mStepper.click(QPointF(28.0, 47.0));
  EXPECT_EQ(mStepper->floatValue(), 499.9F);
  mStepper.click(QPointF(28.0, 59.0));
  EXPECT_EQ(mStepper->floatValue(), 498.9F);
  mStepper->setFloatValue(349.4F);
  mStepper.click(QPointF(28.0, 59.0));
  EXPECT_EQ(mStepper->floatValue(), 349.0F);
  mStepper.click(QPointF(28.0, 59.0));
  EXPECT_EQ(mStepper->floatValue(), 349.0F);
}

TEST_F(AutoResizeStepperTest, KeepsTheValueItIsGivenExactly) {
  mStepper->setMaximum(499.9);
  for (const float value : {440.0F, 440.375F, 442.123456F, 0.1F, 1e-20F}) {
    mStepper->setFloatValue(value);
    EXPECT_EQ(mStepper->floatValue(), value);
  }
  mStepper->setFloatValue(1000.0F);
  EXPECT_EQ(mStepper->floatValue(), 499.9F);
  mStepper->setFloatValue(-1.0F);
  EXPECT_EQ(mStepper->floatValue(), 0.0F);
  EXPECT_EQ(mActions, 0);
}

TEST_F(AutoResizeStepperTest, HeedsTheWheelOnlyWithTheFocus) {
  mStepper->clearFocus();
  mStepper.wheel(QPointF(28.0, 47.0));
  EXPECT_EQ(mStepper->floatValue(), 0.0F);
  mStepper->setFocus();
  mStepper.wheel(QPointF(28.0, 47.0));
  EXPECT_EQ(mStepper->floatValue(), 1.0F);
  EXPECT_EQ(mActions, 1);
}

TEST_F(AutoResizeStepperTest, HasNoTextToTypeIn) {
  mStepper->setFocus();
  ASSERT_TRUE(mStepper->hasFocus());
  mStepper->setFloatValue(50.0F);
  mStepper.key(Qt::Key_7, QStringLiteral("7"));
  EXPECT_EQ(mStepper->floatValue(), 50.0F);
  EXPECT_FALSE(mStepper->findChild<QWidget *>()->isVisible());
  EXPECT_EQ(mActions, 0);
}

TEST_F(AutoResizeStepperTest, IsDrawnAgainOnlyForAnotherValue) {
  mStepper->setFloatValue(50.0F);
  Repaints repaints(*mStepper);
  mStepper->setFloatValue(50.0F);
  EXPECT_EQ(repaints.count(), 0);
  mStepper->setFloatValue(100.0F);
  EXPECT_EQ(repaints.count(), 1);
}

}  // namespace
}  // namespace orvane::test
