// What the end-to-end tests of the window program share: a desktop, a sound server with a
// microphone, and something to play into it.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <numbers>
#include <string>

#include "tests/desktop/AccessibleTree.h"
#include "tests/desktop/Bell.h"
#include "tests/desktop/Desktop.h"
#include "tests/desktop/Input.h"
#include "tests/desktop/OrvaneProgram.h"
#include "tests/desktop/Screen.h"
#include "tests/desktop/Windows.h"
#include "tests/servers/HardwareProbe.h"
#include "tests/servers/PipeFeeder.h"
#include "tests/servers/PrivateServer.h"

namespace orvane::test {

// A steady tone with four partials, the first of which stands out, or silence. Silent at first.
class Instrument {
 public:
  explicit Instrument(const std::string &pipe)
      : mFeeder(
            pipe, [this](std::uint64_t) { return next(); }, kRate) {}

  // A loudness of 3 is more than full scale.
  void play(double hertz, double loudness = 1.0) {
    mLoudness = loudness;
    mHertz = hertz;
  }
  void rest() { mHertz = 0.0; }

 private:
  static constexpr int kRate = 48000;

  // Feeder's thread. Continuous through a change of pitch.
  float next() {
    const double hertz = mHertz;
    if (hertz == 0.0)
      return 0.0F;
    mPhase = std::fmod(mPhase + 2.0 * std::numbers::pi * hertz / kRate, 2.0 * std::numbers::pi);
    return static_cast<float>(mLoudness *
                              (0.3 * std::sin(mPhase) + 0.1 * std::sin(2.0 * mPhase) +
                               0.06 * std::sin(3.0 * mPhase) + 0.03 * std::sin(4.0 * mPhase)));
  }

  std::atomic<double> mHertz{0.0};
  std::atomic<double> mLoudness{1.0};
  double mPhase = 0.0;  // feeder's thread
  PipeFeeder mFeeder;   // the last: it uses the others until it has ended
};

enum class Light { kGray, kRed, kGreen, kBlue, kYellow };

inline std::string nameOf(const testing::TestParamInfo<PrivateServer::Kind> &kind) {
  return PrivateServer::nameOf(kind.param);
}

// A desktop without any sound server of its own.
class DesktopTest : public testing::Test {
 protected:
  DesktopTest() = default;
  explicit DesktopTest(const QSize &screenSize)
      : desktop(screenSize.width(), screenSize.height()) {}

  // The colour that a lamp has in its middle.
  Light lamp(const OrvaneProgram &program, const std::string &name) const {
    const QRect place = program.place(name);
    const QColor color = screen.meanColor(
        {place.center() - QPoint(place.width() / 4, place.height() / 4), place.size() / 2});
    if (color.hsvSaturation() < 60)
      return Light::kGray;
    const int hue = color.hsvHue();
    if (hue < 30 || hue > 330)
      return Light::kRed;
    if (hue < 75)
      return Light::kYellow;
    return hue < 180 ? Light::kGreen : Light::kBlue;
  }

  void expectText(const OrvaneProgram &program, const std::string &field,
                  const std::string &expected) const {
    EXPECT_TRUE(eventually([&] { return program.text(field) == expected; }, kPatience))
        << field << " shows " << program.text(field) << ", not " << expected;
  }

  void expectNote(const OrvaneProgram &program, const std::string &expected) const {
    EXPECT_TRUE(eventually([&] { return program.note() == expected; }, kPatience))
        << program.note() << " is shown, not " << expected;
  }

  void expectTitle(const OrvaneProgram &program, const std::string &popUp,
                   const std::string &expected) const {
    EXPECT_TRUE(eventually([&] { return program.title(popUp) == expected; }, kPatience))
        << popUp << " shows " << program.title(popUp) << ", not " << expected;
  }

  // A server under load wanders from its pace, and with it the pitch, for some seconds.
  static constexpr std::chrono::seconds kPatience{10};

  Desktop desktop;
  AccessibleTree tree{desktop};
  Screen screen{desktop};
  Input input{desktop};
  Windows windows{desktop};
  Bell bell{desktop};
};

// On a server of each kind, with the source "Mic".
class OrvaneTest : public DesktopTest, public testing::WithParamInterface<PrivateServer::Kind> {
 protected:
  void SetUp() override {
    ASSERT_TRUE(server.start());
    ASSERT_TRUE(loadSource("Mic"));
  }

  bool loadSource(const std::string &name) {
    return !server.loadSource(name, 48000, 1, "device.description=" + name).empty();
  }

  // A picture of the screen as it is now, to be looked at.
  void keepPicture(const std::string &name) const {
    EXPECT_TRUE(screen.save(PrivateServer::nameOf(GetParam()) + "-" + name));
  }

  PrivateServer server{GetParam()};
  Instrument mic{server.pipeOf("Mic")};
};

}  // namespace orvane::test
