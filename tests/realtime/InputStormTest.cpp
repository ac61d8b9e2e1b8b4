// The input procedure on the threads of the real backends, while devices are switched, come, go and
// change their rates, the tuner is hidden and quits, and servers crash and freeze. Which eyes are
// on it is the program's matter: see RealTimeScope.h.
#include <gtest/gtest.h>
#include <sndfile.h>

#include <cmath>
#include <deque>
#include <numbers>

#include "audio/PulseAudioHardware.h"
#include "audio/RecordingHardware.h"
#include "tests/audio/SoundFileMaker.h"
#include "tests/realtime/Storm.h"
#include "tests/realtime/WatchedTuner.h"
#include "tests/servers/PipeFeeder.h"
#include "tests/servers/PrivateServer.h"

namespace orvane::test {
namespace {

using Kind = PrivateServer::Kind;
using std::chrono::milliseconds;

float tone(double hertz, double rate, std::uint64_t sample) {
  const double phase = std::fmod(hertz * static_cast<double>(sample) / rate, 1.0);
  return static_cast<float>(0.5 * std::sin(2.0 * std::numbers::pi * phase));
}

void addHandsOfTheUser(Storm &storm, WatchedTuner &tuner) {
  storm.add("device chosen", 6, [&] { tuner.choose(storm.below(tuner.numberOfDevices())); });
  storm.add("hidden", 3, [&] { tuner.hide(); });
  storm.add("shown", 5, [&] { tuner.unhide(); });
  storm.add("quit and started", 1, [&] { tuner.start(); });
  storm.add("volume moved", 2, [&] {
    tuner.controller().mInputVolumeSlider->setIntValue(storm.below(101));
    tuner.controller().inputVolumeSliderChanged();
  });
}

void expectOnlyWhatIsAllowed(const Storm &storm, const WatchedTuner &tuner) {
  const ProcedureWatch::Totals totals = tuner.totals();
  std::printf("%s\n%s\n", storm.account().c_str(), textOf(totals).c_str());
  EXPECT_GT(totals.blocks, 3U);
  EXPECT_EQ(totals.violations, 0U) << testing::PrintToString(totals.firstViolations);
}

std::filesystem::path writeTone(const std::filesystem::path &path, int rate, int channels) {
  std::vector<float> samples;
  for (int frame = 0; frame < rate; ++frame)
    samples.insert(samples.end(), static_cast<std::size_t>(channels),
                   tone(220.0, rate, static_cast<std::uint64_t>(frame)));
  return writeSound(path, SF_FORMAT_WAV | SF_FORMAT_FLOAT, rate, channels, samples);
}

TEST(RecordingStormTest, RecordingsOfEveryRateAreSwitchedHiddenAndQuit) {
  const TemporaryFolder folder;
  std::vector<std::filesystem::path> files;
  for (const auto &[rate, channels] : std::initializer_list<std::pair<int, int>>{
           {44100, 1}, {8000, 1}, {48000, 2}, {192000, 2}, {768000, 1}})
    files.push_back(writeTone(folder / (std::to_string(rate) + ".wav"), rate, channels));
  WatchedTuner tuner([&] { return std::make_unique<RecordingHardware>(files); });
  ASSERT_EQ(tuner.numberOfDevices(), 5);
  Storm storm;
  addHandsOfTheUser(storm, tuner);
  storm.rage(std::chrono::seconds(2));

  tuner.unhide();
  for (const char *name : {"768000.wav", "44100.wav"}) {
    ASSERT_TRUE(tuner.choose(name));
    EXPECT_TRUE(tuner.comesToShow("A", "3")) << name;
  }
  expectOnlyWhatIsAllowed(storm, tuner);
}

class ServerStormTest : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override {
    ASSERT_TRUE(server.start());
    loadAll();
  }

  void loadAll() {
    ASSERT_NE(server.loadSource("Other", 48000, 2, "device.description=Other"), "");
    loadMic(48000, 1);
  }
  // A feeder writes in frames of 48 kHz and one channel whatever the source takes it for, so other
  // formats change the pitch and nothing else.
  void loadMic(int rate, int channels) {
    // A server may not be done yet with the one before, and refuse.
    ASSERT_TRUE(comesTrue([&] {
      micModule = server.loadSource("Mic", rate, channels, "device.description=Mic");
      return !micModule.empty();
    }));
  }
  void unloadMic() {
    if (!micModule.empty())
      server.unload(std::exchange(micModule, {}));
  }
  void reloadMic(int rate, int channels) {
    unloadMic();
    loadMic(rate, channels);
  }
  // Without waiting for it.
  void control(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "pactl");
    commands.emplace_back(arguments);
    while (commands.size() > 8)
      commands.pop_front();
  }

  PrivateServer server{GetParam()};
  std::string micModule;
  std::deque<ChildProcess> commands;
  PipeFeeder micFeeder{server.pipeOf("Mic"), [](std::uint64_t n) { return tone(220.0, 48e3, n); }};
  PipeFeeder otherFeeder{server.pipeOf("Other"),
                         [](std::uint64_t n) { return tone(330.0, 48e3, n); }, 48000, 2};
};

INSTANTIATE_TEST_SUITE_P(Servers, ServerStormTest,
                         testing::Values(Kind::kPulseAudio, Kind::kPipeWire),
                         [](const auto &kind) { return PrivateServer::nameOf(kind.param); });

TEST_P(ServerStormTest, DevicesAndServersComeAndGoUnderARunningStream) {
  WatchedTuner tuner([] { return std::make_unique<PulseAudioHardware>(); });
  ASSERT_TRUE(tuner.choose("Mic"));
  ASSERT_TRUE(tuner.comesToShow("A", "3"));
  Storm storm;
  addHandsOfTheUser(storm, tuner);
  storm.add("source loaded anew", 4, [&] {
    constexpr int kRates[] = {8000, 44100, 48000, 96000, 192000};
    reloadMic(kRates[storm.below(5)], 1 + storm.below(2));
  });
  storm.add("source unloaded", 1, [&] { unloadMic(); });
  storm.add("source suspended", 1, [&] { control({"suspend-source", "Mic", "1"}); });
  storm.add("source resumed", 1, [&] { control({"suspend-source", "Mic", "0"}); });
  storm.add("volume set", 2, [&] {
    control({"set-source-volume", "Mic", std::to_string(storm.below(101)) + "%"});
  });
  storm.add("mute switched", 1, [&] { control({"set-source-mute", "Mic", "toggle"}); });
  storm.add("server frozen", 1, [&] {
    server.freeze();
    runEventLoop(milliseconds(storm.below(200)));
    server.thaw();
  });
  storm.add("server crashed", 1, [&] {
    server.kill();
    runEventLoop(milliseconds(storm.below(400)));
    ASSERT_TRUE(server.start());
    loadAll();
  });
  storm.rage(std::chrono::seconds(3));

  commands.clear();
  reloadMic(48000, 1);
  for (const char *setting : {"set-source-mute", "suspend-source"})
    PrivateServer::control({setting, "Mic", "0"});
  PrivateServer::control({"set-source-volume", "Mic", "100%"});
  tuner.unhide();
  if (!tuner.choose("Mic")) {  // started while it was away
    tuner.start();
    ASSERT_TRUE(tuner.choose("Mic"));
  }
  EXPECT_TRUE(tuner.comesToShow("A", "3"));
  expectOnlyWhatIsAllowed(storm, tuner);
}

}  // namespace
}  // namespace orvane::test
