// The two layouts of the main window where it has not the size they ask for: on a screen too small,
// at a drag, maximised.
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QMenuBar>

#include "tests/WindowLayouts.h"
#include "tests/app/ControllerRig.h"

namespace orvane::test {
namespace {

// The tests' screen is 800 by 800, without panels.
class ControllerLayoutTest : public testing::Test {
 protected:
  void showLayout(bool isFull) {
    tuner.mDisclosureButton->setState(isFull ? 1 : 0);
    tuner.disclose();
    QApplication::processEvents();
  }
  void becomes(Qt::WindowState state) {
    tuner.mWindow->setWindowState(state);
    QElapsedTimer clock;
    for (clock.start(); clock.elapsed() < 150;)
      QApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 10);
  }
  void setContent(const QRectF &content) {
    tuner.mWindow->setFrame(tuner.mWindow->frameRectForContentRect(content));
    QApplication::processEvents();
  }
  double top() const { return tuner.mWindow->frame().bottom(); }
  // What the menu bar and the decorations add to the content.
  QSizeF around() const { return tuner.mWindow->minSize() - tuner.mWindow->layoutSize(); }

  // The content view is as large as the layout can be below the menu bar, and in its middle.
  void expectLargest(const QSize &layout) const {
    const QRect view = tuner.mContentView->geometry();
    const int bar = tuner.mWindow->menuBar()->height();
    const QSize area = tuner.mWindow->size() - QSize(0, bar);
    EXPECT_EQ(view.top(), bar);
    EXPECT_LE(std::abs(view.left() - (area.width() - view.width() - view.left())), 1);
    EXPECT_LE(view.width(), area.width());
    EXPECT_LE(view.height(), area.height());
    EXPECT_TRUE(view.width() == area.width() || view.height() == area.height());
    EXPECT_NEAR(1.0 * view.height() / view.width(), 1.0 * layout.height() / layout.width(), 0.003);
  }

  ControllerRig rig;
  Controller &tuner = rig.launch();
};

TEST_F(ControllerLayoutTest, TheAspectRatioIsThatOfTheContentBeforeTheScreenCutsIt) {
  showLayout(false);
  setContent(QRectF(0, 300, 730, 352));
  const QSizeF around = this->around();
  showLayout(true);
  // 488 · 730/448 = 795.2
  EXPECT_EQ(tuner.mWindow->contentAspectRatio(), QSizeF(730, 795));
  EXPECT_EQ(tuner.mWindow->frame().height(), 800.0);
  EXPECT_EQ(tuner.mWindow->frame().width(),
            std::floor((730 + around.width()) * 800 / (795 + around.height())));
}

TEST_F(ControllerLayoutTest, TheSmallestFrameIsThatOfTheLayoutShown) {
  const QSizeF around = this->around();
  for (const bool isFull : {true, false, true}) {
    showLayout(isFull);
    const QSizeF smallest = QSizeF(isFull ? kFullLayout : kCollapsedLayout) + around;
    EXPECT_EQ(tuner.mWindow->minSize(), smallest) << isFull;
    // The smaller of the factors 2 and 1.5.
    EXPECT_EQ(
        tuner.windowWillResize(*tuner.mWindow, {smallest.width() * 2, smallest.height() * 1.5}),
        smallest * 1.5)
        << isFull;
  }
  EXPECT_EQ(tuner.mWindow->contentMinSize(), QSizeF(kFullLayout));
}

TEST_F(ControllerLayoutTest, AWindowThatStartsCollapsedHasTheSmallestFrameOfThatLayout) {
  showLayout(false);
  Controller &collapsed = rig.launch();
  EXPECT_EQ(collapsed.mWindow->layoutSize(), QSizeF(kCollapsedLayout));
  EXPECT_EQ(collapsed.mWindow->contentMinSize(), QSizeF(kFullLayout));
}

TEST_F(ControllerLayoutTest, AMaximisedWindowShowsEitherLayoutAsLargeAsItCanBe) {
  becomes(Qt::WindowMaximized);
  expectLargest(kFullLayout);
  const QSize whole = tuner.mWindow->size();
  showLayout(false);
  EXPECT_TRUE(tuner.mWindow->isMaximized());
  EXPECT_EQ(tuner.mWindow->size(), whole);
  expectLargest(kCollapsedLayout);
  showLayout(true);
  EXPECT_EQ(tuner.mWindow->size(), whole);
  expectLargest(kFullLayout);
}

TEST_F(ControllerLayoutTest, AWindowMaximisedNoLongerHasTheHeightOfItsLayoutBelowTheSameTop) {
  setContent(QRectF(50, 20, 672, 732));
  const double top = this->top();
  becomes(Qt::WindowMaximized);
  showLayout(false);
  becomes(Qt::WindowNoState);
  // 216 · 672/448
  EXPECT_EQ(tuner.mWindow->contentSize(), QSizeF(672, 324));
  EXPECT_EQ(tuner.mContentView->size(), QSize(672, 324));
  EXPECT_EQ(this->top(), top);
  becomes(Qt::WindowMaximized);
  showLayout(true);
  becomes(Qt::WindowNoState);
  EXPECT_EQ(tuner.mWindow->contentSize(), QSizeF(672, 732));
  EXPECT_EQ(this->top(), top);
}

TEST_F(ControllerLayoutTest, AFreeShapeOutlivesBeingMaximised) {
  setContent(QRectF(50, 100, 500, 300));
  becomes(Qt::WindowMaximized);
  becomes(Qt::WindowNoState);
  EXPECT_EQ(tuner.mWindow->contentSize(), QSizeF(500, 300));
  EXPECT_EQ(tuner.mContentView->size(), QSize(500, 300));
}

}  // namespace
}  // namespace orvane::test
