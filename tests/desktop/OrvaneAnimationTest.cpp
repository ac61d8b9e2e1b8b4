// What is to be seen while the details of the main window come and go, and what a person and other
// programs may do meanwhile.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "tests/cli/TestFiles.h"
#include "tests/desktop/MainWindowRig.h"

namespace orvane::test {
namespace {

// A tone whose readings stand still.
class SteadyTone : public TestFolder {
 protected:
  const std::string sound = writeSound("A4.wav", sine(440.0, 48000, 1.0), 48000);
};

class OrvaneAnimationTest : private SteadyTone, public MainWindowTest {
 protected:
  // Room for the window at twice its size.
  OrvaneAnimationTest() : MainWindowTest(QSize(1200, 1200), sound) {}

  QSize whole(const QSize &layout) const { return layout + QSize(0, menuHeight); }

  // Clicks the triangle, and gives the sizes that the window has until it has the expected one.
  std::vector<QSize> switchTo(const QSize &layout) const {
    SizeLog log(desktop, window);
    program.click("mDisclosureButton");
    expectContent(layout);
    return log.take();
  }

  // Clicks the triangle, and returns once the window is on its way.
  void startSwitch() const {
    const QSize before = content();
    program.click("mDisclosureButton");
    EXPECT_TRUE(eventually([&] { return content() != before; }, kPatience));
  }

  void expectRest(const QSize &layout, const QPoint &corner) const {
    expectContent(layout);
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_EQ(content(), layout);
    EXPECT_EQ(frame().topLeft(), corner);
  }
};

TEST_F(OrvaneAnimationTest, TheHeightChangesGraduallyAndNeverBack) {
  std::size_t most = 0;
  for (const bool isDouble : {false, true}) {
    const int factor = isDouble ? 2 : 1;
    windows.moveResize(window, {0, 0}, whole(factor * kFullLayout));
    expectContent(factor * kFullLayout);
    for (const bool isFull : {false, true}) {
      const std::vector<QSize> sizes = switchTo(factor * (isFull ? kFullLayout : kCollapsedLayout));
      most = std::max(most, sizes.size());
      for (std::size_t i = 1; i < sizes.size(); ++i) {
        EXPECT_EQ(sizes[i].width(), factor * kFullLayout.width());
        EXPECT_EQ(sizes[i].height() > sizes[i - 1].height(), isFull);
      }
      EXPECT_EQ(frame().topLeft(), QPoint(0, 0));
    }
  }
  // A busy machine can miss the way, but not every time.
  EXPECT_GE(most, 3U);
}

TEST_F(OrvaneAnimationTest, TheDetailsAppearOnTheWindowsColourAndNothingElseMoves) {
  const QRect place = windows.content(window);
  const int upper = menuHeight + kCollapsedLayout.height();
  const QRect still(
      place.topLeft() + QPoint(0, menuHeight),
      QSize(place.width(), program.place("mDisclosureButton").top() - place.top() - menuHeight));
  expectNote(program, "A4");
  switchTo(kCollapsedLayout);
  std::this_thread::sleep_for(std::chrono::seconds(2));
  const QImage before = screen.image(still);
  const QColor background = screen.pixel(place.topLeft() + QPoint(2, upper - 3));
  startSwitch();
  do {
    // The window may grow between the two; what it has grown by is not looked at.
    const QRect now = windows.content(window);
    const QImage image = screen.image({place.topLeft(), now.size()});
    ASSERT_TRUE(image.copy(QRect(still.topLeft() - place.topLeft(), still.size())) == before)
        << screen.save("animation-moved");
    // At the edges there is nothing but the background.
    for (int y = upper; y < image.height(); ++y) {
      ASSERT_EQ(image.pixelColor(2, y), background) << y;
      ASSERT_EQ(image.pixelColor(image.width() - 3, y), background) << y;
    }
  } while (content() != kFullLayout);
  EXPECT_TRUE(screen.save("animation-end"));
}

TEST_F(OrvaneAnimationTest, ThePitchFieldHasTheKeyboardFromTheStart) {
  switchTo(kCollapsedLayout);
  program.click("mDisclosureButton");
  input.key("Ctrl+a");
  input.type("443");
  input.key("Return");
  expectContent(kFullLayout);
  expectText(program, "mReferencePitchText", "443");
}

TEST_F(OrvaneAnimationTest, ASecondClickTurnsItBack) {
  const QPoint corner = frame().topLeft();
  startSwitch();
  program.click("mDisclosureButton");
  expectRest(kFullLayout, corner);
  startSwitch();
  expectRest(kCollapsedLayout, corner);
}

TEST_F(OrvaneAnimationTest, ASizeFromAnotherProgramIsTheLast) {
  const QSize other(500, 400);
  bool isLast = false;
  // The desktop may take a size that the program asked for before it heard of this one.
  for (int attempt = 0; attempt < 4 && !isLast; ++attempt) {
    startSwitch();
    windows.moveResize(window, {300, 200}, whole(other));
    std::this_thread::sleep_for(std::chrono::seconds(1));
    isLast = content() == other;
    EXPECT_EQ(frame().topLeft(), QPoint(300, 200));
  }
  EXPECT_TRUE(isLast) << content().width() << "x" << content().height();
}

TEST_F(OrvaneAnimationTest, AWindowMaximisedOrMinimisedMeanwhileComesBackWithItsLayout) {
  const QPoint corner = frame().topLeft();
  startSwitch();
  windows.maximize(window);
  EXPECT_TRUE(eventually([&] { return windows.isMaximized(window); }, kPatience));
  // The program has seen it, too.
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  windows.maximize(window, false);
  expectRest(kCollapsedLayout, corner);

  startSwitch();
  windows.minimize(window);
  EXPECT_TRUE(eventually([&] { return windows.isMinimized(window); }, kPatience));
  windows.activate(window);
  expectRest(kFullLayout, corner);
}

TEST_F(OrvaneAnimationTest, AWindowThatIsDraggedMeanwhileStaysUnderTheHand) {
  const QPoint corner = frame().topLeft();
  const QPoint title = corner + QPoint(kFullLayout.width() / 2, 8);
  startSwitch();
  input.drag(title, title + QPoint(150, 90));
  EXPECT_TRUE(eventually([&] { return frame().topLeft() != corner; }, kPatience));
  expectContent(kCollapsedLayout);
  EXPECT_LE((frame().topLeft() - corner - QPoint(150, 90)).manhattanLength(), 4);
}

}  // namespace
}  // namespace orvane::test
