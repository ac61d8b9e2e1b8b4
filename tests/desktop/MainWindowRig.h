// What the tests of the main window's sizes share: the program on a recording, since none of it is
// about sound.
#pragma once

#include "tests/WindowLayouts.h"
#include "tests/desktop/OrvaneRig.h"

namespace orvane::test {

class MainWindowTest : public DesktopTest {
 protected:
  MainWindowTest() : MainWindowTest(QSize(1280, 1024)) {}
  explicit MainWindowTest(const QSize &screenSize,
                          const std::string &recording = ORVANE_RESOURCES_DIR "/Recording.flac")
      : DesktopTest(screenSize), program(desktop, tree, {"--input", recording}) {}

  void SetUp() override {
    ASSERT_TRUE(program.opens()) << program.standardError();
    window = windows.find(kMainWindow);
    // The menu bar, which is no part of the layouts.
    menuHeight = program.application()
                     .findNamed(kMainWindow, "frame")
                     .find([](const Accessible &object) { return object.role() == "menu bar"; })
                     .extents()
                     .height();
  }

  QRect frame() const { return windows.frame(window); }
  QSize content() const { return windows.content(window).size() - QSize(0, menuHeight); }

  void expectContent(const QSize &expected) const {
    EXPECT_TRUE(eventually([&] { return content() == expected; }, kPatience))
        << content().width() << "x" << content().height() << ", not " << expected.width() << "x"
        << expected.height();
  }

  OrvaneProgram program;
  WindowId window = 0;
  int menuHeight = 0;
};

}  // namespace orvane::test
