// Not tests: the pictures of the program for its documents, made by
// "cmake --build build --target screenshots" into docs/screenshots.
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <optional>

#include "tests/WindowLayouts.h"
#include "tests/desktop/OrvaneRig.h"
#include "tests/desktop/Portal.h"

namespace orvane::test {
namespace {

using namespace std::chrono_literals;

constexpr const char *kMicrophone = "Studio Microphone";
constexpr const char *kLongTitle =
    "Eight-channel recording interface of the choir organ, console microphones left and right";
constexpr const char *kLongTemperament = "Neidhardt Small Town (1732)";

class Screenshots : public DesktopTest {
 protected:
  Screenshots() : DesktopTest(QSize(1400, 1200)) {}

  void SetUp() override {
    ASSERT_TRUE(server.start());
    load("Mic", kMicrophone);
    instrument.emplace(server.pipeOf("Mic"));
    // So that the keyboard's ring is on no control.
    input.moveTo({1399, 1199});
  }

  void load(const std::string &name, const std::string &title) {
    const std::string properties = "device.vendor.name=Velmora device.description=\"" + title + '"';
    ASSERT_FALSE(server.loadSource(name, 48000, 1, properties).empty());
  }

  void open() {
    program.emplace(desktop, tree);
    ASSERT_TRUE(program->opens()) << program->standardError();
    window = windows.find(kMainWindow);
  }

  void play(double hertz, const std::string &note, const std::string &cents,
            double loudness = 1.0) {
    instrument->play(hertz, loudness);
    const auto isShown = [&] {
      return program->note() == note && program->text("mCentText") == cents;
    };
    // The level, too, has settled then.
    EXPECT_TRUE(eventually([&] { return isShown(); }, kPatience));
    std::this_thread::sleep_for(2s);
    EXPECT_TRUE(eventually([&] { return isShown(); }, kPatience)) << program->text("mCentText");
  }

  void zoom(double factor) const {
    const int menu =
        windows.content(window).height() -
        qRound(1.0 * kFullLayout.height() * windows.content(window).width() / kFullLayout.width());
    windows.moveResize(window, {0, 0}, (QSizeF(kFullLayout) * factor).toSize() + QSize(0, menu));
    EXPECT_TRUE(eventually(
        [&] { return windows.content(window).width() == qRound(kFullLayout.width() * factor); }));
  }

  // At its original size.
  void disclose(bool isDisclosed) const {
    const int before = windows.frame(window).height();
    const int details = kFullLayout.height() - kCollapsedLayout.height();
    program->click("mDisclosureButton");
    EXPECT_TRUE(eventually([&] {
      return windows.frame(window).height() == before + (isDisclosed ? details : -details);
    }));
  }

  // The window with its frame, and with the keyboard.
  void keep(const std::string &name, const std::string &title = kMainWindow) const {
    const WindowId shown = windows.find(title);
    ASSERT_NE(shown, 0U) << title;
    windows.activate(shown);
    EXPECT_TRUE(eventually([&] { return windows.active() == shown; }));
    std::this_thread::sleep_for(500ms);
    EXPECT_TRUE(screen.save(name, windows.frame(shown)));
  }

  PrivateServer server{PrivateServer::Kind::kPulseAudio};
  std::optional<Instrument> instrument;
  std::optional<OrvaneProgram> program;
  WindowId window = 0;
};

TEST_F(Screenshots, Readings) {
  open();
  keep("start");
  play(440.0, "A4", "±0");
  keep("in-tune");
  keep("needle-in-tune", kMeterWindow);
  play(443.12, "A4", "+12");
  keep("sharp");
  play(228.0, "B♭3", "-38");
  keep("flat");
  keep("needle-flat", kMeterWindow);
  instrument->rest();
  EXPECT_TRUE(eventually([&] { return lamp(*program, "mNatural") == Light::kGray; }));
  std::this_thread::sleep_for(3s);
  keep("silence");
}

TEST_F(Screenshots, FullScale) {
  open();
  play(369.99, "F♯4", "±0", 3.0);
  keep("full-scale");
}

TEST_F(Screenshots, Sizes) {
  open();
  play(443.12, "A4", "+12");
  disclose(false);
  keep("collapsed");
  disclose(true);
  zoom(0.75);
  keep("zoom-75");
  zoom(2.0);
  keep("zoom-200");
}

TEST_F(Screenshots, LongNames) {
  load("Long", kLongTitle);
  open();
  ASSERT_TRUE(program->choose("mInputDevicePopUpButton", std::string("Velmora : ") + kLongTitle));
  ASSERT_TRUE(program->choose("mTuningPopUpButton", kLongTemperament));
  ASSERT_TRUE(program->choose("mTransposePopUpButton", "-9 (E♭ alto saxophone)"));
  keep("long-names");
}

TEST_F(Screenshots, Dark) {
  const Portal portal(desktop.sessionBus(), Portal::kDark);
  open();
  play(443.12, "A4", "+12");
  keep("dark");
  keep("dark-needle", kMeterWindow);
  disclose(false);
  keep("dark-collapsed");
}

TEST_F(Screenshots, Panels) {
  open();
  ASSERT_TRUE(program->chooseMenu("Help", "Orvane Help"));
  EXPECT_TRUE(eventually([&] { return windows.find("Orvane Help") != 0; }));
  keep("help", "Orvane Help");
  windows.close(windows.find("Orvane Help"));
  EXPECT_TRUE(eventually([&] { return windows.find("Orvane Help") == 0; }));
  windows.activate(window);
  EXPECT_TRUE(eventually([&] { return windows.active() == window; }));
  ASSERT_TRUE(program->chooseMenu("Orvane", "About Orvane"));
  EXPECT_TRUE(eventually([&] { return windows.find("About Orvane") != 0; }));
  keep("about", "About Orvane");
}

}  // namespace
}  // namespace orvane::test
