#include "tests/views/ZoomRig.h"
#include "views/HiddenButton.h"

namespace orvane::test {
namespace {

class HiddenButtonZoom : public testing::Test {
 protected:
  HiddenButtonZoom() {
    QObject::connect(&*mButton, &HiddenButton::action, [this] { ++mActions; });
  }

  ZoomRig<HiddenButton> mButton{QRect(20, 40, 120, 26)};
  int mActions = 0;
};

TEST_F(HiddenButtonZoom, IsClickedUpToItsCornersAndNotBeyond) {
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mButton.zoomTo(zoom);
    mActions = 0;
    for (const QPointF &place :
         {QPointF(22.0, 42.0), QPointF(138.0, 42.0), QPointF(22.0, 64.0), QPointF(138.0, 64.0)})
      mButton.click(place);
    EXPECT_EQ(mActions, 4);
    for (const QPointF &place :
         {QPointF(18.0, 53.0), QPointF(142.0, 53.0), QPointF(80.0, 38.0), QPointF(80.0, 68.0)})
      mButton.click(place);
    EXPECT_EQ(mActions, 4);
  }
}

TEST_F(HiddenButtonZoom, TakesNoReleaseOutsideForAClick) {
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mButton.zoomTo(zoom);
    for (const QPointF &place :
         {QPointF(15.0, 53.0), QPointF(145.0, 53.0), QPointF(80.0, 35.0), QPointF(80.0, 71.0)}) {
      mButton.press(QPointF(80.0, 53.0));
      EXPECT_TRUE(mButton->isDown());
      mButton.drag(place);
      EXPECT_FALSE(mButton->isDown());
      mButton.release(place);
    }
    EXPECT_EQ(mActions, 0);
  }
}

TEST_F(HiddenButtonZoom, IsPressedWithTheKeyboard) {
  for (const double zoom : kZooms) {
    mButton.zoomTo(zoom);
    mButton->setFocus();
    mActions = 0;
    mButton.key(Qt::Key_Space);
    EXPECT_EQ(mActions, 1);
  }
}

TEST_F(HiddenButtonZoom, IsDrawnAgainAsAWholeWhenItIsPressed) {
  mButton.zoomTo(2.0);
  Repaints repaints(*mButton);
  mButton.press(QPointF(80.0, 53.0));
  ASSERT_GT(repaints.count(), 0);
  EXPECT_EQ(repaints.region(), QRegion(QRect(0, 0, 240, 52)));
  mButton.release(QPointF(80.0, 53.0));
}

}  // namespace
}  // namespace orvane::test
