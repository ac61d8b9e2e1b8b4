// The terminal tuner on real sound servers, as a user runs it: a note played into a source is
// named, through the loss and the return of the source and of the server.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <numbers>
#include <set>

#include "tests/cli/TestFiles.h"
#include "tests/servers/HardwareProbe.h"
#include "tests/servers/PipeFeeder.h"
#include "tests/servers/PrivateServer.h"

namespace orvane::test {
namespace {

using Kind = PrivateServer::Kind;

constexpr int kRate = 48000;

// A note as a plucked string gives it: eight partials that die away, struck anew every second.
float pluckedNote(double hertz, std::uint64_t sample) {
  const double time = static_cast<double>(sample % kRate) / kRate;
  double x = 0.0;
  for (int k = 1; k <= 8; ++k)
    x += std::exp(-1.5 * k * time) / (k * k) *
         std::sin(2.0 * std::numbers::pi * hertz * k * time + 0.3);
  return static_cast<float>(0.4 * x);
}

std::vector<std::string> linesOf(const std::string &text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  for (std::size_t end = 0; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
    lines.push_back(text.substr(start, end - start));
  return lines;
}

std::vector<std::string> titles() {
  return linesOf(outputOf({ORVANE_CLI, "devices"}));
}

std::string titleEndingIn(const std::string &name) {
  for (const std::string &title : titles()) {
    if (title.ends_with(" : " + name))
      return title;
  }
  return {};
}

// "orvane-cli listen --json" in the background.
class Listener {
 public:
  explicit Listener(const std::string &title)
      : mProcess({ORVANE_CLI, "listen", "--json", "--device", title}, mFolder.path("log")) {}

  // What it said so far: whole lines.
  std::vector<std::string> lines() const {
    std::ifstream file(mFolder.path("log"));
    return linesOf({std::istreambuf_iterator<char>(file), {}});
  }

  // The readings that were accepted from the given line on.
  std::vector<nlohmann::json> accepted(std::size_t fromLine = 0) const {
    std::vector<nlohmann::json> readings;
    const std::vector<std::string> all = lines();
    for (std::size_t k = fromLine; k < all.size(); ++k) {
      auto reading = nlohmann::json::parse(all[k], nullptr, false);
      if (reading.is_object() && reading["accepted"] == true)
        readings.push_back(std::move(reading));
    }
    return readings;
  }

  bool hearsFrom(std::size_t line) const {
    return eventually([&] { return accepted(line).size() >= 10; });
  }

  // Whether it comes to print a notice that ends so.
  bool says(const std::string &end) const {
    return eventually([&] {
      const auto all = lines();
      return std::any_of(all.begin(), all.end(), [&](const std::string &line) {
        return line.starts_with("orvane-cli: ") && line.ends_with(end);
      });
    });
  }

  int interrupt() {
    mProcess.signal(SIGINT);
    return mProcess.wait(std::chrono::seconds(5));
  }

 private:
  TestFolder mFolder;
  ChildProcess mProcess;
};

// Every note but the expected one.
std::set<std::string> otherNotes(const Listener &listener, const std::string &expected) {
  std::set<std::string> names;
  for (const auto &reading : listener.accepted())
    names.insert(reading["note"].get<std::string>() + reading["accidental"].get<std::string>() +
                 reading["octave"].get<std::string>());
  names.erase(expected);
  return names;
}

class ListenServerTest : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override {
    ASSERT_TRUE(mServer.start());
    ASSERT_NE(loadOther(), "");
    mMicModule = loadMic();
    ASSERT_NE(mMicModule, "");
    ASSERT_TRUE(eventually([&] { return !titleEndingIn("Mic").empty(); }));
  }

  std::string loadMic() { return mServer.loadSource("Mic", kRate, 1, "device.description=Mic"); }
  std::string loadOther() { return mServer.loadSource("Other", kRate, 1); }

  PrivateServer mServer{GetParam()};
  std::string mMicModule;
  // The source under test hears E♭3, any other one A5.
  PipeFeeder mMic{mServer.pipeOf("Mic"), [](std::uint64_t n) { return pluckedNote(155.563, n); }};
  PipeFeeder mOther{mServer.pipeOf("Other"), [](std::uint64_t n) { return pluckedNote(880.0, n); }};
};

INSTANTIATE_TEST_SUITE_P(Servers, ListenServerTest,
                         testing::Values(Kind::kPulseAudio, Kind::kPipeWire),
                         [](const auto &server) { return PrivateServer::nameOf(server.param); });

TEST_P(ListenServerTest, ANoteThatIsPlayedInIsNamed) {
  Listener listener(titleEndingIn("Mic"));
  ASSERT_TRUE(listener.hearsFrom(0));
  for (const auto &reading : listener.accepted()) {
    EXPECT_EQ(reading["note"], "E");
    EXPECT_EQ(reading["accidental"], "♭");
    EXPECT_EQ(reading["octave"], "3");
    EXPECT_LE(std::abs(reading["cents"].get<int>()), 10);
  }
  EXPECT_EQ(listener.interrupt(), 0);
}

TEST_P(ListenServerTest, ASlowSourceThatGivesAQuarterOfASecondAtOnceIsHeard) {
  constexpr int kSlowRate = 4000;
  ASSERT_NE(mServer.loadSource("Slow", kSlowRate, 1, "device.description=Slow"), "");
  const PipeFeeder slow(
      mServer.pipeOf("Slow"),
      [](std::uint64_t n) {
        return static_cast<float>(
            0.5 * std::sin(2.0 * std::numbers::pi * 110.0 * static_cast<double>(n) / kSlowRate));
      },
      kSlowRate, 1, std::chrono::milliseconds(256));
  ASSERT_TRUE(eventually([&] { return !titleEndingIn("Slow").empty(); }));
  Listener listener(titleEndingIn("Slow"));
  ASSERT_TRUE(listener.hearsFrom(0));
  EXPECT_EQ(otherNotes(listener, "A2"), std::set<std::string>());
  EXPECT_EQ(listener.interrupt(), 0);
}

TEST_P(ListenServerTest, AMonitorIsNeverAmongTheDevices) {
  for (const std::string &title : titles())
    EXPECT_EQ(title.find("onitor"), std::string::npos) << title;
}

TEST_P(ListenServerTest, AfterTheSourcesReturnTheSameNoteIsNamedAgainAndNoOtherMeanwhile) {
  Listener listener(titleEndingIn("Mic"));
  ASSERT_TRUE(listener.hearsFrom(0));
  mServer.unload(mMicModule);
  ASSERT_TRUE(listener.says(" : Mic: is gone, waiting for its return"));
  const std::size_t before = listener.lines().size();
  ASSERT_NE(loadMic(), "");
  ASSERT_TRUE(listener.says(" : Mic: is back"));
  ASSERT_TRUE(listener.hearsFrom(before));
  EXPECT_EQ(otherNotes(listener, "E♭3"), std::set<std::string>());
  EXPECT_EQ(listener.interrupt(), 0);
}

TEST_P(ListenServerTest, AfterTheServersReturnTheSameNoteIsNamedAgainAndNoOtherMeanwhile) {
  Listener listener(titleEndingIn("Mic"));
  ASSERT_TRUE(listener.hearsFrom(0));
  mServer.kill();
  ASSERT_TRUE(mServer.start());
  ASSERT_NE(loadOther(), "");
  const std::size_t before = listener.lines().size();
  ASSERT_NE(loadMic(), "");
  ASSERT_TRUE(listener.hearsFrom(before));
  EXPECT_EQ(otherNotes(listener, "E♭3"), std::set<std::string>());
  EXPECT_EQ(listener.interrupt(), 0);
}

TEST_P(ListenServerTest, AFrozenServerIsToldAndHeardAgainWhenItThaws) {
  Listener listener(titleEndingIn("Mic"));
  ASSERT_TRUE(listener.hearsFrom(0));
  mServer.freeze();
  EXPECT_TRUE(listener.says(" : Mic: no sound arrives, not even silence; still listening"));
  const std::size_t before = listener.lines().size();
  mServer.thaw();
  EXPECT_TRUE(listener.hearsFrom(before));
  mServer.freeze();
  EXPECT_EQ(listener.interrupt(), 0) << "ends while the server is frozen";
  mServer.thaw();
}

// Name, volume, mute state and active port of every source, as the server tells them.
std::vector<std::string> settingsOfSources() {
  std::vector<std::string> settings;
  for (const std::string &line : linesOf(PrivateServer::control({"list", "sources"}))) {
    for (const char *setting : {"\tName:", "\tVolume:", "\tMute:", "\tActive Port:"}) {
      if (line.starts_with(setting))
        settings.push_back(line);
    }
  }
  return settings;
}

TEST(ListenPortsTest, ACardWithTwoPortsIsListedTwiceAndChoosingOneWritesOnlyThePort) {
  PrivateServer server(Kind::kPipeWire);
  ASSERT_TRUE(server.start());
  const ChildProcess card({ORVANE_FAKE_CARD});
  ASSERT_TRUE(eventually([&] { return titles().size() == 2; })) << titles().size();
  const std::string lineIn = titleEndingIn("Line In");
  ASSERT_NE(titleEndingIn("Microphone"), "");
  ASSERT_NE(lineIn, "");
  std::vector<nlohmann::json> devices;
  for (const std::string &line : linesOf(outputOf({ORVANE_CLI, "devices", "--json"})))
    devices.push_back(nlohmann::json::parse(line));
  ASSERT_EQ(devices.size(), 2U);
  EXPECT_EQ(devices[0]["deviceID"], devices[1]["deviceID"]);
  EXPECT_NE(devices[0]["dataSource"], devices[1]["dataSource"]);

  std::vector<std::string> expected = settingsOfSources();
  const auto port = std::find(expected.begin(), expected.end(), "\tActive Port: analog-input-mic");
  ASSERT_NE(port, expected.end());
  *port = "\tActive Port: analog-input-linein";

  Listener listener(lineIn);
  EXPECT_TRUE(eventually([&] { return settingsOfSources() == expected; }))
      << testing::PrintToString(settingsOfSources());
  EXPECT_EQ(listener.interrupt(), 0);
  EXPECT_EQ(settingsOfSources(), expected);
}

}  // namespace
}  // namespace orvane::test
