// What the tests of the main window's sizes share: the program on a recording, since none of it is
// about sound.
#pragma once

#include "tests/desktop/OrvaneRig.h"

namespace orvane::test {

class MainWindowTest : public DesktopTest {
 protected:
  MainWindowTest() = default;
  explicit MainWindowTest(const QSize &screenSize) : DesktopTest(screenSize) {}

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

  static constexpr QSize kFull{420, 444};
  static constexpr QSize kCollapsed{420, 180};

  OrvaneProgram program{desktop, tree, {"--input", ORVANE_RESOURCES_DIR "/Recording.flac"}};
  WindowId window = 0;
  int menuHeight = 0;
};

}  // namespace orvane::test
