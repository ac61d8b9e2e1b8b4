// The devices of real sound servers: their list, their samples, their ports and their volumes.
#include "audio/PulseAudioHardware.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <regex>

#include "tests/servers/ChildProcess.h"
#include "tests/servers/HardwareProbe.h"
#include "tests/servers/PipeFeeder.h"
#include "tests/servers/PrivateServer.h"

namespace orvane::test {
namespace {

using Kind = PrivateServer::Kind;

class PulseAudioHardwareTest : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override { ASSERT_TRUE(server.start()); }

  std::string load(const std::string &name, int channels = 1) {
    return server.loadSource(name, 48000, channels, "device.description=" + name);
  }

  PrivateServer server{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Servers, PulseAudioHardwareTest,
                         testing::Values(Kind::kPulseAudio, Kind::kPipeWire),
                         [](const auto &server) { return PrivateServer::nameOf(server.param); });

std::vector<std::string> namesOf(AudioHardware &hardware, bool inputsOnly) {
  std::vector<std::string> names;
  for (const AudioDeviceID id : deviceIDs(hardware)) {
    if (!inputsOnly || streamFormat(hardware, id))
      names.push_back(textProperty(hardware, id, kAudioDevicePropertyDeviceName));
  }
  return names;
}

TEST_P(PulseAudioHardwareTest, EverySourceIsListedInTheServersOrderAndOnlyMonitorsAreNotInputs) {
  ASSERT_NE(load("First"), "");
  ASSERT_NE(load("Second"), "");
  PulseAudioHardware hardware;
  const std::vector<std::string> inputs{"First", "Second"};
  EXPECT_EQ(namesOf(hardware, true), inputs);
  const std::vector<std::string> all = namesOf(hardware, false);
  ASSERT_EQ(all.size(), 3U);
  EXPECT_EQ(all[0].substr(0, 11), "Monitor of ");
  EXPECT_EQ(hardware.connectionError(), "");
}

TEST_P(PulseAudioHardwareTest, AMonitorIsNeverStarted) {
  PulseAudioHardware hardware;
  const std::vector<AudioDeviceID> ids = deviceIDs(hardware);
  ASSERT_EQ(ids.size(), 1U);
  UInt32 size = 0;
  EXPECT_NE(hardware.AudioDeviceGetPropertyInfo(ids[0], 0, 1, kAudioDevicePropertyStreamFormat,
                                                &size, nullptr),
            noErr);
  const AudioDeviceIOProc proc = [](AudioDeviceID, const AudioTimeStamp *, const AudioBufferList *,
                                    const AudioTimeStamp *, AudioBufferList *,
                                    const AudioTimeStamp *, void *) -> OSStatus { return noErr; };
  EXPECT_NE(hardware.AudioDeviceAddIOProc(ids[0], proc, nullptr), noErr);
  EXPECT_NE(hardware.AudioDeviceStart(ids[0], proc), noErr);
}

TEST_P(PulseAudioHardwareTest, TheManufacturerIsTheDevicesVendorAndElseTheDriver) {
  ASSERT_NE(server.loadSource("a", 48000, 1, "device.description=A device.vendor.name=Acme"), "");
  ASSERT_NE(server.loadSource("b", 48000, 1, "device.description=B"), "");
  PulseAudioHardware hardware;
  const auto manufacturer = [&](const char *name) {
    return textProperty(hardware, deviceNamed(hardware, name),
                        kAudioDevicePropertyDeviceManufacturer);
  };
  EXPECT_EQ(manufacturer("A"), "Acme");
  EXPECT_EQ(manufacturer("B"), GetParam() == Kind::kPipeWire ? "PipeWire" : "module-pipe-source.c");
}

// The share of the energy of 100 ms at 48 kHz that lies at the frequency, a whole number of
// periods.
double shareAt(double frequency, const float *samples) {
  constexpr int kCount = 4800;
  double cosine = 0.0;
  double sine = 0.0;
  double energy = 0.0;
  for (int i = 0; i < kCount; ++i) {
    const double phase = 2.0 * std::numbers::pi * frequency * i / 48000.0;
    const double sample = static_cast<double>(samples[i]);
    cosine += sample * std::cos(phase);
    sine += sample * std::sin(phase);
    energy += sample * sample;
  }
  return energy > 0.0 ? (cosine * cosine + sine * sine) / (energy * kCount / 2.0) : 0.0;
}

TEST_P(PulseAudioHardwareTest, AToneThatIsPlayedInIsHeardAndTheSampleClockCountsItsFrames) {
  ASSERT_NE(load("Mic"), "");
  const PipeFeeder feeder(server.pipeOf("Mic"), [](std::uint64_t n) {
    const double phase = 2.0 * std::numbers::pi * 440.0 * static_cast<double>(n % 48000) / 48000.0;
    return static_cast<float>(0.5 * std::sin(phase));
  });
  PulseAudioHardware hardware;
  const AudioDeviceID mic = deviceNamed(hardware, "Mic");
  ASSERT_NE(mic, 0U);
  Ear ear(hardware, mic);
  ASSERT_TRUE(eventually([&] { return ear.frames() >= 48000; }));

  const std::vector<float> samples = ear.samplesFrom(0);
  double best440 = 0.0;
  double best450 = 0.0;
  for (std::size_t i = 0; i + 4800 <= samples.size(); i += 2400) {
    best440 = std::max(best440, shareAt(440.0, &samples[i]));
    best450 = std::max(best450, shareAt(450.0, &samples[i]));
  }
  EXPECT_GT(best440, 0.99);
  EXPECT_LT(best450, 0.5);
  EXPECT_GT(ear.firstTime(), 0.0);
  EXPECT_EQ(ear.clockBreaks(), 0);
}

TEST_P(PulseAudioHardwareTest, AStreamHasTheRateAndTheChannelsOfItsSource) {
  ASSERT_NE(server.loadSource("Mic", 44100, 2, "device.description=Mic"), "");
  PulseAudioHardware hardware;
  const AudioDeviceID mic = deviceNamed(hardware, "Mic");
  const auto format = streamFormat(hardware, mic);
  ASSERT_TRUE(format.has_value());
  EXPECT_EQ(format->mSampleRate, 44100.0);
  EXPECT_EQ(format->mChannelsPerFrame, 2U);
  const PipeFeeder feeder(
      server.pipeOf("Mic"), [](std::uint64_t) { return 0.25F; }, 44100, 2);
  Ear ear(hardware, mic);
  ASSERT_TRUE(eventually([&] { return ear.hears(0.25F, 0, 8820); }));
  EXPECT_EQ(ear.channels(), 2U);
}

TEST_P(PulseAudioHardwareTest, VolumesWrittenOneChannelAfterAnotherDoNotUndoOneAnother) {
  ASSERT_NE(load("Mic", 2), "");
  PulseAudioHardware hardware;
  const AudioDeviceID mic = deviceNamed(hardware, "Mic");
  Boolean writable = 0;
  EXPECT_EQ(hardware.AudioDeviceGetPropertyInfo(mic, 2, 1, kAudioDevicePropertyVolumeScalar,
                                                nullptr, &writable),
            noErr);
  EXPECT_EQ(writable, 1);
  for (const Float32 scalar : {0.75F, 0.5F}) {
    EXPECT_EQ(setVolume(hardware, mic, 1, scalar), noErr);
    EXPECT_EQ(setVolume(hardware, mic, 2, scalar / 2), noErr);
    EXPECT_TRUE(eventually([&] {
      return volume(hardware, mic, 1) == scalar && volume(hardware, mic, 2) == scalar / 2;
    }));
  }
  const std::string told = PrivateServer::control({"get-source-volume", "Mic"});
  EXPECT_TRUE(std::regex_search(told, std::regex("left: 32768 .*right: 16384 "))) << told;
}

TEST_P(PulseAudioHardwareTest, AVolumeChangedElsewhereIsToldForTheChannelThatChanged) {
  ASSERT_NE(load("Mic", 2), "");
  PulseAudioHardware hardware;
  const AudioDeviceID mic = deviceNamed(hardware, "Mic");
  PropertyLog log(hardware, mic);
  ASSERT_EQ(volume(hardware, mic, 1), 1.0F);
  PrivateServer::control({"set-source-volume", "Mic", "65536", "16384"});
  EXPECT_TRUE(eventually([&] { return log.count(kAudioDevicePropertyVolumeScalar, 2) > 0; }));
  EXPECT_TRUE(eventually([&] { return log.count(kAudioDevicePropertyDeviceHasChanged) > 0; }));
  EXPECT_EQ(volume(hardware, mic, 2), 0.25F);
  EXPECT_EQ(log.count(kAudioDevicePropertyVolumeScalar, 1), 0);
}

TEST_P(PulseAudioHardwareTest, AVolumeIsAtMostOneAndMustBeANumber) {
  ASSERT_NE(load("Mic"), "");
  PulseAudioHardware hardware;
  const AudioDeviceID mic = deviceNamed(hardware, "Mic");
  PropertyLog log(hardware, mic);
  PrivateServer::control({"set-source-volume", "Mic", "98304"});
  EXPECT_TRUE(eventually([&] { return log.count(kAudioDevicePropertyVolumeScalar, 1) > 0; }));
  EXPECT_EQ(volume(hardware, mic, 1), 1.0F);
  EXPECT_NE(setVolume(hardware, mic, 1, std::nanf("")), noErr);
  EXPECT_NE(setVolume(hardware, mic, 2, 0.5F), noErr);
}

TEST(PulseAudioHardwarePortsTest, APortIsADataSourceAndSwitchingItDoesNotDisturbTheStream) {
  PrivateServer server(Kind::kPipeWire);
  ASSERT_TRUE(server.start());
  const ChildProcess card({ORVANE_FAKE_CARD});
  ASSERT_TRUE(eventually([] {
    return PrivateServer::control({"list", "sources"}).find("analog-input-linein") !=
           std::string::npos;
  }));
  PulseAudioHardware hardware;
  const AudioDeviceID mic = deviceNamed(hardware, "Port mic");
  ASSERT_NE(mic, 0U);
  EXPECT_EQ(textProperty(hardware, mic, kAudioDevicePropertyDeviceManufacturer), "Test vendor");

  Boolean writable = 0;
  EXPECT_EQ(hardware.AudioDeviceGetPropertyInfo(mic, 0, 1, kAudioDevicePropertyDataSource, nullptr,
                                                &writable),
            noErr);
  EXPECT_EQ(writable, 1);
  const std::vector<UInt32> sources = dataSources(hardware, mic);
  ASSERT_EQ(sources, (std::vector<UInt32>{1, 2}));
  EXPECT_EQ(dataSourceName(hardware, mic, 1), "Microphone");
  EXPECT_EQ(dataSourceName(hardware, mic, 2), "Line In");
  ASSERT_EQ(dataSource(hardware, mic), 1U);

  PropertyLog log(hardware, mic);
  Ear ear(hardware, mic);
  ASSERT_TRUE(eventually([&] { return ear.frames() > 0; }));
  const auto select = [&](UInt32 source) {
    return hardware.AudioDeviceSetProperty(mic, nullptr, 0, 1, kAudioDevicePropertyDataSource,
                                           sizeof source, &source);
  };
  EXPECT_NE(select(3), noErr);
  EXPECT_EQ(select(2), noErr);
  EXPECT_TRUE(eventually([&] { return log.count(kAudioDevicePropertyDataSource) > 0; }));
  EXPECT_EQ(dataSource(hardware, mic), 2U);
  EXPECT_NE(PrivateServer::control({"list", "sources"}).find("Active Port: analog-input-linein"),
            std::string::npos);
  const std::size_t before = ear.frames();
  EXPECT_TRUE(eventually([&] { return ear.frames() > before; }));
  EXPECT_EQ(ear.clockBreaks(), 0);
  EXPECT_EQ(log.count(kAudioDevicePropertyDeviceIsAlive), 0);
}

TEST(PulseAudioHardwareServerTest, WithoutAServerThereAreNoDevicesUntilOneComes) {
  PrivateServer server(Kind::kPulseAudio);
  PulseAudioHardware hardware;
  EXPECT_TRUE(deviceIDs(hardware).empty());
  EXPECT_NE(hardware.connectionError(), "");
  ASSERT_TRUE(server.start());
  EXPECT_TRUE(eventually([&] { return deviceIDs(hardware).size() == 1; }));
  EXPECT_TRUE(eventually([&] { return hardware.connectionError().empty(); }));
}

TEST(PulseAudioHardwareServerTest, AnUnknownDeviceAnswersEverythingWithAnError) {
  PrivateServer server(Kind::kPulseAudio);
  PulseAudioHardware hardware;
  const AudioDeviceID unknown = 77;
  UInt32 size = 4;
  UInt32 value = 5;
  EXPECT_EQ(hardware.AudioDeviceGetProperty(unknown, 0, 1, kAudioDevicePropertyDeviceIsAlive, &size,
                                            &value),
            kAudioHardwareBadDeviceError);
  EXPECT_EQ(hardware.AudioDeviceGetPropertyInfo(unknown, 0, 1, kAudioDevicePropertyDeviceIsAlive,
                                                &size, nullptr),
            kAudioHardwareBadDeviceError);
  EXPECT_EQ(setVolume(hardware, unknown, 1, 0.5F), kAudioHardwareBadDeviceError);
  EXPECT_EQ(value, 5U);
  EXPECT_EQ(size, 4U);
}

}  // namespace
}  // namespace orvane::test
