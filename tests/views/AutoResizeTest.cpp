#include "views/AutoResize.h"

#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "views/AutoResizeBox.h"
#include "views/AutoResizeGeometry.h"
#include "views/AutoResizeImageView.h"
#include "views/AutoResizePopUpButton.h"
#include "views/AutoResizeSlider.h"
#include "views/AutoResizeStepper.h"
#include "views/AutoResizeTextField.h"
#include "views/ContentView.h"
#include "views/Coordinates.h"
#include "views/HiddenButton.h"

namespace orvane::test {
namespace {

// 402 from the top of a view of 420 by 444, which is 16 from its bottom.
const QSizeF kOriginalSize(420.0, 444.0);
const QRectF kOriginal(136.0, 16.0, 96.0, 26.0);

TEST(AutoResizeGeometry, ZoomsWithTheWidthAndKeepsThePlaceAtTheTop) {
  struct Case {
    QSizeF size;
    QRectF frame;
  };
  const std::vector<Case> cases = {
      {{420.0, 444.0}, {136.0, 16.0, 96.0, 26.0}},
      // Twice the width at the same height: twice as far from the top.
      {{840.0, 444.0}, {272.0, -412.0, 192.0, 52.0}},
      {{315.0, 333.0}, {102.0, 12.0, 72.0, 19.5}},
      {{630.0, 300.0}, {204.0, -342.0, 144.0, 39.0}},
      // Only lower: cut off at the bottom.
      {{420.0, 180.0}, {136.0, -248.0, 96.0, 26.0}},
      // A third in single precision is 0.3333333432674408, 25/21 is 1.190476179122925.
      {{140.0, 148.0}, {45.33333468437195, 5.333329081535339, 32.0000009536743, 8.66666692495346}},
      {{500.0, 528.0},
       {161.90476036071777, 18.47619533538818, 114.28571319580078, 30.95238065719604}},
      {{0.0, 0.0}, {0.0, 0.0, 0.0, 0.0}},
  };
  for (const Case &each : cases) {
    const QRectF frame = relayoutFrame(kOriginal, kOriginalSize, each.size);
    EXPECT_DOUBLE_EQ(frame.x(), each.frame.x()) << each.size.width();
    EXPECT_DOUBLE_EQ(frame.y(), each.frame.y()) << each.size.width();
    EXPECT_DOUBLE_EQ(frame.width(), each.frame.width()) << each.size.width();
    EXPECT_DOUBLE_EQ(frame.height(), each.frame.height()) << each.size.width();
  }
  EXPECT_EQ(relayoutScale(kOriginalSize, QSizeF(140.0, 444.0)), 0.33333334F);
}

TEST(AutoResizeGeometry, AnOriginalWithoutWidthHasNoScale) {
  EXPECT_EQ(relayoutScale(QSizeF(0.0, 10.0), QSizeF(100.0, 10.0)), 0.0F);
}

TEST(Coordinates, AreTurnedOverAndBackAgain) {
  const QRectF rect(3.0, 10.0, 5.0, 20.0);
  EXPECT_EQ(flipped(rect, 100.0), QRectF(3.0, 70.0, 5.0, 20.0));
  EXPECT_EQ(flipped(flipped(rect, 100.0), 100.0), rect);
}

TEST(AutoResize, TakesWholeUnitsAroundItsFrame) {
  QWidget view;
  view.resize(315, 333);
  AutoResizeBox box(&view);
  box.setGeometry(136, 402, 96, 26);
  EXPECT_EQ(box.scale(), 1.0F);
  box.resizeWithOldSuperviewSize(kOriginalSize);
  EXPECT_EQ(box.scale(), 0.75F);
  EXPECT_EQ(box.frame(), QRectF(102.0, 12.0, 72.0, 19.5));
  EXPECT_EQ(box.bounds(), QRectF(0.0, 0.0, 96.0, 26.0));
  // From 301.5 to 321 below the top.
  EXPECT_EQ(box.geometry(), QRect(102, 301, 72, 20));
}

TEST(AutoResize, KeepsTheOriginalOfItsFirstRelayout) {
  QWidget view;
  view.resize(840, 444);
  AutoResizeBox box(&view);
  box.setGeometry(136, 402, 96, 26);
  box.resizeWithOldSuperviewSize(kOriginalSize);
  view.resize(420, 444);
  box.resizeWithOldSuperviewSize(QSizeF(1.0, 1.0));
  EXPECT_EQ(box.frame(), kOriginal);
}

TEST(AutoResize, HasNoSizeWithoutAView) {
  AutoResizeBox box;
  box.setGeometry(0, 0, 96, 26);
  box.resizeWithOldSuperviewSize(kOriginalSize);
  EXPECT_EQ(box.scale(), 0.0F);
  EXPECT_EQ(box.frame().size(), QSizeF(0.0, 0.0));
}

TEST(AutoResize, EndsWhereOneRelayoutWouldAfterManyOthers) {
  const auto fill = [](QWidget &view) {
    view.resize(420, 444);
    const std::vector<QWidget *> controls = {
        new AutoResizeBox(&view),         new AutoResizeTextField(&view),
        new AutoResizeImageView(&view),   new AutoResizeStepper(&view),
        new AutoResizePopUpButton(&view), new AutoResizeSlider(&view),
        new HiddenButton(&view)};
    for (std::size_t i = 0; i < controls.size(); ++i)
      controls[i]->setGeometry(10 + 7 * static_cast<int>(i), 20 + 50 * static_cast<int>(i), 90, 27);
    view.show();
  };
  ContentView often;
  fill(often);
  std::mt19937 random(20);
  std::uniform_int_distribution<int> length(100, 1300);
  for (int i = 0; i < 500; ++i)
    often.resize(length(random), length(random));
  often.resize(777, 555);

  ContentView once;
  fill(once);
  once.resize(777, 555);
  ASSERT_EQ(often.children().size(), 7);
  for (int i = 0; i < 7; ++i) {
    const auto *control = dynamic_cast<AutoResize *>(often.children()[i]);
    const auto *expected = dynamic_cast<AutoResize *>(once.children()[i]);
    ASSERT_NE(control, nullptr);
    EXPECT_EQ(control->frame(), expected->frame());
    EXPECT_EQ(control->scale(), expected->scale());
    EXPECT_EQ(qobject_cast<QWidget *>(often.children()[i])->geometry(),
              qobject_cast<QWidget *>(once.children()[i])->geometry());
  }
}

TEST(ContentView, TakesTheSizeItIsFilledInForTheOriginalOne) {
  ContentView view;
  view.resize(420, 444);
  AutoResizeBox box(&view);
  box.setGeometry(136, 402, 96, 26);
  view.resize(630, 500);
  view.resize(840, 444);  // both before it is shown
  view.show();
  EXPECT_EQ(box.frame(), QRectF(272.0, -412.0, 192.0, 52.0));
  view.resize(420, 180);
  EXPECT_EQ(box.frame(), QRectF(136.0, -248.0, 96.0, 26.0));
}

}  // namespace
}  // namespace orvane::test
