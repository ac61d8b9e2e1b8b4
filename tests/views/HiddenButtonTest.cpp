#include "views/HiddenButton.h"

#include <QApplication>
#include <QImage>
#include <QMouseEvent>

#include <gtest/gtest.h>

namespace orvane::test {
namespace {

// A button of its own in a white view, drawn whether or not the toolkit would ask it to.
QImage drawn(HiddenButton &button) {
  QImage image(button.size(), QImage::Format_RGB32);
  image.fill(Qt::white);
  button.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
  return image;
}

QImage blank(const QSize &size) {
  QImage image(size, QImage::Format_RGB32);
  image.fill(Qt::white);
  return image;
}

TEST(HiddenButton, DrawsNothingWhileItIsHidden) {
  QWidget view;
  HiddenButton button(&view);
  button.setText(QStringLiteral("Sound Settings"));
  button.resize(120, 30);
  view.show();
  EXPECT_NE(drawn(button), blank(QSize(120, 30)));
  button.hide();
  EXPECT_EQ(drawn(button), blank(QSize(120, 30)));
  button.show();
  EXPECT_NE(drawn(button), blank(QSize(120, 30)));
}

TEST(HiddenButton, SendsItsActionWhenItIsClicked) {
  HiddenButton button;
  int actions = 0;
  QObject::connect(&button, &HiddenButton::action, [&] { ++actions; });
  button.click();
  EXPECT_EQ(actions, 1);
}

TEST(HiddenButton, IsClickedWhereItIsDrawn) {
  QWidget view;
  view.resize(200, 100);
  HiddenButton button(&view);
  button.setGeometry(10, 10, 120, 30);
  view.resize(400, 100);
  button.resizeWithOldSuperviewSize(QSizeF(200.0, 100.0));
  ASSERT_EQ(button.geometry(), QRect(20, 20, 240, 60));
  int actions = 0;
  QObject::connect(&button, &HiddenButton::action, [&] { ++actions; });
  const auto click = [&](const QPointF &place) {
    QMouseEvent press(QEvent::MouseButtonPress, place, button.mapToGlobal(place), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&button, &press);
    QMouseEvent release(QEvent::MouseButtonRelease, place, button.mapToGlobal(place),
                        Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(&button, &release);
  };
  click(QPointF(236.0, 56.0));
  EXPECT_EQ(actions, 1);
  click(QPointF(241.0, 56.0));
  EXPECT_EQ(actions, 1);
}

}  // namespace
}  // namespace orvane::test
