// The two layouts of the main window, its zoom, and what a person's drags at its edges make of it.
#include <gtest/gtest.h>

#include <thread>

#include "tests/desktop/MainWindowRig.h"

namespace orvane::test {
namespace {

class OrvaneWindowTest : public MainWindowTest {
 protected:
  // The corner opposite the dragged one stays. Within what the frame's whole pixels and a pixel of
  // the pointer's way make of it.
  void expectFrame(const QSizeF &expected) const {
    const auto isClose = [&] {
      return frame().topLeft() == QPoint(0, 0) &&
             std::abs(frame().width() - expected.width()) <= 2.0 &&
             std::abs(frame().height() - expected.height()) <= 2.0;
    };
    EXPECT_TRUE(eventually(isClose, kPatience))
        << frame().width() << "x" << frame().height() << ", not " << expected.width() << "x"
        << expected.height() << ", at " << frame().x() << "," << frame().y();
  }

  void dragCorner(int dx, int dy) const {
    const QPoint corner = frame().bottomRight();
    input.drag(corner, corner + QPoint(dx, dy));
  }
};

TEST_F(OrvaneWindowTest, BothWindowsHaveTheIconInTheSizesThatDesktopsAskFor) {
  const std::vector<unsigned long> widths = {16, 24, 32, 48, 64, 128, 256};
  for (const WindowId each : {window, windows.find(kMeterWindow)}) {
    ASSERT_NE(each, 0U);
    EXPECT_TRUE(eventually([&] { return windows.iconWidths(each) == widths; }, kPatience))
        << windows.title(each) << ": " << windows.iconWidths(each).size();
  }
}

TEST_F(OrvaneWindowTest, TheDisclosureTriangleShowsAndHidesTheDetailsAtEveryZoom) {
  expectContent(kFullLayout);
  const QPoint corner = frame().topLeft();
  EXPECT_TRUE(screen.save("layout-full"));
  program.click("mDisclosureButton");
  expectContent(kCollapsedLayout);
  EXPECT_EQ(frame().topLeft(), corner);
  EXPECT_FALSE(program.object("mReferencePitchText").is(AccessibleState::kFocused));
  EXPECT_TRUE(screen.save("layout-collapsed"));
  program.click("mDisclosureButton");
  expectContent(kFullLayout);
  EXPECT_EQ(frame().topLeft(), corner);
  EXPECT_TRUE(program.object("mReferencePitchText").is(AccessibleState::kFocused));

  // What is not dragged by the user's hand is left as it is.
  windows.moveResize(window, {0, 0},
                     {2 * kFullLayout.width(), 2 * kFullLayout.height() + menuHeight});
  expectContent(2 * kFullLayout);
  EXPECT_TRUE(eventually([&] { return !program.text("mNoteText").empty(); }, kPatience));
  EXPECT_TRUE(screen.save("layout-full-double"));
  program.click("mDisclosureButton");
  expectContent(2 * kCollapsedLayout);
  EXPECT_TRUE(screen.save("layout-collapsed-double"));
  program.click("mDisclosureButton");
  expectContent(2 * kFullLayout);
  program.enter("mReferencePitchText", "442");
  expectText(program, "mReferencePitchText", "442");
  ASSERT_TRUE(program.choose("mTuningPopUpButton", "Just intonation (Ellis duodene)"));
  expectTitle(program, "mTuningPopUpButton", "Just intonation (Ellis duodene)");
}

TEST_F(OrvaneWindowTest, ADragAtTheFrameKeepsTheProportionsUnlessAKeySaysOtherwise) {
  const QPoint title = frame().topLeft() + QPoint(kFullLayout.width() / 2, 8);
  input.drag(title, {kFullLayout.width() / 2, 8});
  ASSERT_TRUE(eventually([&] { return frame().topLeft() == QPoint(0, 0); }));
  const QSizeF smallest = frame().size();

  // The smaller of the two factors counts.
  dragCorner(200, 50);
  expectFrame(smallest * ((smallest.height() + 50) / smallest.height()));
  EXPECT_TRUE(screen.save("layout-dragged"));

  const QSizeF before = frame().size();
  input.hold("Shift");
  dragCorner(60, -20);
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  input.letGo("Shift");
  expectFrame(before + QSizeF(60, -20));
  EXPECT_TRUE(screen.save("layout-dragged-freely"));

  // 1.8 times the smallest height is nearer to twice than to once.
  const int tall = static_cast<int>(1.8 * smallest.height()) - frame().height();
  input.hold("Alt");
  dragCorner(0, tall);
  expectFrame(2.0 * smallest);
  input.letGo("Alt");
}

TEST_F(OrvaneWindowTest, WindowsAreClosedAndBroughtBackFromTheMenu) {
  const WindowId meter = windows.find(kMeterWindow);
  ASSERT_NE(meter, 0U);
  EXPECT_EQ(windows.active(), window);
  ASSERT_TRUE(program.chooseMenu("Window", "Needle Meter"));
  EXPECT_TRUE(eventually([&] { return windows.active() == meter; }));
  EXPECT_TRUE(screen.save("needle-meter"));
  input.key("Ctrl+w");
  EXPECT_TRUE(eventually([&] { return windows.find(kMeterWindow) == 0; }));
  EXPECT_TRUE(eventually([&] { return windows.active() == window; }));
  input.key("Ctrl+2");
  EXPECT_TRUE(eventually([&] { return windows.find(kMeterWindow) != 0; }));
  windows.close(window);
  EXPECT_TRUE(eventually([&] { return windows.find(kMainWindow) == 0; }));
  windows.activate(windows.find(kMeterWindow));
  input.key("Ctrl+1");
  EXPECT_TRUE(eventually([&] { return windows.find(kMainWindow) != 0; }));
}

}  // namespace
}  // namespace orvane::test
