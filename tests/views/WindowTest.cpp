#include "views/Window.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenuBar>
#include <QScreen>

#include <gtest/gtest.h>

#include "tests/views/SizedWidget.h"
#include "views/ResizeWindow.h"

namespace orvane::test {
namespace {

// The tests' screen is 800 by 800, without panels; it decorates a window that has been shown with a
// border two units wide on all sides.
void handleEvents() {
  for (int turn = 0; turn < 3; ++turn)
    QApplication::processEvents();
}

TEST(Window, HasItsFrameMeasuredFromTheBottomOfTheScreen) {
  Window window;
  window.setGeometry(100, 50, 300, 200);
  EXPECT_EQ(window.frame(), QRectF(100.0, 550.0, 300.0, 200.0));
  EXPECT_EQ(window.visibleFrame(), QRectF(0.0, 0.0, 800.0, 800.0));
}

TEST(Window, TakesTheFrameItIsGivenBeforeAndAfterItIsShown) {
  Window window;
  window.setFrame(QRectF(10.0, 20.0, 300.0, 200.0));
  EXPECT_EQ(window.frame(), QRectF(10.0, 20.0, 300.0, 200.0));
  EXPECT_EQ(window.geometry(), QRect(10, 580, 300, 200));
  window.orderFront();
  handleEvents();
  EXPECT_EQ(window.frame(), QRectF(8.0, 18.0, 304.0, 204.0));
  EXPECT_EQ(window.contentRectForFrameRect(window.frame()), QRectF(10.0, 20.0, 300.0, 200.0));
  window.setFrame(QRectF(40.0, 30.0, 250.0, 150.0), true);
  handleEvents();
  EXPECT_EQ(window.frame(), QRectF(40.0, 30.0, 250.0, 150.0));
  EXPECT_EQ(window.geometry(), QRect(42, 622, 246, 146));
}

TEST(Window, CountsTheMenuBarAsAPartOfItsFrame) {
  Window window;
  auto *content = new QWidget;
  window.setCentralWidget(content);
  const QRectF rect(10.0, 20.0, 300.0, 200.0);
  EXPECT_EQ(window.contentRectForFrameRect(rect), rect);

  window.menuBar()->addMenu(QStringLiteral("View"))->addAction(QStringLiteral("Show"));
  window.setFrame(window.frameRectForContentRect(rect));
  window.orderFront();
  handleEvents();
  const int bar = window.menuBar()->height();
  ASSERT_GT(bar, 10);
  EXPECT_EQ(window.frame(), QRectF(8.0, 18.0, 304.0, 204.0 + bar));
  EXPECT_EQ(window.contentRectForFrameRect(window.frame()), rect);
  EXPECT_EQ(window.contentSize(), QSizeF(300.0, 200.0));
  EXPECT_EQ(content->geometry(), QRect(0, bar, 300, 200));
}

TEST(Window, HasTheSmallestFrameAroundTheSmallestContentWithoutForcingItOnTheUser) {
  ResizeWindow window;
  window.setCentralWidget(new QWidget);
  window.setProperty("contentMinSize", QSizeF(480.0, 333.0));
  EXPECT_EQ(window.contentMinSize(), QSizeF(480.0, 333.0));
  EXPECT_EQ(window.minSize(), QSizeF(480.0, 333.0));
  window.menuBar()->addMenu(QStringLiteral("View"));
  EXPECT_EQ(window.minSize().height(), 333.0 + window.menuBar()->sizeHint().height());
  window.setFrame(QRectF(0.0, 0.0, 360.0, 200.0));
  window.orderFront();
  handleEvents();
  EXPECT_EQ(window.frame().size(), QSizeF(364.0, 204.0));
  EXPECT_EQ(window.minSize().width(), 484.0);
}

TEST(Window, HasTheSmallestFrameAroundTheLayoutThatIsShown) {
  ResizeWindow window;
  window.setContentMinSize(QSizeF(480.0, 333.0));
  EXPECT_EQ(window.layoutSize(), QSizeF(480.0, 333.0));
  window.setLayoutSize(QSizeF(480.0, 151.0));
  EXPECT_EQ(window.minSize(), QSizeF(480.0, 151.0));
  EXPECT_EQ(window.contentMinSize(), QSizeF(480.0, 333.0));
  window.orderFront();
  handleEvents();
  EXPECT_EQ(window.minSize(), QSizeF(484.0, 155.0));
}

TEST(Window, ShowsItsLayoutAsLargeAsItCanBeOnAWholeScreen) {
  for (const Qt::WindowState state : {Qt::WindowMaximized, Qt::WindowFullScreen}) {
    SCOPED_TRACE(state);
    Window window;
    auto *content = new SizedWidget;
    window.setCentralWidget(content);
    window.setLayoutSize(QSizeF(100.0, 200.0));
    window.setFrame(QRectF(100.0, 100.0, 300.0, 200.0));
    window.orderFront();
    handleEvents();
    // Of a free shape nothing is left out.
    EXPECT_EQ(content->geometry(), QRect(0, 0, 300, 200));

    content->takeSizes();
    window.setWindowState(state);
    handleEvents();
    // A square, with or without the borders.
    const int edge = window.width();
    ASSERT_TRUE(window.size() == QSize(796, 796) || window.size() == QSize(800, 800)) << edge;
    EXPECT_EQ(content->geometry(), QRect(edge / 4, 0, edge / 2, edge));
    const std::vector<QSize> sizes = content->takeSizes();
    EXPECT_TRUE(std::ranges::all_of(
        sizes, [](const QSize &size) { return size.height() == 2 * size.width(); }));
    window.setLayoutSize(QSizeF(400.0, 100.0));
    EXPECT_EQ(content->geometry(), QRect(0, 0, edge, edge / 4));
    EXPECT_EQ(window.contentSize(), QSizeF(edge, edge));

    // The toolkit lays the window out anew when its menu bar comes.
    window.menuBar()->addMenu(QStringLiteral("View"))->addAction(QStringLiteral("Show"));
    window.setLayoutSize(QSizeF(100.0, 100.0));
    handleEvents();
    const int bar = window.menuBar()->height();
    ASSERT_GT(bar, 10);
    EXPECT_EQ(content->geometry(), QRect(bar / 2, bar, edge - bar, edge - bar));

    window.setWindowState(Qt::WindowNoState);
    handleEvents();
    EXPECT_EQ(content->geometry(), QRect(0, bar, 300, 200 - bar));
  }
}

TEST(Window, TellsOfAFrameThatItMissedWhileItWasMaximised) {
  Window window;
  window.setLayoutSize(QSizeF(300.0, 200.0));
  int times = 0;
  QObject::connect(&window, &Window::restored, [&] {
    ++times;
    EXPECT_EQ(window.size(), QSize(300, 200));
  });
  const auto becomes = [&](Qt::WindowState state) {
    window.setWindowState(state);
    QElapsedTimer clock;
    for (clock.start(); clock.elapsed() < 150;)
      QApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 10);
  };
  window.setFrame(QRectF(100.0, 100.0, 300.0, 200.0));
  window.orderFront();
  becomes(Qt::WindowMaximized);
  becomes(Qt::WindowNoState);
  EXPECT_EQ(times, 0);

  becomes(Qt::WindowMaximized);
  window.setFrame(QRectF(100.0, 100.0, 500.0, 100.0));
  handleEvents();
  EXPECT_EQ(window.size(), QSize(796, 796));
  becomes(Qt::WindowFullScreen);
  EXPECT_EQ(times, 0);
  becomes(Qt::WindowNoState);
  EXPECT_EQ(times, 1);
  becomes(Qt::WindowMaximized);
  becomes(Qt::WindowNoState);
  EXPECT_EQ(times, 1);
}

TEST(Window, IsCentredOnItsScreen) {
  Window window;
  window.setFrame(QRectF(10.0, 20.0, 300.0, 200.0));
  window.center();
  EXPECT_EQ(window.frame(), QRectF(250.0, 300.0, 300.0, 200.0));
}

TEST(Window, TellsThatItIsClosedWhenItIsNoLongerVisible) {
  Window window;
  int closings = 0;
  QObject::connect(&window, &Window::closed, [&] {
    ++closings;
    EXPECT_FALSE(window.isVisible());
  });
  window.makeKeyAndOrderFront();
  handleEvents();
  window.hide();
  EXPECT_EQ(closings, 0);
  window.makeKeyAndOrderFront();
  window.close();
  EXPECT_EQ(closings, 1);
  window.makeKeyAndOrderFront();
  EXPECT_TRUE(window.isVisible());
  window.close();
  EXPECT_EQ(closings, 2);
}

TEST(Window, TellsThatItIsMiniaturizedAndComesBackWhenItIsOrderedFront) {
  Window window;
  std::string story;
  QObject::connect(&window, &Window::miniaturized, [&] { story += "mini "; });
  QObject::connect(&window, &Window::deminiaturized, [&] { story += "back "; });
  window.makeKeyAndOrderFront();
  handleEvents();
  window.showMinimized();
  handleEvents();
  EXPECT_EQ(story, "mini ");
  window.orderFront();
  handleEvents();
  EXPECT_EQ(story, "mini back ");
  EXPECT_FALSE(window.isMinimized());
}

TEST(Window, GivesTheKeyboardToAWidgetOrTakesItItself) {
  Window window;
  auto *content = new QWidget;
  auto *first = new QLineEdit(content);
  auto *second = new QLineEdit(content);
  window.setCentralWidget(content);
  window.makeKeyAndOrderFront();
  handleEvents();
  window.makeFirstResponder(second);
  EXPECT_TRUE(second->hasFocus());
  window.makeFirstResponder(nullptr);
  EXPECT_FALSE(second->hasFocus());
  EXPECT_FALSE(first->hasFocus());

  // Nor does a field get it when the user comes back from another window.
  Window other;
  other.makeKeyAndOrderFront();
  handleEvents();
  window.makeKeyAndOrderFront();
  handleEvents();
  ASSERT_TRUE(window.isActiveWindow());
  EXPECT_FALSE(first->hasFocus());
  EXPECT_FALSE(second->hasFocus());
}

TEST(Window, EndsEditingWhenItTakesTheKeyboard) {
  Window window;
  auto *field = new QLineEdit;
  window.setCentralWidget(field);
  int endings = 0;
  QObject::connect(field, &QLineEdit::editingFinished, [&] { ++endings; });
  window.makeKeyAndOrderFront();
  handleEvents();
  window.makeFirstResponder(field);
  QKeyEvent seven(QEvent::KeyPress, Qt::Key_7, Qt::NoModifier, QStringLiteral("7"));
  QApplication::sendEvent(field, &seven);
  window.makeFirstResponder(nullptr);
  EXPECT_EQ(endings, 1);
}

}  // namespace
}  // namespace orvane::test
