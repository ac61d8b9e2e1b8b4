// Sources and servers that go away, change, freeze and come back. A source under test hears the
// constant 0.25 and every other source 0.75, so what is heard tells where it came from.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <future>
#include <thread>

#include "audio/PulseAudioHardware.h"
#include "tests/servers/HardwareProbe.h"
#include "tests/servers/PipeFeeder.h"
#include "tests/servers/PrivateServer.h"

namespace orvane::test {
namespace {

using Kind = PrivateServer::Kind;

constexpr float kMine = 0.25F;
constexpr float kForeign = 0.75F;
constexpr float kLoud = 0.5F;          // between the two
constexpr std::size_t kPlenty = 9600;  // frames

class PulseRecoveryTest : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override {
    ASSERT_TRUE(server.start());
    ASSERT_NE(loadOther(), "");
    micModule = loadMic();
    ASSERT_NE(micModule, "");
    ASSERT_TRUE(server.sounds("Other", kLoud));
  }

  std::string loadMic(int rate = 48000) {
    return server.loadSource("Mic", rate, 1, "device.description=Mic");
  }
  std::string loadOther() { return server.loadSource("Other", 48000, 1); }

  static void expectNothingForeign(const Ear &ear) {
    const std::vector<float> samples = ear.samplesFrom(0);
    EXPECT_TRUE(std::ranges::none_of(samples, [](float sample) { return sample > kLoud; }));
  }

  PrivateServer server{GetParam()};
  std::string micModule;
  PipeFeeder micFeeder{server.pipeOf("Mic"), [](std::uint64_t) { return kMine; }};
  PipeFeeder otherFeeder{server.pipeOf("Other"), [](std::uint64_t) { return kForeign; }};
};

INSTANTIATE_TEST_SUITE_P(Servers, PulseRecoveryTest,
                         testing::Values(Kind::kPulseAudio, Kind::kPipeWire),
                         [](const auto &server) { return PrivateServer::nameOf(server.param); });

TEST_P(PulseRecoveryTest, ASourceThatReturnsIsHeardAgainAndNoOtherMeanwhile) {
  PulseAudioHardware hardware;
  const AudioDeviceID mic = deviceNamed(hardware, "Mic");
  ASSERT_NE(mic, 0U);
  PropertyLog log(hardware, mic);
  Ear ear(hardware, mic);
  ASSERT_TRUE(eventually([&] { return ear.hears(kMine, 0, kPlenty); }));

  server.unload(micModule);
  ASSERT_TRUE(eventually([&] { return log.count(kAudioDevicePropertyDeviceIsAlive) == 1; }));
  EXPECT_FALSE(isAlive(hardware, mic));
  EXPECT_EQ(deviceNamed(hardware, "Mic"), mic) << "a device that is away stays listed";
  const std::size_t before = ear.frames();
  std::this_thread::sleep_for(std::chrono::milliseconds(500));  // time for a wrong move
  EXPECT_EQ(ear.frames(), before);

  ASSERT_NE(loadMic(), "");
  ASSERT_TRUE(eventually([&] { return ear.hears(kMine, before, kPlenty); }));
  EXPECT_EQ(log.count(kAudioDevicePropertyDeviceIsAlive), 2);
  EXPECT_TRUE(isAlive(hardware, mic));
  EXPECT_EQ(deviceNamed(hardware, "Mic"), mic);
  expectNothingForeign(ear);
}

TEST_P(PulseRecoveryTest, AfterAServersCrashTheSameDeviceIsHeardAgain) {
  PulseAudioHardware hardware;
  const AudioDeviceID mic = deviceNamed(hardware, "Mic");
  ASSERT_NE(mic, 0U);
  PropertyLog log(hardware, mic);
  Ear ear(hardware, mic);
  ASSERT_TRUE(eventually([&] { return ear.hears(kMine, 0, kPlenty); }));

  server.kill();
  ASSERT_TRUE(eventually([&] { return !isAlive(hardware, mic); }));
  EXPECT_TRUE(eventually([&] { return !hardware.connectionError().empty(); }));
  EXPECT_GE(log.count(kAudioDevicePropertyDeviceIsAlive), 1);
  EXPECT_EQ(setVolume(hardware, mic, 1, 0.5F), kAudioHardwareBadDeviceError);
  const std::size_t before = ear.frames();

  ASSERT_TRUE(server.start());
  ASSERT_NE(loadOther(), "");
  ASSERT_NE(loadMic(), "");
  ASSERT_TRUE(eventually([&] { return ear.hears(kMine, before, kPlenty); }));
  EXPECT_TRUE(isAlive(hardware, mic));
  EXPECT_EQ(hardware.connectionError(), "");
  EXPECT_EQ(deviceNamed(hardware, "Mic"), mic);
  expectNothingForeign(ear);
}

TEST_P(PulseRecoveryTest, ADeviceStartedWhileItIsAwayIsHeardWhenItReturns) {
  PulseAudioHardware hardware;
  const AudioDeviceID mic = deviceNamed(hardware, "Mic");
  server.unload(micModule);
  ASSERT_TRUE(eventually([&] { return !isAlive(hardware, mic); }));
  Ear ear(hardware, mic);
  ASSERT_NE(loadMic(), "");
  EXPECT_TRUE(eventually([&] { return ear.hears(kMine, 0, kPlenty); }));
  expectNothingForeign(ear);
}

TEST_P(PulseRecoveryTest, AChangedRateIsToldAndHeard) {
  PulseAudioHardware hardware;
  const AudioDeviceID mic = deviceNamed(hardware, "Mic");
  PropertyLog log(hardware, mic);
  Ear ear(hardware, mic);
  ASSERT_TRUE(eventually([&] { return ear.hears(kMine, 0, kPlenty); }));
  server.unload(micModule);
  ASSERT_NE(loadMic(44100), "");
  ASSERT_TRUE(eventually([&] { return log.count(kAudioDevicePropertyStreamFormat) == 1; }));
  EXPECT_EQ(streamFormat(hardware, mic)->mSampleRate, 44100.0);
  EXPECT_EQ(log.count(kAudioDevicePropertyStreamConfiguration), 0);
  const std::size_t before = ear.frames();
  EXPECT_TRUE(eventually([&] { return ear.hears(kMine, before, kPlenty); }));
}

TEST_P(PulseRecoveryTest, ARateThatChangedWhileNobodyListenedIsToldAtTheNextStart) {
  PulseAudioHardware hardware;
  const AudioDeviceID mic = deviceNamed(hardware, "Mic");
  ASSERT_EQ(streamFormat(hardware, mic)->mSampleRate, 48000.0);
  server.unload(micModule);
  ASSERT_TRUE(eventually([&] { return !isAlive(hardware, mic); }));
  ASSERT_NE(loadMic(44100), "");
  ASSERT_TRUE(eventually([&] { return isAlive(hardware, mic); }));
  PropertyLog log(hardware, mic);
  const Ear ear(hardware, mic);
  EXPECT_TRUE(eventually([&] { return log.count(kAudioDevicePropertyStreamFormat) == 1; }));
}

// A real source may be named as a sink's monitor would be, and the server then offers the monitor
// under its name.
TEST_P(PulseRecoveryTest, AMonitorThatTakesTheNameOfASourceIsNotHeardInItsPlace) {
  if (GetParam() == Kind::kPulseAudio)
    GTEST_SKIP() << "names are unique on PulseAudio";
  ASSERT_NE(server.loadSource("foo.monitor", 48000, 1, "device.description=Foo"), "");
  const PipeFeeder feeder(server.pipeOf("foo.monitor"), [](std::uint64_t) { return kMine; });
  PrivateServer::control({"load-module", "module-null-sink", "sink_name=foo"});
  PulseAudioHardware hardware;
  const AudioDeviceID foo = deviceNamed(hardware, "Foo");
  ASSERT_NE(foo, 0U);
  const Ear ear(hardware, foo);
  // Silence or nothing would be the monitor's; the source's own signal is the only thing allowed.
  std::this_thread::sleep_for(std::chrono::milliseconds(1000));
  const std::vector<float> samples = ear.samplesFrom(0);
  EXPECT_TRUE(std::ranges::all_of(samples, [](float sample) { return sample != 0.0F; }))
      << samples.size();
}

TEST_P(PulseRecoveryTest, AFrozenServerHoldsUpNeitherReadsNorWritesNorStopping) {
  auto hardware = std::make_unique<PulseAudioHardware>();
  const AudioDeviceID mic = deviceNamed(*hardware, "Mic");
  auto ear = std::make_unique<Ear>(*hardware, mic);
  ASSERT_TRUE(eventually([&] { return ear->hears(kMine, 0, kPlenty); }));
  server.freeze();
  // The server stays frozen until the last of it is done, so whatever waits for it never ends.
  auto rest = std::async(std::launch::async, [&] {
    EXPECT_TRUE(isAlive(*hardware, mic));
    EXPECT_EQ(setVolume(*hardware, mic, 1, 0.5F), noErr);
    ear.reset();
    { const Ear startedMeanwhile(*hardware, mic); }
    hardware.reset();
  });
  EXPECT_EQ(rest.wait_for(std::chrono::seconds(5)), std::future_status::ready);
  server.thaw();
}

TEST_P(PulseRecoveryTest, AServerThatThawsIsHeardOnAndTakesTheWritesMadeMeanwhile) {
  PulseAudioHardware hardware;
  const AudioDeviceID mic = deviceNamed(hardware, "Mic");
  Ear ear(hardware, mic);
  ASSERT_TRUE(eventually([&] { return ear.hears(kMine, 0, kPlenty); }));
  server.freeze();
  EXPECT_EQ(setVolume(hardware, mic, 1, 0.5F), noErr);
  std::this_thread::sleep_for(std::chrono::seconds(1));
  server.thaw();
  EXPECT_TRUE(eventually([&] { return volume(hardware, mic, 1) == 0.5F; }));
  // A volume of a half is a gain of an eighth on the servers' cubic scale.
  const std::size_t before = ear.frames();
  EXPECT_TRUE(eventually([&] { return ear.hears(kMine / 8, before, kPlenty); }));
  expectNothingForeign(ear);
}

TEST_P(PulseRecoveryTest, StartingAndStoppingGoesWellWhileTheSourceComesAndGoes) {
  PulseAudioHardware hardware;
  const AudioDeviceID mic = deviceNamed(hardware, "Mic");
  for (int round = 0; round < 40; ++round) {
    const PropertyLog log(hardware, mic);
    const Ear ear(hardware, mic);
    if (round % 8 == 1)
      server.unload(micModule);
    if (round % 8 == 5)
      micModule = loadMic();
    std::this_thread::sleep_for(std::chrono::milliseconds(5 * (round % 5)));
  }
  Ear ear(hardware, mic);
  EXPECT_TRUE(eventually([&] { return ear.hears(kMine, 0, kPlenty); }));
  expectNothingForeign(ear);
}

// Without a bound the server would hand over all that was missed.
TEST_P(PulseRecoveryTest, AfterAStallMostOfWhatWasMissedIsNotHeardLate) {
  PulseAudioHardware hardware;
  const AudioDeviceID mic = deviceNamed(hardware, "Mic");
  Ear ear(hardware, mic);
  ASSERT_TRUE(eventually([&] { return ear.hears(kMine, 0, kPlenty); }));
  const std::uint64_t heardBefore = ear.frames();
  const std::uint64_t writtenBefore = micFeeder.written();
  ear.stallOnce(std::chrono::seconds(3));
  ASSERT_TRUE(eventually([&] { return ear.isStalling(); }));
  ASSERT_TRUE(eventually([&] { return !ear.isStalling(); }));
  ASSERT_TRUE(eventually([&] { return ear.frames() > heardBefore + 2 * 48000; }));
  const std::uint64_t heard = ear.frames() - heardBefore;
  const std::uint64_t written = micFeeder.written() - writtenBefore;
  EXPECT_GT(written - heard, 48000U) << "less than a second was left out";
}

// PipeWire goes on delivering from a source that was suspended by hand.
TEST(PulseSuspensionTest, ASuspendedSourceFallsSilentAndIsHeardAgainWithoutHavingBeenAway) {
  PrivateServer server(Kind::kPulseAudio);
  ASSERT_TRUE(server.start());
  ASSERT_NE(server.loadSource("Mic", 48000, 1, "device.description=Mic"), "");
  const PipeFeeder feeder(server.pipeOf("Mic"), [](std::uint64_t) { return kMine; });
  PulseAudioHardware hardware;
  const AudioDeviceID mic = deviceNamed(hardware, "Mic");
  const PropertyLog log(hardware, mic);
  const Ear ear(hardware, mic);
  ASSERT_TRUE(eventually([&] { return ear.hears(kMine, 0, kPlenty); }));
  PrivateServer::control({"suspend-source", "Mic", "1"});
  // The answer to the command does not wait for what is still on its way.
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  const std::size_t before = ear.frames();
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_EQ(ear.frames(), before);
  PrivateServer::control({"suspend-source", "Mic", "0"});
  EXPECT_TRUE(eventually([&] { return ear.hears(kMine, before, kPlenty); }));
  EXPECT_EQ(log.count(kAudioDevicePropertyDeviceIsAlive), 0);
}

TEST(PulseFrozenServerTest, AFirstListingFromAFrozenServerEndsEmptyAndSaysWhy) {
  PrivateServer server(Kind::kPulseAudio);
  ASSERT_TRUE(server.start());
  server.freeze();
  {
    PulseAudioHardware hardware;
    EXPECT_TRUE(deviceIDs(hardware).empty());
    EXPECT_NE(hardware.connectionError(), "");
    server.thaw();
    EXPECT_TRUE(eventually([&] { return deviceIDs(hardware).size() == 1; }));
  }
}

}  // namespace
}  // namespace orvane::test
