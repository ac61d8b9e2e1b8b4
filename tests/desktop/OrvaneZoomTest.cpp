// The controls where they are drawn, at every zoom, and the layouts on a screen too small for them.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include "tests/WindowLayouts.h"
#include "tests/desktop/OrvaneRig.h"

namespace orvane::test {
namespace {

int menuHeightOf(const OrvaneProgram &program) {
  return program.application()
      .findNamed(kMainWindow, "frame")
      .find([](const Accessible &object) { return object.role() == "menu bar"; })
      .extents()
      .height();
}

class OrvaneZoomTest : public DesktopTest {
 protected:
  // Room for three times the window.
  OrvaneZoomTest() : DesktopTest(QSize(1400, 1600)) {}

  void SetUp() override {
    ASSERT_TRUE(server.start());
    ASSERT_FALSE(server.loadSource("Mic").empty());
  }

  void expectValue(const OrvaneProgram &program, const std::string &control, double expected,
                   double tolerance) const {
    EXPECT_TRUE(eventually(
        [&] {
          const auto value = program.value(control);
          return value && std::abs(*value - expected) <= tolerance;
        },
        kPatience))
        << control << " is at " << program.value(control).value_or(-1.0) << ", not " << expected;
  }

  PrivateServer server{PrivateServer::Kind::kPulseAudio};
};

TEST_F(OrvaneZoomTest, EveryControlWorksByMouseAndKeyboardWhereItIsDrawn) {
  OrvaneProgram program(desktop, tree);
  ASSERT_TRUE(program.opens()) << program.standardError();
  const WindowId window = windows.find(kMainWindow);
  const int menuHeight = menuHeightOf(program);
  int pitch = 430;
  for (const double zoom : {0.75, 1.0, 1.5, 2.0, 3.0}) {
    SCOPED_TRACE(zoom);
    const QSize content = (QSizeF(kFullLayout) * zoom).toSize();
    windows.moveResize(window, {0, 0}, content + QSize(0, menuHeight));
    // A control of the last row is where the zoom puts it.
    ASSERT_TRUE(eventually(
        [&] {
          return std::abs(program.place("mTuningPopUpButton").width() - kPopUpWidth * zoom) <=
                     2.0 &&
                 program.place("mInputVolumeSlider").bottom() < windows.content(window).bottom();
        },
        kPatience));

    ++pitch;
    program.enter("mReferencePitchText", std::to_string(pitch));
    expectText(program, "mReferencePitchText", std::to_string(pitch));
    const QRect stepper = program.place("mReferencePitchStepper");
    input.click({stepper.center().x(), stepper.top() + stepper.height() / 4});
    expectText(program, "mReferencePitchText", std::to_string(pitch + 1));
    input.click({stepper.center().x(), stepper.bottom() - stepper.height() / 4});
    expectText(program, "mReferencePitchText", std::to_string(pitch));
    input.key("Up");
    expectText(program, "mReferencePitchText", std::to_string(pitch + 1));

    ASSERT_TRUE(program.choose("mTuningPopUpButton", "Kellner (1977)"));
    expectTitle(program, "mTuningPopUpButton", "Kellner (1977)");
    input.key("Down");
    expectTitle(program, "mTuningPopUpButton", "Kirnberger I (1766)");

    // The knob's centre goes from 7 units within the right end to the same within the left.
    const QRect slider = program.place("mInputVolumeSlider");
    program.click("mInputVolumeSlider");
    input.key("End");
    expectValue(program, "mInputVolumeSlider", 100.0, 0.0);
    const int knob = static_cast<int>(std::lround(7 * zoom));
    const int middle = slider.center().y();
    input.drag({slider.right() - knob, middle}, {slider.center().x(), middle});
    expectValue(program, "mInputVolumeSlider", 50.0, 4.0);
    input.key("Home");
    expectValue(program, "mInputVolumeSlider", 0.0, 0.0);

    EXPECT_TRUE(screen.save("zoom-" + std::to_string(std::lround(100 * zoom))));
    const int height = windows.frame(window).height();
    program.click("mDisclosureButton");
    EXPECT_TRUE(eventually([&] { return windows.frame(window).height() < height / 2 + 60; }));
    input.key("Tab");
    program.click("mDisclosureButton");
    EXPECT_TRUE(eventually([&] { return windows.frame(window).height() == height; }, kPatience));
  }
}

class OrvaneSmallScreenTest : public DesktopTest {
 protected:
  OrvaneSmallScreenTest() : DesktopTest(QSize(640, 480)) {}
};

TEST_F(OrvaneSmallScreenTest, DetailsThatAreTooTallAreCutToTheScreenAndNarrowedInProportion) {
  const std::filesystem::path folder = desktop.configurationFolder() / "velmora";
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "Orvane.ini") << "[General]\nDisclosedKey=false\n"
                                       << "org.velmora.TunerMeterKey=false\n";
  OrvaneProgram program(desktop, tree, {"--input", ORVANE_RESOURCES_DIR "/Recording.flac"});
  ASSERT_TRUE(program.opens()) << program.standardError();
  const WindowId window = windows.find(kMainWindow);
  const QSize collapsed = windows.frame(window).size();
  const QPoint corner = windows.frame(window).topLeft();
  EXPECT_EQ(windows.content(window).size() - QSize(0, menuHeightOf(program)), kCollapsedLayout);
  EXPECT_TRUE(screen.save("small-screen-collapsed"));

  const int full = collapsed.height() + (kFullLayout - kCollapsedLayout).height();
  ASSERT_GT(full, 480);
  program.click("mDisclosureButton");
  EXPECT_TRUE(eventually([&] { return windows.frame(window).height() == 480; }, kPatience))
      << windows.frame(window).height();
  EXPECT_EQ(windows.frame(window).width(), collapsed.width() * 480 / full);
  EXPECT_EQ(windows.frame(window).topLeft(), corner);
  EXPECT_TRUE(screen.save("small-screen-full"));
}

}  // namespace
}  // namespace orvane::test
