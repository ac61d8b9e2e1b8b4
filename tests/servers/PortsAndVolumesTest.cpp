// Volume, mute, ports and jacks that change at the server while the tuner's window is open: both
// come to show the same, from whichever side it was changed. A long run says how many changes.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <numbers>

#include "audio/PulseAudioHardware.h"
#include "tests/long/LongRun.h"
#include "tests/realtime/Storm.h"
#include "tests/realtime/WatchedTuner.h"
#include "tests/servers/HardwareProbe.h"
#include "tests/servers/PipeFeeder.h"
#include "tests/servers/PrivateServer.h"

namespace orvane::test {
namespace {

using Clock = std::chrono::steady_clock;
using Kind = PrivateServer::Kind;
using std::chrono::milliseconds;

// What the tuner promises: the window and the server do not differ for longer.
constexpr milliseconds kLongestDifference{500};

class AgreementTest : public testing::Test {
 protected:
  // Percent, as the server's own control program tells it; -1 when it tells none.
  static int serverVolume(const std::string &source) {
    const std::string answer = PrivateServer::control({"get-source-volume", source});
    const std::size_t slash = answer.find('/');
    return slash == std::string::npos ? -1 : std::stoi(answer.substr(slash + 1));
  }
  // The server counts in steps of its own, and cuts a percentage to one; the window cuts the step
  // to a percentage. This is the first step that is that many percent for both.
  static void setServerVolume(const std::string &source, int percent) {
    constexpr int kFullVolume = 65536;
    const int step = (percent * kFullVolume + 99) / 100;
    PrivateServer::control({"set-source-volume", source, std::to_string(step)});
  }
  // What the slider and the text both say; -1 when they differ.
  static int windowVolume(WatchedTuner &tuner) {
    const Controller &controller = tuner.controller();
    const int percent = controller.mInputVolumeSlider->intValue();
    return controller.mInputVolumeText->stringValue() == QString::number(percent) ? percent : -1;
  }

  // Waits for the second to come true after the first; how much later it was is measured.
  void expectSoonAfter(const std::function<bool()> &first, const std::function<bool()> &second,
                       const std::string &what) {
    ASSERT_TRUE(comesTrue(first)) << what;
    const auto start = Clock::now();
    ASSERT_TRUE(comesTrue(second)) << what;
    const auto time = std::chrono::duration_cast<milliseconds>(Clock::now() - start);
    longest = std::max(longest, time);
    ++changes;
    EXPECT_LE(time.count(), kLongestDifference.count()) << what;
  }

  void TearDown() override {
    std::printf("%d changes, at most %lld ms until both showed the same\n", changes,
                static_cast<long long>(longest.count()));
  }

  Random random{longRunSeed()};
  milliseconds longest{0};
  int changes = 0;
};

class VolumeAgreementTest : public AgreementTest, public testing::WithParamInterface<Kind> {
 protected:
  void SetUp() override {
    ASSERT_TRUE(server.start());
    ASSERT_NE(server.loadSource("Mic", 48000, 1, "device.description=Mic"), "");
  }

  // Whether the window's level meter shows that sound comes in.
  static bool showsALevel(WatchedTuner &tuner) { return tuner.controller().mLoop.mDisplayPeak > 0; }

  PrivateServer server{GetParam()};
  PipeFeeder feeder{server.pipeOf("Mic"), [](std::uint64_t n) {
                      const double phase = static_cast<double>(n * 220 % 48000) / 48000.0;
                      return static_cast<float>(0.8 * std::sin(2.0 * std::numbers::pi * phase));
                    }};
};

INSTANTIATE_TEST_SUITE_P(Servers, VolumeAgreementTest,
                         testing::Values(Kind::kPulseAudio, Kind::kPipeWire),
                         [](const auto &kind) { return PrivateServer::nameOf(kind.param); });

TEST_P(VolumeAgreementTest, OnTheVolumeWhicheverSideSetsIt) {
  WatchedTuner tuner([] { return std::make_unique<PulseAudioHardware>(); });
  ASSERT_EQ(tuner.numberOfDevices(), 1);
  int moved = 0;
  for (std::uint64_t round = longRunCount(2); round > 0 && !HasFailure(); --round) {
    const int told = static_cast<int>(random.below(101));
    setServerVolume("Mic", told);
    expectSoonAfter([&] { return serverVolume("Mic") == told; },
                    [&] { return windowVolume(tuner) == told; }, "told " + std::to_string(told));

    // The same place twice is no movement, whatever the server has set in between.
    moved = (moved + 1 + static_cast<int>(random.below(100))) % 101;
    tuner.controller().mInputVolumeSlider->setIntValue(moved);
    tuner.controller().inputVolumeSliderChanged();
    // What the server tells of the time before may move the slider back for a moment.
    expectSoonAfter([] { return true; },
                    [&] { return serverVolume("Mic") == moved && windowVolume(tuner) == moved; },
                    "moved " + std::to_string(moved));
  }
}

TEST_P(VolumeAgreementTest, OnWhetherTheSourceIsMute) {
  WatchedTuner tuner([] { return std::make_unique<PulseAudioHardware>(); });
  ASSERT_TRUE(comesTrue([&] { return showsALevel(tuner); }));
  for (std::uint64_t round = longRunCount(1); round > 0 && !HasFailure(); --round) {
    for (const bool isMute : {true, false}) {
      PrivateServer::control({"set-source-mute", "Mic", isMute ? "1" : "0"});
      const std::string expected = isMute ? "Mute: yes" : "Mute: no";
      expectSoonAfter(
          [&] {
            return PrivateServer::control({"get-source-mute", "Mic"}).starts_with(expected);
          },
          [&] { return showsALevel(tuner) != isMute; }, expected);
      EXPECT_EQ(windowVolume(tuner), 100) << "mute is not a volume";
    }
  }
}

// PipeWire goes on delivering from a source that was suspended by hand.
TEST_P(VolumeAgreementTest, OnWhetherTheSourceIsSuspended) {
  if (GetParam() == Kind::kPipeWire)
    GTEST_SKIP() << "a source that is listened to is not suspended";
  WatchedTuner tuner([] { return std::make_unique<PulseAudioHardware>(); });
  const auto heard = [&] { return tuner.totals().calls; };
  ASSERT_TRUE(comesTrue([&] { return heard() > 0; }));
  for (std::uint64_t round = longRunCount(1); round > 0 && !HasFailure(); --round) {
    PrivateServer::control({"suspend-source", "Mic", "1"});
    std::uint64_t before = 0;
    EXPECT_TRUE(comesTrue([&] {
      before = heard();
      runEventLoop(milliseconds(150));
      return heard() == before;
    })) << "falls silent";
    PrivateServer::control({"suspend-source", "Mic", "0"});
    expectSoonAfter([] { return true; }, [&] { return heard() > before; }, "resumed");
  }
}

class PortAgreementTest : public AgreementTest {
 protected:
  void SetUp() override {
    ASSERT_TRUE(server.start());
    card = ChildProcess({ORVANE_FAKE_CARD});
    ASSERT_TRUE(eventually([] { return serverPort() != ""; }));
    ASSERT_TRUE(eventually([] { return serverVolume("portmic") >= 0; }));
  }

  // The description of the active port; empty when there is none.
  static std::string serverPort() {
    const std::string list = PrivateServer::control({"list", "sources"});
    if (list.find("Active Port: analog-input-mic") != std::string::npos)
      return "Microphone";
    return list.find("Active Port: analog-input-linein") != std::string::npos ? "Line In" : "";
  }
  // The same, as the device layer knows it.
  static std::string tunersPort(WatchedTuner &tuner) {
    AudioHardware &hardware = tuner.hardware();
    const AudioDeviceID device = tuner.controller().mAUInputUnit->inputDevice();
    const auto source = dataSource(hardware, device);
    return source ? dataSourceName(hardware, device, *source) : std::string();
  }

  PrivateServer server{Kind::kPipeWire};
  ChildProcess card;
};

TEST_F(PortAgreementTest, OnThePortWhicheverSideSwitchesIt) {
  WatchedTuner tuner([] { return std::make_unique<PulseAudioHardware>(); });
  ASSERT_EQ(tuner.numberOfDevices(), 2);
  for (std::uint64_t round = longRunCount(1); round > 0 && !HasFailure(); --round) {
    for (const auto &port : {std::pair("analog-input-linein", "Line In"),
                             std::pair("analog-input-mic", "Microphone")}) {
      const char *title = port.second;
      PrivateServer::control({"set-source-port", "portmic", port.first});
      expectSoonAfter([&] { return serverPort() == title; },
                      [&] { return tunersPort(tuner) == title; }, std::string("told ") + title);
    }
    for (const char *title : {"Line In", "Microphone"}) {
      ASSERT_TRUE(tuner.choose(title));
      expectSoonAfter([] { return true; }, [&] { return serverPort() == title; },
                      std::string("chose ") + title);
    }
    const int told = static_cast<int>(random.below(101));
    setServerVolume("portmic", told);
    expectSoonAfter([&] { return serverVolume("portmic") == told; },
                    [&] { return windowVolume(tuner) == told; }, "told " + std::to_string(told));
  }
}

TEST_F(PortAgreementTest, WhateverTheServerMakesOfAJackThatIsPulledAndPlugged) {
  WatchedTuner tuner([] { return std::make_unique<PulseAudioHardware>(); });
  ASSERT_EQ(tuner.numberOfDevices(), 2);
  int moves = 0;
  const std::uint64_t rounds = longRunCount(1);
  // On a busy machine the server may take its time to move the active port.
  const auto goesOn = [&](std::uint64_t round) {
    return round < rounds || (moves == 0 && round < rounds + 20);
  };
  for (std::uint64_t round = 0; goesOn(round) && !HasFailure(); ++round) {
    // Both of them, and so the active one.
    std::array names{"analog-input-mic", "analog-input-linein"};
    if (random.chance(50))
      std::ranges::reverse(names);
    for (const char *name : names) {
      for (const char *isThere : {"no", "yes"}) {
        const std::string before = serverPort();
        card.writeLine(std::string("avail ") + name + " " + isThere);
        // It may go to another port, or stay where the user has put it.
        runEventLoop(kLongestDifference);
        longest = kLongestDifference;
        EXPECT_EQ(tunersPort(tuner), serverPort()) << name << " " << isThere;
        EXPECT_EQ(windowVolume(tuner), serverVolume("portmic")) << name << " " << isThere;
        moves += serverPort() == before ? 0 : 1;
        ++changes;
      }
    }
  }
  std::printf("the active port changed %d times\n", moves);
  EXPECT_GT(moves, 0);
}

}  // namespace
}  // namespace orvane::test
