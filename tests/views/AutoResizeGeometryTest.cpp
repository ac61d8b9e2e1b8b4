#include "views/AutoResizeGeometry.h"

#include <gtest/gtest.h>

namespace orvane::test {
namespace {

// 10 from the left and 20 from the top of a view of 200 by 100.
const QRectF kFrame(10.0, 60.0, 100.0, 20.0);
const QSizeF kSuperview(200.0, 100.0);

// Exactly: the comparison of the toolkit's rectangles allows for rounding.
void expectRect(const QRectF &rect, double x, double y, double width, double height) {
  EXPECT_EQ(rect.x(), x);
  EXPECT_EQ(rect.y(), y);
  EXPECT_EQ(rect.width(), width);
  EXPECT_EQ(rect.height(), height);
}

TEST(AutoResizeGeometry, KeepsTheFrameInAViewOfTheOriginalSize) {
  expectRect(relayoutFrame(kFrame, kSuperview, kSuperview), 10.0, 60.0, 100.0, 20.0);
}

TEST(AutoResizeGeometry, DoublesTheSizeAndTheDistanceFromTheTopWithTheWidthAlone) {
  // Its upper edge is 20 below the view's before, 100 - (20 + 40) = 40 after.
  expectRect(relayoutFrame(kFrame, kSuperview, QSizeF(400.0, 100.0)), 20.0, 20.0, 200.0, 40.0);
}

TEST(AutoResizeGeometry, KeepsSizeAndDistanceFromTheTopWhenOnlyTheHeightChanges) {
  expectRect(relayoutFrame(kFrame, kSuperview, QSizeF(200.0, 150.0)), 10.0, 110.0, 100.0, 20.0);
  // Lower than the view's lower edge, where a short window cuts it off.
  expectRect(relayoutFrame(kFrame, kSuperview, QSizeF(200.0, 30.0)), 10.0, -10.0, 100.0, 20.0);
}

TEST(AutoResizeGeometry, ShrinksToThreeQuarters) {
  expectRect(relayoutFrame(kFrame, kSuperview, QSizeF(150.0, 75.0)), 7.5, 45.0, 75.0, 15.0);
}

TEST(AutoResizeGeometry, RoundsTheZoomToSinglePrecision) {
  // Four thirds in single precision is 11184811 / 2^23, a third of 2^-23 more than four thirds.
  const QRectF up =
      relayoutFrame(QRectF(12.0, 30.0, 300.0, 24.0), QSizeF(420.0, 444.0), QSizeF(560.0, 600.0));
  expectRect(up, 16.0 + 0x4p-23, 48.0 - 0x8ap-23, 400.0 + 0x64p-23, 32.0 + 0x8p-23);
  // 1.05 in single precision is 8808038 / 2^23, two fifths of 2^-23 less than 1.05.
  const QRectF down =
      relayoutFrame(QRectF(20.0, 344.0, 40.0, 60.0), QSizeF(420.0, 444.0), QSizeF(441.0, 500.0));
  expectRect(down, 21.0 - 0x8p-23, 395.0 + 0x28p-23, 42.0 - 0x10p-23, 63.0 - 0x18p-23);
  EXPECT_EQ(relayoutScale(QSizeF(420.0, 444.0), QSizeF(560.0, 600.0)), 0x1.555556p0F);
}

TEST(AutoResizeGeometry, LeavesNothingOfAControlWithoutAnEnclosingView) {
  expectRect(relayoutFrame(kFrame, kSuperview, QSizeF(0.0, 0.0)), 0.0, 0.0, 0.0, 0.0);
}

TEST(AutoResizeGeometry, LeavesNothingOfAControlOfAViewWithoutAWidth) {
  EXPECT_EQ(relayoutScale(QSizeF(0.0, 100.0), kSuperview), 0.0F);
  expectRect(relayoutFrame(kFrame, QSizeF(0.0, 100.0), kSuperview), 0.0, 100.0, 0.0, 0.0);
}

}  // namespace
}  // namespace orvane::test
