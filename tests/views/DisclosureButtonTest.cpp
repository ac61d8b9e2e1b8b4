#include "views/DisclosureButton.h"

#include <memory>
#include <string>

#include <QAccessible>
#include <QApplication>
#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>

#include <gtest/gtest.h>

#include "tests/views/PictureFolder.h"

namespace orvane::test {
namespace {

// Pictures of one colour each: down green, right red, middle blue. They are the process's from the
// first drawing on.
class DisclosureButtonTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    const PictureFolder pictures;
    pictures.writePlain("down", 24, 24, "#00ff00");
    pictures.writePlain("right", 24, 24, "#ff0000");
    pictures.writePlain("middle", 24, 24, "#0000ff");
    DisclosureButton button;
    button.resize(24, 24);
    button.grab();
  }

  DisclosureButtonTest() {
    mButton.resize(24, 24);
    QObject::connect(&mButton, &DisclosureButton::action, [this] { ++mActions; });
  }

  void mouse(QEvent::Type type, int x, int y, Qt::MouseButton button = Qt::LeftButton) {
    const bool isUp = type == QEvent::MouseButtonRelease;
    QMouseEvent event(type, QPointF(x, y), mButton.mapToGlobal(QPointF(x, y)),
                      type == QEvent::MouseMove ? Qt::NoButton : button,
                      isUp ? Qt::NoButton : button, Qt::NoModifier);
    QApplication::sendEvent(&mButton, &event);
  }

  void key(int code, bool isRepeat = false) {
    QKeyEvent press(QEvent::KeyPress, code, Qt::NoModifier, QString(), isRepeat);
    QApplication::sendEvent(&mButton, &press);
    QKeyEvent release(QEvent::KeyRelease, code, Qt::NoModifier, QString(), isRepeat);
    QApplication::sendEvent(&mButton, &release);
  }

  // What the button looks like.
  std::string look() {
    const QColor colour = mButton.grab().toImage().pixelColor(12, 2);
    return colour == QColor(Qt::green)  ? "down"
           : colour == QColor(Qt::red)  ? "right"
           : colour == QColor(Qt::blue) ? "middle"
                                        : "nothing";
  }

  DisclosureButton mButton;
  int mActions = 0;
};

TEST_F(DisclosureButtonTest, PointsDownInStateOneAndRightInStateZero) {
  EXPECT_EQ(mButton.state(), 0);
  EXPECT_EQ(look(), "right");
  mButton.setState(1);
  EXPECT_EQ(look(), "down");
  mButton.setState(0);
  EXPECT_EQ(look(), "right");
  EXPECT_EQ(mActions, 0);
}

TEST_F(DisclosureButtonTest, TakesAnyOtherNumberForOne) {
  mButton.setState(-3);
  EXPECT_EQ(mButton.state(), 1);
}

TEST_F(DisclosureButtonTest, TogglesAndThenSendsItsActionWhenItIsReleasedInside) {
  int stateInAction = -1;
  QObject::connect(&mButton, &DisclosureButton::action, [&] { stateInAction = mButton.state(); });
  mouse(QEvent::MouseButtonPress, 12, 12);
  EXPECT_EQ(look(), "middle");
  EXPECT_EQ(mButton.state(), 0);
  EXPECT_EQ(mActions, 0);
  mouse(QEvent::MouseButtonRelease, 12, 12);
  EXPECT_EQ(look(), "down");
  EXPECT_EQ(stateInAction, 1);
  EXPECT_EQ(mActions, 1);
}

TEST_F(DisclosureButtonTest, ChangesNothingWhenItIsReleasedOutside) {
  mouse(QEvent::MouseButtonPress, 12, 12);
  mouse(QEvent::MouseMove, 30, 12);
  EXPECT_EQ(look(), "right");
  mouse(QEvent::MouseButtonRelease, 30, 12);
  EXPECT_EQ(look(), "right");
  EXPECT_EQ(mActions, 0);
}

TEST_F(DisclosureButtonTest, LooksPressedOnlyWhileThePointerIsInside) {
  mouse(QEvent::MouseButtonPress, 12, 12);
  mouse(QEvent::MouseMove, -1, 12);
  EXPECT_EQ(look(), "right");
  mouse(QEvent::MouseMove, 0, 0);
  EXPECT_EQ(look(), "middle");
  mouse(QEvent::MouseMove, 24, 12);
  EXPECT_EQ(look(), "right");
  mouse(QEvent::MouseMove, 23, 23);
  EXPECT_EQ(look(), "middle");
  mouse(QEvent::MouseButtonRelease, 23, 23);
  EXPECT_EQ(look(), "down");
  EXPECT_EQ(mActions, 1);
}

TEST_F(DisclosureButtonTest, LeavesTheOtherMouseButtonsAlone) {
  mouse(QEvent::MouseButtonPress, 12, 12, Qt::RightButton);
  EXPECT_EQ(look(), "right");
  mouse(QEvent::MouseButtonRelease, 12, 12, Qt::RightButton);
  EXPECT_EQ(mButton.state(), 0);
  // A second button does not end what the first has begun.
  mouse(QEvent::MouseButtonPress, 12, 12);
  mouse(QEvent::MouseButtonPress, 12, 12, Qt::RightButton);
  mouse(QEvent::MouseButtonRelease, 12, 12, Qt::RightButton);
  EXPECT_EQ(look(), "middle");
  mouse(QEvent::MouseButtonRelease, 12, 12);
  EXPECT_EQ(mActions, 1);
}

TEST_F(DisclosureButtonTest, ForgetsThePressWhenItIsHidden) {
  mButton.show();
  mouse(QEvent::MouseButtonPress, 12, 12);
  mButton.hide();
  EXPECT_EQ(look(), "right");
  mouse(QEvent::MouseButtonRelease, 12, 12);
  EXPECT_EQ(mActions, 0);
}

TEST_F(DisclosureButtonTest, IsPressedWithTheKeyboardToo) {
  key(Qt::Key_Space);
  EXPECT_EQ(mButton.state(), 1);
  key(Qt::Key_Return);
  EXPECT_EQ(mButton.state(), 0);
  key(Qt::Key_Enter);
  EXPECT_EQ(mButton.state(), 1);
  EXPECT_EQ(mActions, 3);
  key(Qt::Key_Space, true);
  key(Qt::Key_A);
  EXPECT_EQ(mActions, 3);
}

TEST_F(DisclosureButtonTest, ShowsTheFocusAsARingInsideItsFrame) {
  mButton.show();
  mButton.activateWindow();
  QApplication::processEvents();
  mButton.clearFocus();
  const QImage without = mButton.grab().toImage();
  mButton.setFocus();
  const QImage with = mButton.grab().toImage();
  ASSERT_TRUE(mButton.hasFocus());
  const QColor ring = mButton.palette().color(QPalette::Highlight);
  // A circle of radius 8 around the middle, two units thick: from 19 to 21 on the middle row.
  EXPECT_EQ(without.pixelColor(19, 12), QColor(Qt::red));
  EXPECT_NEAR(with.pixelColor(19, 12).blue(), ring.blue(), 12);
  EXPECT_NEAR(with.pixelColor(12, 4).blue(), ring.blue(), 12);
  EXPECT_EQ(with.pixelColor(12, 12), QColor(Qt::red));
  EXPECT_EQ(with.pixelColor(12, 1), QColor(Qt::red));
  EXPECT_EQ(with.pixelColor(1, 12), QColor(Qt::red));
}

TEST_F(DisclosureButtonTest, IsACheckBoxForAssistiveProgramsThatTheyCanToggle) {
  QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(&mButton);
  ASSERT_NE(interface, nullptr);
  EXPECT_EQ(interface->role(), QAccessible::CheckBox);
  EXPECT_TRUE(interface->state().checkable);
  EXPECT_FALSE(interface->state().checked);
  ASSERT_NE(interface->actionInterface(), nullptr);
  const QString toggle = QAccessibleActionInterface::toggleAction();
  EXPECT_TRUE(interface->actionInterface()->actionNames().contains(toggle));
  interface->actionInterface()->doAction(toggle);
  EXPECT_TRUE(interface->state().checked);
  EXPECT_EQ(mButton.state(), 1);
  EXPECT_EQ(mActions, 1);
}

TEST_F(DisclosureButtonTest, ZoomsWithTheViewThatEnclosesIt) {
  QWidget view;
  view.resize(100, 100);
  auto *button = new DisclosureButton(&view);
  button->setGeometry(10, 10, 24, 24);
  int actions = 0;
  QObject::connect(button, &DisclosureButton::action, [&] { ++actions; });
  view.resize(200, 100);
  button->resizeWithOldSuperviewSize(QSizeF(100.0, 100.0));
  EXPECT_EQ(button->geometry(), QRect(20, 20, 48, 48));
  const QImage image = button->grab().toImage();
  EXPECT_EQ(image.pixelColor(0, 0), QColor(Qt::red));
  EXPECT_EQ(image.pixelColor(47, 47), QColor(Qt::red));

  const auto click = [&](double x, double y) {
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
      QMouseEvent event(type, QPointF(x, y), button->mapToGlobal(QPointF(x, y)), Qt::LeftButton,
                        type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton,
                        Qt::NoModifier);
      QApplication::sendEvent(button, &event);
    }
  };
  click(47.0, 47.0);
  EXPECT_EQ(actions, 1);
  click(48.0, 47.0);
  EXPECT_EQ(actions, 1);
}

}  // namespace
}  // namespace orvane::test
