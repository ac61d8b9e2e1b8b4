// What a person's drags at the edges and corners of the main window make of its size, and what the
// window manager's own sizes show of it.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>

#include "tests/desktop/MainWindowRig.h"

namespace orvane::test {
namespace {

constexpr QPoint kLeft{-1, 0};
constexpr QPoint kRight{1, 0};
constexpr QPoint kTop{0, -1};
constexpr QPoint kBottom{0, 1};

class OrvaneResizeTest : public MainWindowTest {
 protected:
  // Room for twice the window on all sides.
  OrvaneResizeTest() : MainWindowTest(QSize(1600, 1300)) {}

  void SetUp() override {
    MainWindowTest::SetUp();
    smallest = frame().size();
  }

  // The middle of an edge, or a corner.
  QPoint handle(const QPoint &side) const {
    const QRect frame = this->frame();
    const auto at = [](int towards, int from, int to) {
      return towards == 0 ? (from + to) / 2 : towards < 0 ? from : to;
    };
    return {at(side.x(), frame.left(), frame.right()), at(side.y(), frame.top(), frame.bottom())};
  }
  void drag(const QPoint &side, const QPoint &way) const {
    input.drag(handle(side), handle(side) + way);
  }
  // As drag, with the button still down.
  void pull(const QPoint &side, const QPoint &way) const { input.moveTo(grab(side) + way); }

  // Presses there, and moves until the window manager has seen that it is a drag.
  QPoint grab(const QPoint &side) const {
    const QPoint from = handle(side);
    input.moveTo(from);
    input.press();
    for (const int way : {3, 6})
      input.moveTo(from + side * way);
    return from;
  }

  // The layout at its original size, in the middle of the screen or elsewhere.
  void place(const QSize &layout, const QPoint &corner = {500, 400}) const {
    windows.moveResize(window, corner, layout + QSize(0, menuHeight));
    ASSERT_TRUE(
        eventually([&] { return content() == layout && frame().topLeft() == corner; }, kPatience));
  }

  // For longer than the window waits after a drag, also on a busy machine.
  QRect settledFrame() const {
    using Clock = std::chrono::steady_clock;
    QRect last = frame();
    Clock::time_point since = Clock::now();
    eventually(
        [&] {
          if (frame() != last) {
            last = frame();
            since = Clock::now();
          }
          return Clock::now() - since > std::chrono::milliseconds(500);
        },
        kPatience);
    return last;
  }

  // The edges opposite the dragged ones are those of before, and the size is the one expected
  // within two pixels, with the smallest frame's proportions within what rounding leaves of them.
  void expectFrame(const QRect &before, const QPoint &side, const QSizeF &size,
                   const QSizeF &proportions) const {
    settledFrame();
    QRect shown;
    const bool isRight = eventually(
        [&] {
          shown = frame();
          const double height = shown.width() * proportions.height() / proportions.width();
          return (side.x() < 0 ? shown.right() == before.right() : shown.x() == before.x()) &&
                 (side.y() < 0 ? shown.bottom() == before.bottom() : shown.y() == before.y()) &&
                 std::abs(shown.width() - size.width()) <= 2.0 &&
                 std::abs(shown.height() - size.height()) <= 2.0 &&
                 std::abs(shown.height() - height) <= 1.1;
        },
        kPatience);
    EXPECT_TRUE(isRight) << shown.width() << "x" << shown.height() << " at " << shown.x() << ","
                         << shown.y() << ", not " << size.width() << "x" << size.height();
  }

  // At all edges and corners, outwards and inwards.
  void expectPlainDragsKeepProportions(const QSize &layout) const {
    struct Case {
      const char *name;
      QPoint side;
      QPoint way;
    };
    const Case cases[] = {
        {"right", kRight, {90, 0}},
        {"right inwards", kRight, {-70, 15}},
        {"left", kLeft, {-90, 0}},
        {"left inwards", kLeft, {70, -15}},
        {"bottom", kBottom, {0, 60}},
        {"bottom inwards", kBottom, {20, -40}},
        {"top", kTop, {0, -60}},
        {"top inwards", kTop, {-20, 40}},
        {"lower right", kRight + kBottom, {150, 40}},
        {"lower right inwards", kRight + kBottom, {-70, -20}},
        {"lower left", kLeft + kBottom, {-40, 120}},
        {"lower left inwards", kLeft + kBottom, {20, -40}},
        {"upper right", kRight + kTop, {40, -120}},
        {"upper right inwards", kRight + kTop, {-70, 20}},
        {"upper left", kLeft + kTop, {-150, -40}},
        {"upper left inwards", kLeft + kTop, {20, 40}},
    };
    for (const Case &c : cases) {
      SCOPED_TRACE(c.name);
      place(layout);
      const QRect before = frame();
      const QSizeF size = before.size();
      drag(c.side, c.way);
      const double wider = 1.0 + c.side.x() * c.way.x() / size.width();
      const double higher = 1.0 + c.side.y() * c.way.y() / size.height();
      const double zoom = c.side.x() == 0   ? higher
                          : c.side.y() == 0 ? wider
                                            : std::min(wider, higher);
      expectFrame(before, c.side, size * zoom, size);
    }
  }

  void collapse() const {
    program.click("mDisclosureButton");
    expectContent(kCollapsedLayout);
  }

  // How many controls can be seen. None of them reaches out of the window.
  int countControls() const {
    const QRect whole = windows.content(window);
    int count = 0;
    for (const Accessible &control : program.controls()) {
      if (!control.is(AccessibleState::kShowing))
        continue;
      ++count;
      EXPECT_TRUE(whole.contains(control.extents())) << control.name();
    }
    return count;
  }

  QSizeF smallest;
};

TEST_F(OrvaneResizeTest, APlainDragKeepsTheProportionsOfTheFullLayout) {
  expectPlainDragsKeepProportions(kFullLayout);
}

TEST_F(OrvaneResizeTest, APlainDragKeepsTheProportionsOfTheCollapsedLayout) {
  collapse();
  expectPlainDragsKeepProportions(kCollapsedLayout);
  place(kCollapsedLayout);
  drag(kRight + kBottom, {200, 200});
  settledFrame();
  EXPECT_TRUE(screen.save("resize-collapsed"));
}

TEST_F(OrvaneResizeTest, WithShiftADragIsFree) {
  for (const QPoint &side : {kRight, kTop, kLeft + kBottom}) {
    place(kFullLayout);
    const QRect before = frame();
    input.hold("Shift");
    drag(side, {90, -30});
    settledFrame();
    input.letGo("Shift");
    const QRect after = settledFrame();
    EXPECT_NEAR(after.width(), before.width() + 90 * side.x(), 1);
    EXPECT_NEAR(after.height(), before.height() - 30 * side.y(), 1);
  }
}

TEST_F(OrvaneResizeTest, WithAltTheHeightChoosesAWholeMultipleOfTheLayoutShown) {
  struct Case {
    QSize layout;
    int way;
    int multiple;
  };
  const int higher = static_cast<int>(0.8 * smallest.height());
  const int lower = static_cast<int>(-0.3 * smallest.height());
  for (const Case &c :
       {Case{kFullLayout, higher, 2}, Case{kFullLayout, lower, 1}, Case{kCollapsedLayout, 170, 2},
        Case{kCollapsedLayout, -60, 1}, Case{kCollapsedLayout, 420, 3}}) {
    SCOPED_TRACE(c.way);
    if (c.layout == kCollapsedLayout && content().height() >= kFullLayout.height())
      collapse();
    place(c.layout, {100, 100});
    const QRect before = frame();
    input.hold("Alt");
    drag(kRight + kBottom, {30, c.way});
    input.letGo("Alt");
    expectFrame(before, kRight + kBottom, QSizeF(before.size()) * c.multiple, before.size());
  }
}

TEST_F(OrvaneResizeTest, AKeyCountsAsItWasWhenTheButtonWasLastDown) {
  place(kFullLayout);
  QRect before = frame();
  input.hold("Shift");
  pull(kRight + kBottom, {120, 10});
  settledFrame();
  input.release();
  input.letGo("Shift");
  EXPECT_EQ(settledFrame().size(), before.size() + QSize(120, 10));

  place(kFullLayout);
  before = frame();
  pull(kRight + kBottom, {120, 20});
  settledFrame();
  input.release();
  input.hold("Shift");
  expectFrame(before, kRight + kBottom, smallest * (1.0 + 20 / smallest.height()), smallest);
  input.letGo("Shift");
}

TEST_F(OrvaneResizeTest, ADraggedSideTakesTheHeightAlongWithoutFlicker) {
  place(kFullLayout);
  const QRect before = frame();
  EXPECT_FALSE(windows.hasAspect(window));
  SizeLog log(desktop, window);
  const QPoint from = grab(kRight);
  // The proportions are known once the drag is; from then on the height keeps up with the pointer.
  EXPECT_TRUE(eventually([&] { return windows.hasAspect(window); }, kPatience));
  std::vector<QSize> sizes;
  for (const int direction : {1, -1}) {
    for (int step = 1; step <= 20; ++step) {
      const int way = 10 * (direction > 0 ? step : 20 - step);
      input.moveTo(from + QPoint(way, step));
      const double width = before.width() + way;
      EXPECT_TRUE(eventually(
          [&] {
            const QSize now = frame().size();
            return std::abs(now.width() - width) <= 2.0 &&
                   std::abs(now.height() - width * smallest.height() / smallest.width()) <= 3.0;
          },
          kPatience))
          << frame().width() << "x" << frame().height() << " at " << way;
      EXPECT_EQ(frame().topLeft(), before.topLeft());
    }
    sizes = log.take();
    ASSERT_GE(sizes.size(), 15U);
    for (std::size_t i = 1; i < sizes.size(); ++i) {
      EXPECT_GE(direction * (sizes[i].width() - sizes[i - 1].width()), 0);
      // A pixel is what new proportions make of it.
      EXPECT_GE(direction * (sizes[i].height() - sizes[i - 1].height()), -1);
    }
    EXPECT_TRUE(screen.save(direction > 0 ? "resize-live-wide" : "resize-live-back"));
  }
  input.moveTo(from + QPoint(100, 0));
  input.release();
  expectFrame(before, kRight, smallest * (1.0 + 100 / smallest.width()), smallest);
  EXPECT_FALSE(windows.hasAspect(window));
}

TEST_F(OrvaneResizeTest, ADraggedCornerStaysUnderThePointerUntilItIsLetGo) {
  place(kFullLayout);
  const QRect before = frame();
  SizeLog log(desktop, window);
  const QPoint from = grab(kRight + kBottom);
  for (int step = 1; step <= 20; ++step) {
    const QPoint pointer = from + QPoint(8, 6) * step;
    input.moveTo(pointer);
    EXPECT_TRUE(eventually([&] { return (frame().bottomRight() - pointer).manhattanLength() <= 2; },
                           kPatience))
        << step;
    EXPECT_EQ(frame().topLeft(), before.topLeft());
  }
  const std::vector<QSize> sizes = log.take();
  ASSERT_GE(sizes.size(), 15U);
  for (std::size_t i = 1; i < sizes.size(); ++i) {
    EXPECT_GE(sizes[i].width(), sizes[i - 1].width());
    EXPECT_GE(sizes[i].height(), sizes[i - 1].height());
  }
  input.release();
  expectFrame(before, kRight + kBottom, smallest * (1.0 + 120 / smallest.height()), smallest);
  // The window takes one size after the release, and keeps it.
  EXPECT_LE(log.take().size(), 1U);
}

TEST_F(OrvaneResizeTest, TheWindowManagerIsNotHeldToProportionsWhereTheUserIsNot) {
  place(kFullLayout);
  const QRect before = frame();
  pull(kLeft, {-60, 0});
  EXPECT_TRUE(eventually([&] { return windows.hasAspect(window); }, kPatience));
  for (const char *key : {"Shift", "Alt"}) {
    input.hold(key);
    EXPECT_TRUE(eventually([&] { return !windows.hasAspect(window); }, kPatience)) << key;
    input.letGo(key);
    EXPECT_TRUE(eventually([&] { return windows.hasAspect(window); }, kPatience)) << key;
  }
  input.release();
  expectFrame(before, kLeft, smallest * (1.0 + 60 / smallest.width()), smallest);
  EXPECT_FALSE(windows.hasAspect(window));

  for (const QPoint &side : {kTop, kRight + kBottom}) {
    pull(side, {30, 30});
    settledFrame();
    EXPECT_FALSE(windows.hasAspect(window));
    input.release();
    settledFrame();
  }
}

TEST_F(OrvaneResizeTest, AWindowThatAnotherProgramMovedStaysThereWhenItIsDragged) {
  for (const QPoint &corner : {QPoint(300, 200), QPoint(620, 330)}) {
    place(kFullLayout, corner);
    const QRect before = settledFrame();
    drag(kRight + kBottom, {80, 30});
    expectFrame(before, kRight + kBottom, smallest * (1.0 + 30 / smallest.height()), smallest);
  }
}

TEST_F(OrvaneResizeTest, AMaximisedWindowShowsAllOfEitherLayoutAndKeepsItsPlaceForLater) {
  place(kFullLayout);
  const QPoint corner = frame().topLeft();
  const int all = countControls();
  ASSERT_GT(all, 20);
  // As a person does it.
  const QPoint title = corner + QPoint(200, 8);
  input.click(title);
  input.click(title);
  ASSERT_TRUE(eventually([&] { return windows.isMaximized(window); }, kPatience));
  const auto isWide = [&](const char *control, double width) {
    return eventually([&] { return program.place(control).width() >= width; }, kPatience);
  };
  // By the height.
  const int available = windows.content(window).height() - menuHeight;
  ASSERT_GT(available, 1200);
  const double popUpWidth = 1.0 * kPopUpWidth * available / kFullLayout.height() - 2;
  // By the width, but for the window's frame; by the height it would be 61 pixels wide at most.
  const double buttonWidth = 24.0 * 1590 / kCollapsedLayout.width() - 2;
  EXPECT_TRUE(isWide("mTuningPopUpButton", popUpWidth));
  EXPECT_EQ(countControls(), all);
  EXPECT_TRUE(screen.save("resize-maximised-full"));
  EXPECT_FALSE(windows.hasAspect(window));
  program.enter("mReferencePitchText", "441");
  expectText(program, "mReferencePitchText", "441");

  const QRect whole = frame();
  program.click("mDisclosureButton");
  EXPECT_TRUE(isWide("mDisclosureButton", buttonWidth));
  EXPECT_TRUE(windows.isMaximized(window));
  EXPECT_EQ(frame(), whole);
  EXPECT_TRUE(screen.save("resize-maximised-collapsed"));

  windows.maximize(window, false);
  expectContent(kCollapsedLayout);
  EXPECT_EQ(frame().topLeft(), corner);
  EXPECT_TRUE(screen.save("resize-restored-collapsed"));
  windows.maximize(window);
  ASSERT_TRUE(eventually([&] { return windows.isMaximized(window); }, kPatience));
  EXPECT_TRUE(isWide("mDisclosureButton", buttonWidth));
  program.click("mDisclosureButton");
  EXPECT_TRUE(isWide("mTuningPopUpButton", popUpWidth));
  windows.maximize(window, false);
  expectContent(kFullLayout);
  EXPECT_EQ(frame().topLeft(), corner);
}

TEST_F(OrvaneResizeTest, AFreeShapeIsThereAgainAfterMaximising) {
  const QSize shape(500, 300);
  windows.moveResize(window, {500, 400}, shape + QSize(0, menuHeight));
  expectContent(shape);
  const QRect before = frame();
  windows.maximize(window);
  ASSERT_TRUE(eventually([&] { return windows.isMaximized(window); }, kPatience));
  windows.maximize(window, false);
  expectContent(shape);
  EXPECT_EQ(settledFrame(), before);
}

TEST_F(OrvaneResizeTest, DetailsShownLowOnTheScreenHaveTheirFullHeight) {
  collapse();
  windows.moveResize(window, {500, 1000}, kCollapsedLayout + QSize(0, menuHeight));
  ASSERT_TRUE(eventually([&] { return frame().y() == 1000; }, kPatience));
  program.click("mDisclosureButton");
  expectContent(kFullLayout);
  EXPECT_TRUE(screen.save("resize-low"));
  // A window manager may move it up to where all of it can be seen.
  EXPECT_LE(frame().y(), 1000);
  program.click("mDisclosureButton");
  expectContent(kCollapsedLayout);
}

}  // namespace
}  // namespace orvane::test
