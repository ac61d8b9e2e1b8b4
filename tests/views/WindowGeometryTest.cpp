#include "views/WindowGeometry.h"

#include <ostream>

#include <gtest/gtest.h>

namespace orvane::test {
namespace {

TEST(WindowGeometry, ChangingTheLayoutKeepsTheTopEdgeAtTwiceTheScale) {
  // A layout 480 wide, 333 high in full and 151 collapsed, shown twice as large; its top is at 800.
  const QRectF full(100.0, 134.0, 960.0, 666.0);
  const QRectF collapsed(100.0, 498.0, 960.0, 302.0);
  EXPECT_EQ(disclosedContentRect(full, 480.0, 151.0), collapsed);
  EXPECT_EQ(disclosedContentRect(collapsed, 480.0, 333.0), full);
}

TEST(WindowGeometry, TheHeightOfALayoutIsCutToWholeUnits) {
  // 333 · 1000/480 = 693.75
  EXPECT_EQ(disclosedContentRect(QRectF(0.0, 0.0, 1000.0, 100.0), 480.0, 333.0),
            QRectF(0.0, -593.0, 1000.0, 693.0));
}

TEST(WindowGeometry, TheHeightOfALayoutIsWorkedOutInSinglePrecision) {
  // The single 0.7 is 0.699999988; 330 times that is 230.999996, and the nearest single is 231.
  EXPECT_EQ(disclosedContentRect(QRectF(0.0, 0.0, 336.0, 231.0), 480.0, 330.0).height(), 231.0);
}

TEST(WindowGeometry, AFrameHigherThanTheScreenIsCutAndNarrowedBelowItsTopEdge) {
  EXPECT_EQ(frameFittedToScreen(QRectF(50.0, 10.0, 1000.0, 1200.0), 900.0),
            QRectF(50.0, 310.0, 750.0, 900.0));
  // 0.7 in single precision is a little less.
  EXPECT_EQ(frameFittedToScreen(QRectF(0.0, 0.0, 1000.0, 1000.0), 700.0),
            QRectF(0.0, 300.0, 699.0, 700.0));
}

TEST(WindowGeometry, AFrameAsHighAsTheScreenIsLeftAlone) {
  const QRectF frame(50.0, -300.0, 1000.0, 900.0);
  EXPECT_EQ(frameFittedToScreen(frame, 900.0), frame);
  EXPECT_EQ(frameFittedToScreen(frame, 1000.0), frame);
}

TEST(WindowGeometry, WithoutAScreenNothingIsLeftOfAFrame) {
  EXPECT_EQ(frameFittedToScreen(QRectF(50.0, 10.0, 1000.0, 1200.0), 0.0),
            QRectF(50.0, 1210.0, 0.0, 0.0));
}

TEST(WindowGeometry, ACollapsedStartKeepsTheLowerLeftCorner) {
  EXPECT_EQ(collapsedStartContentRect(QRectF(10.0, 20.0, 960.0, 666.0), QSizeF(480.0, 151.0)),
            QRectF(10.0, 20.0, 960.0, 302.0));
}

TEST(WindowGeometry, ACollapsedStartIsRoundedOutwards) {
  EXPECT_EQ(collapsedStartContentRect(QRectF(10.5, 20.25, 480.0, 333.0), QSizeF(480.0, 151.0)),
            QRectF(10.0, 20.0, 481.0, 152.0));
  // 5/3 is a little less in single precision, 2/3 a little more.
  EXPECT_EQ(collapsedStartContentRect(QRectF(10.0, 20.0, 500.0, 333.0), QSizeF(300.0, 151.0)),
            QRectF(10.0, 20.0, 500.0, 252.0));
  EXPECT_EQ(collapsedStartContentRect(QRectF(0.0, 0.0, 200.0, 333.0), QSizeF(300.0, 150.0)),
            QRectF(0.0, 0.0, 201.0, 101.0));
}

TEST(WindowGeometry, AnIntegralRectangleReachesOutwardsBelowZeroToo) {
  EXPECT_EQ(integralRect(QRectF(-1.5, -0.25, 2.0, 0.5)), QRectF(-2.0, -1.0, 3.0, 2.0));
  EXPECT_EQ(integralRect(QRectF(3.0, 4.0, 5.0, 6.0)), QRectF(3.0, 4.0, 5.0, 6.0));
  EXPECT_EQ(integralRect(QRectF(3.5, 4.5, 0.0, 6.0)), QRectF(0.0, 0.0, 0.0, 0.0));
}

const QSizeF kMinimum(480.0, 360.0);

TEST(WindowGeometry, AFrameDraggedToNothingIsOneThatCanBeUsed) {
  EXPECT_EQ(usableFrameSize(QSizeF(0.0, 0.0), kMinimum), kMinimum);
  EXPECT_EQ(usableFrameSize(QSizeF(1.0, 19.0), kMinimum), QSizeF(120.0, 90.0));
  EXPECT_EQ(usableFrameSize(QSizeF(700.0, 40.0), kMinimum), QSizeF(700.0, 90.0));
  EXPECT_EQ(usableFrameSize(QSizeF(120.0, 90.0), kMinimum), QSizeF(120.0, 90.0));
}

TEST(WindowGeometry, AltSnapsToWholeMultiplesByTheHeight) {
  const auto snapped = [](double width, double height) {
    return resizedFrameSize(QSizeF(width, height), kMinimum, Qt::AltModifier);
  };
  EXPECT_EQ(snapped(2000.0, 361.0), QSizeF(480.0, 360.0));
  EXPECT_EQ(snapped(10.0, 700.0), QSizeF(960.0, 720.0));
  EXPECT_EQ(snapped(480.0, 1050.0), QSizeF(1440.0, 1080.0));
  // Halves go to the even multiple.
  EXPECT_EQ(snapped(480.0, 540.0), QSizeF(960.0, 720.0));
  EXPECT_EQ(snapped(480.0, 900.0), QSizeF(960.0, 720.0));
  EXPECT_EQ(snapped(480.0, 180.0), QSizeF(0.0, 0.0));
}

TEST(WindowGeometry, ShiftLeavesTheSizeFreeUnlessAltIsHeldToo) {
  EXPECT_EQ(resizedFrameSize(QSizeF(777.0, 333.0), kMinimum, Qt::ShiftModifier),
            QSizeF(777.0, 333.0));
  EXPECT_EQ(resizedFrameSize(QSizeF(777.0, 333.0), kMinimum, Qt::ShiftModifier | Qt::AltModifier),
            QSizeF(480.0, 360.0));
}

TEST(WindowGeometry, WithoutAKeyTheSmallerFactorKeepsTheProportions) {
  EXPECT_EQ(resizedFrameSize(QSizeF(960.0, 540.0), kMinimum, {}), QSizeF(720.0, 540.0));
  EXPECT_EQ(resizedFrameSize(QSizeF(600.0, 720.0), kMinimum, Qt::ControlModifier),
            QSizeF(600.0, 450.0));
  EXPECT_EQ(resizedFrameSize(QSizeF(240.0, 360.0), kMinimum, {}), QSizeF(240.0, 180.0));
  // The factor 0.7 is a single: 480 · 0.699999988079071.
  EXPECT_EQ(resizedFrameSize(QSizeF(336.0, 900.0), kMinimum, {}),
            QSizeF(335.99999427795410, 251.99999570846558));
}

TEST(WindowGeometry, TheEdgesThatWereNotDraggedStay) {
  const QRectF before(100.0, 100.0, 480.0, 360.0);
  const QSizeF size(600.0, 450.0);
  // The lower right corner was dragged: the top stays at 460.
  EXPECT_EQ(resizedFrame(before, QRectF(100.0, 20.0, 600.0, 440.0), size),
            QRectF(100.0, 10.0, 600.0, 450.0));
  // The lower left corner: the right edge stays at 580.
  EXPECT_EQ(resizedFrame(before, QRectF(0.0, 20.0, 580.0, 440.0), size),
            QRectF(-20.0, 10.0, 600.0, 450.0));
  // The upper edge: the lower one stays at 100.
  EXPECT_EQ(resizedFrame(before, QRectF(100.0, 100.0, 480.0, 500.0), size),
            QRectF(100.0, 100.0, 600.0, 450.0));
  // The upper left corner.
  EXPECT_EQ(resizedFrame(before, QRectF(20.0, 100.0, 560.0, 500.0), size),
            QRectF(-20.0, 100.0, 600.0, 450.0));
}

TEST(WindowGeometry, ASingleDraggedEdgeBringsTheOtherDimensionAlong) {
  struct Case {
    QSizeF before;
    QSizeF after;
    QSizeF proposal;
  };
  for (const Case &c : {
           // The right or the left edge: 600 · 360/480, 240 · 360/480.
           Case{{480, 360}, {600, 360}, {600, 450}},
           Case{{480, 360}, {240, 360}, {240, 180}},
           // The lower or the upper edge: 540 · 480/360, 90 · 480/360.
           Case{{480, 360}, {480, 540}, {720, 540}},
           Case{{480, 360}, {480, 90}, {120, 90}},
           // A free shape takes the proportions by the edge that is dragged.
           Case{{1000, 90}, {960, 90}, {960, 720}},
           Case{{1000, 90}, {1000, 720}, {960, 720}},
           // A corner, and nothing at all.
           Case{{480, 360}, {600, 370}, {600, 370}},
           Case{{480, 360}, {480, 360}, {480, 360}},
       })
    EXPECT_EQ(proportionalProposal(c.before, c.after, kMinimum), c.proposal)
        << c.after.width() << "x" << c.after.height();
}

TEST(WindowGeometry, ASingleDraggedEdgeStaysWhereTheUserLeftIt) {
  const auto taken = [](const QSizeF &after) {
    return resizedFrameSize(proportionalProposal(kMinimum, after, kMinimum), kMinimum, {}).toSize();
  };
  EXPECT_EQ(taken(QSizeF(720.0, 360.0)), QSize(720, 540));
  EXPECT_EQ(taken(QSizeF(336.0, 360.0)), QSize(336, 252));
  EXPECT_EQ(taken(QSizeF(480.0, 1000.0)), QSize(1333, 1000));
}

TEST(WindowGeometry, ASideIsDraggedWhereThePointerIsFarFromTheCorners) {
  // Its edges are at 100 and 580, 100 and 460.
  const QRectF before(100.0, 100.0, 480.0, 360.0);
  const QSizeF wider(490.0, 360.0);
  EXPECT_TRUE(isSideDragged(before, wider, QPointF(590.0, 280.0)));
  EXPECT_TRUE(isSideDragged(before, wider, QPointF(590.0, 133.0)));
  EXPECT_TRUE(isSideDragged(before, wider, QPointF(590.0, 427.0)));
  EXPECT_FALSE(isSideDragged(before, wider, QPointF(590.0, 132.0)));
  EXPECT_FALSE(isSideDragged(before, wider, QPointF(590.0, 428.0)));
  EXPECT_FALSE(isSideDragged(before, QSizeF(490.0, 361.0), QPointF(590.0, 280.0)));
  EXPECT_FALSE(isSideDragged(before, QSizeF(480.0, 350.0), QPointF(300.0, 280.0)));
}

TEST(WindowGeometry, TheLargestLayoutFillsTheWidthOrTheHeight) {
  const QSizeF layout(420.0, 444.0);
  // 444 · 840/420
  EXPECT_EQ(largestLayoutSize(QSizeF(840.0, 1000.0), layout), QSizeF(840.0, 888.0));
  // 420 · 1000/444 = 945.9
  EXPECT_EQ(largestLayoutSize(QSizeF(1920.0, 1000.0), layout), QSizeF(945.0, 1000.0));
  // 180 · 1001/420 = 429
  EXPECT_EQ(largestLayoutSize(QSizeF(1001.0, 1000.0), QSizeF(420.0, 180.0)), QSizeF(1001.0, 429.0));
  EXPECT_EQ(largestLayoutSize(QSizeF(210.0, 222.0), layout), QSizeF(210.0, 222.0));
}

}  // namespace
}  // namespace orvane::test
