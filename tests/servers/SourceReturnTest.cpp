// A source that is unloaded, and a server that crashes, again and again: the tuner hears the same
// source again soon after each return, and never another one. The source's tone is quiet, those of
// all other sources and of the monitors are loud, so every sample tells where it comes from. A long
// run says how many rounds.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <chrono>
#include <cmath>
#include <numbers>
#include <optional>
#include <set>
#include <thread>

#include "audio/AUInputUnit.h"
#include "audio/PulseAudioHardware.h"
#include "audio/WakeUpDescriptor.h"
#include "cli/TerminalTuner.h"
#include "tests/long/LongRun.h"
#include "tests/servers/HardwareProbe.h"
#include "tests/servers/PipeFeeder.h"
#include "tests/servers/PrivateServer.h"

namespace orvane::test {
namespace {

using Clock = std::chrono::steady_clock;
using Kind = PrivateServer::Kind;
using std::chrono::milliseconds;

// From the moment at which the server lists the source again: what a player would still call at
// once, and what the tuner promises.
constexpr milliseconds kSoon{2000};

constexpr float kQuiet = 0.25F;
constexpr float kLoud = 0.8F;
constexpr double kMyHertz = 155.563;       // E♭3
constexpr double kOtherHertz = 880.0;      // A5
constexpr double kMonitorHertz = 1318.51;  // E6

float sine(double hertz, float amplitude, std::uint64_t sample) {
  const double phase = std::fmod(hertz * static_cast<double>(sample) / 48000.0, 1.0);
  return amplitude * static_cast<float>(std::sin(2.0 * std::numbers::pi * phase));
}

// The terminal's tuner on the device layer, with a look at every sample.
class CountingTuner {
 public:
  explicit CountingTuner(AudioHardware &hardware) : mUnit(hardware) {
    mUnit.setIOProc(heard, this);
    mUnit.setListenerProc(changed, this);
  }
  ~CountingTuner() { mUnit.stop(); }
  CountingTuner(const CountingTuner &) = delete;
  CountingTuner &operator=(const CountingTuner &) = delete;

  bool choose(const std::string &endOfTitle) {
    const auto &sources = mUnit.audioInputSources();
    const auto found = std::ranges::find_if(
        sources, [&](const AudioInputSource &source) { return source.name.ends_with(endOfTitle); });
    if (found == sources.end())
      return false;
    mUnit.setInputDeviceAtIndex(found - sources.begin());
    mTuner.capture().setSampleRate(mUnit.sampleRate());
    return true;
  }
  AudioDeviceID device() const { return mUnit.inputDevice(); }

  // The notes of the readings that were accepted since the last time.
  std::set<std::string> takeNotes() {
    std::set<std::string> notes;
    mWakeUp.clear();
    while (const auto reading = mTuner.takeReading(secondsNow())) {
      const NoteTexts &texts = reading->display.texts;
      if (reading->accepted)
        notes.insert(texts.mNoteText + texts.mAccidentalText + texts.mOctaveText);
    }
    mNotes.insert(notes.begin(), notes.end());
    return notes;
  }
  const std::set<std::string> &notes() const { return mNotes; }
  std::uint64_t quietSamples() const { return mQuietSamples; }
  std::uint64_t loudSamples() const { return mLoudSamples; }

 private:
  static double secondsNow() {
    return std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
  }

  static OSStatus heard(AudioDeviceID device, const AudioTimeStamp *now,
                        const AudioBufferList *input, const AudioTimeStamp *inputTime,
                        AudioBufferList *output, const AudioTimeStamp *outputTime, void *self) {
    auto *tuner = static_cast<CountingTuner *>(self);
    const AudioBuffer &buffer = input->mBuffers[0];
    const auto *samples = static_cast<const float *>(buffer.mData);
    for (std::size_t i = 0; i < buffer.mDataByteSize / sizeof(float); ++i) {
      if (std::abs(samples[i]) > 2.0F * kQuiet)
        ++tuner->mLoudSamples;
      else if (samples[i] != 0.0F)
        ++tuner->mQuietSamples;
    }
    const IOProcCall call{device, now, input, inputTime, output, outputTime};
    return tuner->mTuner.capture().inputIOProc(&call);
  }

  static OSStatus changed(AudioDeviceID, UInt32, Boolean, AudioDevicePropertyID, void *self) {
    auto *tuner = static_cast<CountingTuner *>(self);
    tuner->mTuner.capture().updateSampleRate(tuner->mUnit.sampleRate());
    return noErr;
  }

  const Tuning mTuning;
  WakeUpDescriptor mWakeUp;
  TerminalTuner mTuner{mTuning, &mWakeUp};
  std::set<std::string> mNotes;
  std::atomic<std::uint64_t> mQuietSamples{0};
  std::atomic<std::uint64_t> mLoudSamples{0};
  AUInputUnit mUnit;
};

class SourceReturnTest : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override {
    mkfifo(server.pipeOf("loud").c_str(), 0600);
    loadAll();
    hardware.emplace();
    tuner.emplace(*hardware);
    ASSERT_TRUE(tuner->choose(" : Mic"));
    ASSERT_TRUE(isHeardWithin(std::chrono::seconds(15)));
    for (const char *foreign : {"Other", "feed.monitor"})
      ASSERT_TRUE(server.sounds(foreign, 2.0F * kQuiet)) << foreign;
  }

  void loadAll() {
    ASSERT_TRUE(server.start());
    loadSources();
  }
  void loadSources() {
    ASSERT_TRUE(eventually([&] { return !server.loadSource("Other", 48000, 1).empty(); }));
    if (GetParam() == Kind::kPipeWire) {
      ASSERT_TRUE(eventually([] {
        const std::string module =
            PrivateServer::control({"load-module", "module-null-sink", "sink_name=feed"});
        return !module.empty() && std::isdigit(static_cast<unsigned char>(module.front())) != 0;
      }));
    }
    player = ChildProcess({"pacat", "--playback", "-d", "feed", "--raw", "--format=float32le",
                           "--rate=48000", "--channels=1", server.pipeOf("loud")});
    loadMic();
  }
  // A server may not be done yet with the one before, and refuse.
  void loadMic() {
    ASSERT_TRUE(eventually([&] {
      micModule = server.loadSource("Mic", 48000, 1, "device.description=Mic");
      return !micModule.empty();
    }));
  }

  bool isHeardWithin(milliseconds time) {
    return eventually([&] { return tuner->takeNotes().contains("E♭3"); }, time);
  }
  void listenFor(milliseconds time) {
    eventually([&] { return tuner->takeNotes().contains("nothing"); }, time);
  }

  // Waits until the server lists the source, then until it is heard. A server that delivers nothing
  // to anybody is no fault of the tuner's.
  void expectSoonHeard(std::uint64_t round) {
    ASSERT_TRUE(eventually([] {
      return PrivateServer::control({"list", "short", "sources"}).find("\tMic\t") !=
             std::string::npos;
    })) << "round "
        << round;
    tuner->takeNotes();
    const auto start = Clock::now();
    const bool isHeard = isHeardWithin(std::chrono::seconds(20));
    if (!isHeard && !server.sounds("Other", 2.0F * kQuiet)) {
      std::printf("round %llu: the server delivers nothing\n",
                  static_cast<unsigned long long>(round));
      return;
    }
    ASSERT_TRUE(isHeard) << "round " << round;
    const auto time = std::chrono::duration_cast<milliseconds>(Clock::now() - start);
    longest = std::max(longest, time);
    EXPECT_LE(time.count(), kSoon.count()) << "round " << round;
  }

  void expectNothingForeign(const char *what, std::uint64_t rounds) {
    std::printf("%llu times %s: heard again after at most %lld ms, %llu samples of others\n",
                static_cast<unsigned long long>(rounds), what,
                static_cast<long long>(longest.count()),
                static_cast<unsigned long long>(tuner->loudSamples()));
    EXPECT_EQ(tuner->loudSamples(), 0U);
    EXPECT_FALSE(tuner->notes().contains("A 5"));
    EXPECT_FALSE(tuner->notes().contains("E 6"));
  }

  PrivateServer server{GetParam()};
  std::string micModule;
  ChildProcess player;
  PipeFeeder micFeeder{server.pipeOf("Mic"),
                       [](std::uint64_t n) { return sine(kMyHertz, kQuiet, n); }};
  PipeFeeder otherFeeder{server.pipeOf("Other"),
                         [](std::uint64_t n) { return sine(kOtherHertz, kLoud, n); }};
  PipeFeeder loudFeeder{server.pipeOf("loud"),
                        [](std::uint64_t n) { return sine(kMonitorHertz, kLoud, n); }};
  Random random{longRunSeed()};
  milliseconds longest{0};
  // The devices are listed once, so these are made when all are there.
  std::optional<PulseAudioHardware> hardware;
  std::optional<CountingTuner> tuner;
};

INSTANTIATE_TEST_SUITE_P(Servers, SourceReturnTest,
                         testing::Values(Kind::kPulseAudio, Kind::kPipeWire),
                         [](const auto &server) { return PrivateServer::nameOf(server.param); });

TEST_P(SourceReturnTest, OfASourceThatIsUnloadedAndLoadedAgain) {
  const std::uint64_t rounds = longRunCount(3);
  for (std::uint64_t round = 0; round < rounds && !HasFailure(); ++round) {
    server.unload(micModule);
    ASSERT_TRUE(eventually([&] { return !isAlive(*hardware, tuner->device()); }));
    listenFor(milliseconds(random.below(500)));
    loadMic();
    expectSoonHeard(round);
  }
  expectNothingForeign("unloaded", rounds);
}

TEST_P(SourceReturnTest, OfAServerThatCrashesAndStartsAgain) {
  const std::uint64_t rounds = longRunCount(2);
  for (std::uint64_t round = 0; round < rounds && !HasFailure(); ++round) {
    server.kill();
    listenFor(milliseconds(random.below(round % 2 == 0 ? 500 : 4000)));
    loadAll();
    expectSoonHeard(round);
  }
  expectNothingForeign("crashed", rounds);
}

TEST_P(SourceReturnTest, OfADaemonThatCrashesBehindTheServiceThatStays) {
  if (GetParam() != Kind::kPipeWire)
    GTEST_SKIP() << "one program is both";
  // After some forty the service that stays lists no new sources, to whoever asks.
  const std::uint64_t rounds = std::min<std::uint64_t>(longRunCount(2), 10);
  for (std::uint64_t round = 0; round < rounds && !HasFailure(); ++round) {
    server.killDaemon();
    listenFor(milliseconds(random.below(round % 2 == 0 ? 500 : 4000)));
    ASSERT_TRUE(server.startDaemon());
    loadSources();
    expectSoonHeard(round);
  }
  expectNothingForeign("left by its daemon", rounds);
}

}  // namespace
}  // namespace orvane::test
