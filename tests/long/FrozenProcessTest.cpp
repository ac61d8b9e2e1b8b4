// A process that is stopped for a while, as by a debugger or a suspended session, and goes on: it
// shows what sounds now, does not crawl through what it missed, and tells nothing that is not so.
// ./frozen stops it for a minute.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <csignal>

#include <atomic>
#include <chrono>
#include <cmath>
#include <fstream>
#include <iostream>
#include <numbers>
#include <thread>

#include "tests/cli/TestFiles.h"
#include "tests/long/LongRun.h"
#include "tests/servers/HardwareProbe.h"
#include "tests/servers/PipeFeeder.h"
#include "tests/servers/PrivateServer.h"

namespace orvane::test {
namespace {

constexpr int kRate = 48000;
constexpr double kBlockSeconds = 1.5 / 27.5;
// What a sound server and the way from it may keep for a reader that does not read: a second.
constexpr std::size_t kMostKept = 19;  // blocks

class FrozenListener {
 public:
  explicit FrozenListener(std::vector<std::string> arguments)
      : mProcess(command(std::move(arguments)), mFolder.path("log")) {}

  std::vector<std::string> lines() const {
    std::vector<std::string> lines;
    std::ifstream file(mFolder.path("log"));
    for (std::string line; std::getline(file, line);)
      lines.push_back(line);
    return lines;
  }
  std::vector<nlohmann::json> readings() const {
    std::vector<nlohmann::json> readings;
    for (const std::string &line : lines()) {
      auto reading = nlohmann::json::parse(line, nullptr, false);
      if (reading.is_object())
        readings.push_back(std::move(reading));
    }
    return readings;
  }
  // Lines that are no readings.
  std::vector<std::string> notices() const {
    std::vector<std::string> notices = lines();
    std::erase_if(notices, [](const std::string &line) { return line.starts_with('{'); });
    return notices;
  }

  void freeze() const { mProcess.signal(SIGSTOP); }
  void thaw() const { mProcess.signal(SIGCONT); }
  int interrupt() {
    mProcess.signal(SIGINT);
    return mProcess.wait(std::chrono::seconds(5));
  }

 private:
  static std::vector<std::string> command(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {ORVANE_CLI, "listen", "--json"});
    return arguments;
  }

  TestFolder mFolder;
  ChildProcess mProcess;
};

std::chrono::seconds frozenFor() {
  return std::chrono::seconds(longRunCount(4));
}

// The readings from the thawing on, which came at the given time of their clock or later.
std::vector<nlohmann::json> since(const std::vector<nlohmann::json> &readings, double time) {
  std::vector<nlohmann::json> later;
  for (const auto &reading : readings) {
    if (reading["time"].get<double>() >= time)
      later.push_back(reading);
  }
  return later;
}

// Stops the listener, and lets it go on; what it did in the second after.
std::vector<nlohmann::json> freezeAndThaw(
    const FrozenListener &listener, const std::function<void()> &meanwhile = [] {}) {
  const double before = listener.readings().back()["time"];
  listener.freeze();
  meanwhile();
  std::this_thread::sleep_for(frozenFor());
  listener.thaw();
  std::this_thread::sleep_for(std::chrono::milliseconds(1000));
  const double seconds = static_cast<double>(frozenFor().count());
  return since(listener.readings(), before + seconds - 0.5);
}

void expectNoBurst(const std::vector<nlohmann::json> &readings) {
  ASSERT_GE(readings.size(), 8U) << "hears again";
  const auto inASecond = static_cast<std::size_t>(1.0 / kBlockSeconds);
  EXPECT_LE(readings.size(), inASecond + 3 + kMostKept);
}

TEST(FrozenProcess, ARecordingGoesOnFromWhereItWas) {
  TestFolder folder;
  FrozenListener listener({"--input", folder.writeSound("a4.wav", sine(440.0, kRate, 1.0), kRate)});
  ASSERT_TRUE(eventually([&] { return listener.readings().size() >= 10; }));
  const auto readings = freezeAndThaw(listener);
  expectNoBurst(readings);
  for (const auto &reading : readings)
    EXPECT_EQ(reading["note"], "A");
  EXPECT_EQ(listener.notices(), std::vector<std::string>());
  EXPECT_EQ(listener.interrupt(), 0);
}

class FrozenProcessTest : public testing::TestWithParam<PrivateServer::Kind> {};

INSTANTIATE_TEST_SUITE_P(Servers, FrozenProcessTest,
                         testing::Values(PrivateServer::Kind::kPulseAudio,
                                         PrivateServer::Kind::kPipeWire),
                         [](const auto &server) { return PrivateServer::nameOf(server.param); });

TEST_P(FrozenProcessTest, WhatSoundsNowIsShownAtOnceAndNothingFalseIsTold) {
  PrivateServer server(GetParam());
  ASSERT_TRUE(server.start());
  ASSERT_NE(server.loadSource("Mic", kRate, 1, "device.description=Mic"), "");
  std::atomic<double> hertz{440.0};
  PipeFeeder feeder(server.pipeOf("Mic"), [&, phase = 0.0](std::uint64_t) mutable {
    phase += hertz / kRate;
    return static_cast<float>(0.5 * std::sin(2.0 * std::numbers::pi * phase));
  });
  FrozenListener listener({});
  ASSERT_TRUE(eventually([&] { return listener.readings().size() >= 20; }));
  ASSERT_EQ(listener.readings().back()["note"], "A");

  const auto readings = freezeAndThaw(listener, [&] {
    std::this_thread::sleep_for(std::chrono::seconds(1));
    hertz = 329.63;
  });
  expectNoBurst(readings);
  // From the first reading after the thawing: how long the old note still stands.
  const double thawed = readings.front()["time"];
  double newSince = thawed;
  for (const auto &reading : readings) {
    if (reading["note"] != "E")
      newSince = reading["time"].get<double>() + kBlockSeconds;
  }
  std::cout << readings.size() << " readings in the second after the stop, the new note after "
            << (newSince - thawed) * 1000.0 << " ms\n";
  EXPECT_LE(newSince - thawed, 0.3);
  EXPECT_EQ(listener.notices(), std::vector<std::string>());
  EXPECT_EQ(listener.interrupt(), 0);
}

}  // namespace
}  // namespace orvane::test
