#include "views/AutoResize.h"

#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "tests/views/ZoomRig.h"
#include "views/AutoResizeBox.h"
#include "views/AutoResizeImageView.h"
#include "views/AutoResizePopUpButton.h"
#include "views/AutoResizeSlider.h"
#include "views/AutoResizeStepper.h"
#include "views/AutoResizeTextField.h"
#include "views/DisclosureButton.h"
#include "views/HiddenButton.h"

namespace orvane::test {
namespace {

// 10 from the left and 20 from the top, 100 by 20, in the rig's 200 by 100.
const QRect kPlace(10, 20, 100, 20);

// A view of 420 by 444 with one control of each class, wherever they are.
struct Panel {
  Panel() {
    view.resize(420, 444);
    add<AutoResizeBox>(QRect(12, 180, 396, 3));
    add<AutoResizeTextField>(QRect(16, 75, 140, 20));
    add<AutoResizeImageView>(QRect(196, 114, 28, 28));
    add<AutoResizeStepper>(QRect(208, 242, 16, 26));
    add<AutoResizePopUpButton>(QRect(136, 274, 208, 26));
    add<AutoResizeSlider>(QRect(136, 402, 96, 26));
    add<DisclosureButton>(QRect(12, 150, 24, 24));
    add<HiddenButton>(QRect(272, 402, 132, 26));
    // Never drawn: the pictures of the disclosure control, once loaded, are the process's.
    view.findChild<DisclosureButton *>()->hide();
  }
  template <class Control>
  void add(const QRect &place) {
    auto *control = new Control(&view);
    control->setGeometry(place);
    controls.push_back(control);
    widgets.push_back(control);
  }

  ContentView view;
  std::vector<AutoResize *> controls;
  std::vector<QWidget *> widgets;
};

TEST(AutoResize, HasItsPlaceForAFrameBeforeTheFirstRelayout) {
  ZoomRig<AutoResizeBox> box(kPlace);
  EXPECT_EQ(box->frame(), QRectF(10.0, 60.0, 100.0, 20.0));
  EXPECT_EQ(box->bounds(), QRectF(0.0, 0.0, 100.0, 20.0));
  EXPECT_EQ(box->scale(), 1.0F);
}

TEST(AutoResize, TakesTheOriginalFromTheFirstRelayoutOnly) {
  QWidget view;
  view.resize(400, 100);
  AutoResizeBox box(&view);
  box.setGeometry(kPlace);
  box.resizeWithOldSuperviewSize(QSizeF(200.0, 100.0));
  EXPECT_EQ(box.frame(), QRectF(20.0, 20.0, 200.0, 40.0));
  // Neither another old size nor another place changes the original.
  box.setGeometry(0, 0, 7, 7);
  view.resize(300, 100);
  box.resizeWithOldSuperviewSize(QSizeF(77.0, 77.0));
  EXPECT_EQ(box.frame(), QRectF(15.0, 40.0, 150.0, 30.0));
  EXPECT_EQ(box.bounds(), QRectF(0.0, 0.0, 100.0, 20.0));
  EXPECT_EQ(box.scale(), 1.5F);
}

TEST(AutoResize, TakesUpTheWholeUnitsThatItsFrameTouches) {
  ZoomRig<AutoResizeBox> box(QRect(10, 21, 101, 21));
  box.zoomTo(0.75);
  // 7.5 to 83.25 across; 15.75 to 31.5 from the top.
  EXPECT_EQ(box->geometry(), QRect(7, 15, 77, 17));
  EXPECT_EQ(box->frame(), QRectF(7.5, 43.5, 75.75, 15.75));
}

TEST(AutoResize, EndsAfterManyRelayoutsWhereOneWouldPutIt) {
  Panel often;
  often.view.show();
  std::mt19937 random(20);
  std::uniform_int_distribution<int> width(200, 1600);
  std::uniform_int_distribution<int> height(100, 1600);
  for (int count = 0; count < 500; ++count)
    often.view.resize(width(random), height(random));
  often.view.resize(997, 1013);
  QApplication::processEvents();
  Panel once;
  once.view.resize(997, 1013);
  once.view.show();
  QApplication::processEvents();
  ASSERT_EQ(often.view.size(), QSize(997, 1013));
  for (std::size_t index = 0; index < often.controls.size(); ++index) {
    const QRectF frame = often.controls[index]->frame();
    const QRectF expected = once.controls[index]->frame();
    EXPECT_EQ(frame.x(), expected.x());
    EXPECT_EQ(frame.y(), expected.y());
    EXPECT_EQ(frame.width(), expected.width());
    EXPECT_EQ(frame.height(), expected.height());
    EXPECT_EQ(often.widgets[index]->geometry(), once.widgets[index]->geometry());
  }
  // 997 / 420 of the box's 396 by 3, 180 below the top.
  EXPECT_NEAR(often.controls[0]->frame().width(), 940.0286, 1e-4);
  EXPECT_NEAR(often.controls[0]->frame().y(), 1013.0 - 434.4071, 1e-4);
}

TEST(AutoResize, ComesBackExactlyToItsOriginalFrame) {
  Panel panel;
  std::vector<QRect> before;
  for (const QWidget *widget : panel.widgets)
    before.push_back(widget->geometry());
  panel.view.show();
  panel.view.resize(1261, 333);
  QApplication::processEvents();
  panel.view.resize(420, 444);
  QApplication::processEvents();
  for (std::size_t index = 0; index < before.size(); ++index)
    EXPECT_EQ(panel.widgets[index]->geometry(), before[index]);
}

TEST(AutoResize, IsNothingWithoutAnEnclosingView) {
  AutoResizeSlider slider;
  slider.setGeometry(kPlace);
  slider.resizeWithOldSuperviewSize(QSizeF(200.0, 100.0));
  EXPECT_EQ(slider.frame(), QRectF(0.0, 0.0, 0.0, 0.0));
  EXPECT_EQ(slider.scale(), 0.0F);
  EXPECT_EQ(slider.bounds(), QRectF(0.0, 0.0, 100.0, 20.0));
}

TEST(AutoResize, LeavesTheFocusAloneExceptForAFieldToTypeIn) {
  ZoomRig<AutoResizeSlider> slider(kPlace);
  auto *text = new AutoResizeTextField(&slider.view());
  slider->setFocus();
  ASSERT_TRUE(slider->hasFocus());
  slider.zoomTo(1.5);
  EXPECT_TRUE(slider->hasFocus());
  text->setEditable(true);
  slider.zoomTo(2.0);
  EXPECT_FALSE(slider->hasFocus());
}

TEST(AutoResize, EndsTheTypingInAField) {
  ZoomRig<AutoResizeTextField> field(kPlace);
  field->setEditable(true);
  field->setFocus();
  ASSERT_TRUE(field->hasFocus());
  int actions = 0;
  QObject::connect(&*field, &AutoResizeTextField::action, [&] { ++actions; });
  field.key(Qt::Key_4, QStringLiteral("4"));
  EXPECT_EQ(actions, 0);
  field.zoomTo(1.5);
  EXPECT_FALSE(field->hasFocus());
  EXPECT_EQ(actions, 1);
  EXPECT_EQ(field->stringValue(), QStringLiteral("4"));
}

TEST(AutoResize, IsToldOfTheSizeThatAHiddenViewWasGiven) {
  ContentView view;
  view.resize(200, 100);
  auto *box = new AutoResizeBox(&view);
  box->setGeometry(kPlace);
  auto *plain = new QWidget(&view);
  plain->setGeometry(kPlace);
  auto *inner = new AutoResizeBox(plain);
  inner->setGeometry(1, 2, 3, 4);
  view.resize(400, 200);
  view.show();
  QApplication::processEvents();
  EXPECT_EQ(box->geometry(), QRect(20, 40, 200, 40));
  // Only the view's own proportional controls.
  EXPECT_EQ(plain->geometry(), kPlace);
  EXPECT_EQ(inner->geometry(), QRect(1, 2, 3, 4));
}

}  // namespace
}  // namespace orvane::test
