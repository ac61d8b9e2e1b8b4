// A window whose height is set with animation, in a style that takes its time for it.
#include "views/Window.h"

#include <algorithm>
#include <functional>
#include <vector>

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QProxyStyle>
#include <QResizeEvent>
#include <QWindow>

#include <gtest/gtest.h>

#include "tests/views/SizedWidget.h"

namespace orvane::test {
namespace {

class SlowStyle : public QProxyStyle {
 public:
  explicit SlowStyle(int milliseconds) : mDuration(milliseconds) {}

  int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                QStyleHintReturn *returned) const override {
    return hint == SH_Widget_Animation_Duration
               ? mDuration
               : QProxyStyle::styleHint(hint, option, widget, returned);
  }

 private:
  const int mDuration;
};

class SizedWindow : public Window {
 public:
  std::vector<QSize> sizes;

 protected:
  void resizeEvent(QResizeEvent *event) override {
    Window::resizeEvent(event);
    sizes.push_back(event->size());
  }
};

// The tests' screen is 800 by 800; it decorates a window with a border two units wide on all sides.
class WindowAnimationTest : public testing::Test {
 protected:
  static constexpr int kDuration = 700;  // ms, so that a busy machine shows something of the way

  WindowAnimationTest() {
    window.setStyle(&style);
    window.setCentralWidget(content);
    window.setFrame(kLow);
    window.orderFront();
    wait(50);
    window.setFrame(kLow);
    wait(50);
    window.sizes.clear();
    content->takeSizes();
  }

  static void turn() {
    QApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 10);
  }
  static void wait(int milliseconds) {
    QElapsedTimer clock;
    for (clock.start(); clock.elapsed() < milliseconds;)
      turn();
  }
  static bool eventually(const std::function<bool()> &condition) {
    QElapsedTimer clock;
    for (clock.start(); !condition() && clock.elapsed() < 10'000;)
      turn();
    return condition();
  }
  // Until the window has left its height and is not near the end yet.
  void startTowards(const QRectF &frame) {
    const int before = window.height();
    window.setFrame(frame, true);
    ASSERT_TRUE(eventually([&] { return window.height() != before; }));
    ASSERT_NE(window.geometry(), geometryOf(frame)) << "too busy a machine";
  }
  static QRect geometryOf(const QRectF &frame) {
    return QRect(static_cast<int>(frame.x()) + 2, static_cast<int>(800 - frame.bottom()) + 2,
                 static_cast<int>(frame.width()) - 4, static_cast<int>(frame.height()) - 4);
  }
  // Whether a size that comes on the way is the last. It can lose to a height that was asked for in
  // the same moment, which a busy machine makes long; but not every time.
  bool takesFromOutside(const QSize &size) {
    for (int attempt = 0; attempt < 5; ++attempt) {
      window.setFrame(kLow);
      startTowards(kHigh);
      window.windowHandle()->resize(size);
      wait(kDuration + 300);
      if (window.size() == size)
        return true;
    }
    return false;
  }
  void expectRest(const QRectF &frame) {
    EXPECT_EQ(window.frame(), frame);
    EXPECT_EQ(window.geometry(), geometryOf(frame));
    EXPECT_TRUE(eventually([&] { return content->size() == window.size(); }));
    wait(100);
    EXPECT_EQ(window.geometry(), geometryOf(frame));
    EXPECT_EQ(content->size(), window.size());
  }

  // The same upper edge, 700 units above the screen's bottom.
  static constexpr QRectF kLow{100.0, 500.0, 304.0, 200.0};
  static constexpr QRectF kHigh{100.0, 100.0, 304.0, 600.0};

  SlowStyle style{kDuration};
  SizedWindow window;
  SizedWidget *content = new SizedWidget;
};

TEST_F(WindowAnimationTest, TheHeightComesGraduallyBelowTheSameTop) {
  QElapsedTimer clock;
  clock.start();
  window.setFrame(kHigh, true);
  EXPECT_EQ(window.frame(), kHigh);
  EXPECT_EQ(window.geometry(), geometryOf(kLow));
  ASSERT_TRUE(eventually([&] {
    EXPECT_EQ(window.geometry().topLeft(), QPoint(102, 102));
    EXPECT_EQ(window.frame(), kHigh);
    return window.height() == 596;
  }));
  EXPECT_GE(clock.elapsed(), kDuration - 20);
  ASSERT_GE(window.sizes.size(), 3U);
  for (std::size_t i = 0; i < window.sizes.size(); ++i) {
    EXPECT_EQ(window.sizes[i].width(), 300);
    EXPECT_GT(window.sizes[i].height(), i == 0 ? 196 : window.sizes[i - 1].height());
  }
  expectRest(kHigh);
}

TEST_F(WindowAnimationTest, TheContentIsLaidOutOnceForTheHigherOfBothSizes) {
  window.setFrame(kHigh, true);
  EXPECT_EQ(content->takeSizes(), std::vector<QSize>{QSize(300, 596)});
  ASSERT_TRUE(eventually([&] { return window.height() == 596; }));
  wait(300);
  EXPECT_EQ(content->takeSizes(), std::vector<QSize>());

  startTowards(kLow);
  EXPECT_EQ(content->size(), QSize(300, 596));
  EXPECT_EQ(content->takeSizes(), std::vector<QSize>());
  ASSERT_TRUE(eventually([&] { return window.height() == 196; }));
  wait(300);
  EXPECT_EQ(content->takeSizes(), std::vector<QSize>{QSize(300, 196)});
  expectRest(kLow);
}

TEST_F(WindowAnimationTest, AFrameThatChangesMoreThanTheHeightIsTakenAtOnce) {
  const QRectF narrower(100.0, 100.0, 254.0, 600.0);
  window.setFrame(narrower, true);
  EXPECT_EQ(window.geometry(), geometryOf(narrower));
  expectRest(narrower);
  const QRectF elsewhere(60.0, 200.0, 254.0, 300.0);
  window.setFrame(elsewhere, true);
  EXPECT_EQ(window.geometry(), geometryOf(elsewhere));
  expectRest(elsewhere);
}

TEST_F(WindowAnimationTest, ASizeFromOutsideEndsIt) {
  EXPECT_TRUE(takesFromOutside(QSize(320, 250)));
  expectRest(QRectF(100.0, 446.0, 324.0, 254.0));
}

TEST_F(WindowAnimationTest, AHeightFromOutsideThatIsNoLateAnswerEndsItToo) {
  EXPECT_TRUE(takesFromOutside(QSize(300, 150)));
  expectRest(QRectF(100.0, 546.0, 304.0, 154.0));
}

TEST_F(WindowAnimationTest, ALateAnswerToAnEarlierHeightDoesNotKeepTheLastOneAway) {
  startTowards(kHigh);
  const int earlier = window.height();
  ASSERT_TRUE(eventually([&] { return window.height() == 596; }));
  window.windowHandle()->resize(300, earlier);
  EXPECT_TRUE(eventually([&] { return window.height() == earlier; }));
  EXPECT_EQ(window.frame(), kHigh);
  EXPECT_TRUE(eventually([&] { return window.height() == 596; }));
  expectRest(kHigh);
}

TEST_F(WindowAnimationTest, TheKeyboardStaysWhereItIsPutMeanwhile) {
  auto *field = new QLineEdit(content);
  field->move(0, 500);
  field->show();
  window.activateWindow();
  wait(50);
  window.setFrame(kHigh, true);
  window.makeFirstResponder(field);
  int losses = 0;
  const QObject counting;
  QObject::connect(qApp, &QApplication::focusChanged, &counting, [&] { ++losses; });
  EXPECT_TRUE(eventually([&] { return window.height() == 596; }));
  EXPECT_EQ(window.focusWidget(), field);
  EXPECT_EQ(losses, 0);
}

TEST_F(WindowAnimationTest, AnotherFrameGoesOnFromTheHeightReached) {
  startTowards(kHigh);
  const int reached = window.height();
  window.sizes.clear();
  window.setFrame(kLow, true);
  EXPECT_EQ(window.frame(), kLow);
  EXPECT_EQ(window.height(), reached);
  EXPECT_TRUE(eventually([&] { return window.height() == 196; }));
  EXPECT_TRUE(std::ranges::all_of(window.sizes,
                                  [&](const QSize &size) { return size.height() <= reached; }));
  expectRest(kLow);

  startTowards(kHigh);
  const QRectF third(100.0, 300.0, 304.0, 400.0);
  window.setFrame(third);
  EXPECT_EQ(window.geometry(), geometryOf(third));
  wait(kDuration);
  expectRest(third);
}

TEST_F(WindowAnimationTest, AWindowThatIsMovedMeanwhileStaysWhereItIsPut) {
  startTowards(kHigh);
  window.windowHandle()->setPosition(152, 122);
  EXPECT_TRUE(eventually([&] { return window.pos() == QPoint(150, 120); }));
  EXPECT_TRUE(eventually([&] { return window.height() == 596; }));
  expectRest(QRectF(150.0, 80.0, 304.0, 600.0));
}

TEST_F(WindowAnimationTest, AWindowThatCannotBeSeenHasItsFrameAtOnce) {
  startTowards(kHigh);
  window.hide();
  EXPECT_EQ(window.frame(), kHigh);
  wait(100);
  EXPECT_EQ(window.frame(), kHigh);
  window.show();
  EXPECT_TRUE(eventually([&] { return window.height() == 596; }));
  expectRest(kHigh);
  window.hide();
  window.setFrame(kLow, true);
  expectRest(kLow);

  window.show();
  wait(50);
  startTowards(kHigh);
  window.showMinimized();
  wait(50);
  EXPECT_EQ(window.frame(), kHigh);
  window.orderFront();
  EXPECT_TRUE(eventually([&] { return window.height() == 596; }));
  expectRest(kHigh);

  window.showMinimized();
  wait(50);
  window.setFrame(kLow, true);
  EXPECT_EQ(window.height(), 196);
}

TEST_F(WindowAnimationTest, AStyleWithoutAnimationsHasNone) {
  SlowStyle still(0);
  window.setStyle(&still);
  window.setFrame(kHigh, true);
  expectRest(kHigh);
  EXPECT_EQ(window.sizes, std::vector<QSize>{QSize(300, 596)});
  window.setStyle(&style);
}

TEST_F(WindowAnimationTest, AWindowMaximisedMeanwhileTellsThatItMissedItsFrame) {
  int times = 0;
  QObject::connect(&window, &Window::restored, [&] { ++times; });
  startTowards(kHigh);
  window.showMaximized();
  wait(kDuration);
  EXPECT_EQ(window.size(), QSize(796, 796));
  EXPECT_EQ(content->size(), QSize(796, 796));
  EXPECT_EQ(times, 0);
  window.showNormal();
  EXPECT_TRUE(eventually([&] { return times == 1; }));
  EXPECT_LT(window.height(), 596);
}

}  // namespace
}  // namespace orvane::test
