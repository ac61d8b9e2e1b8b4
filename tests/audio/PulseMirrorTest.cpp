#include "audio/PulseMirror.h"

#include <gtest/gtest.h>

#include <vector>

namespace orvane {
namespace {

PulseSource source(const std::string &name, std::uint32_t index) {
  PulseSource source;
  source.name = name;
  source.description = "About " + name;
  source.manufacturer = "Acme";
  source.index = index;
  source.sampleSpec = {PA_SAMPLE_S16LE, 48000, 2};
  pa_channel_map_init_stereo(&source.channelMap);
  pa_cvolume_set(&source.volume, 2, PA_VOLUME_NORM);
  source.ports = {{"mic", "Microphone"}, {"line", "Line In"}};
  source.activePort = "mic";
  return source;
}

// "ID channel property" of each change, in order.
std::vector<std::string> texts(const std::vector<PulseMirror::Change> &changes) {
  std::vector<std::string> all;
  for (const PulseMirror::Change &change : changes) {
    std::string code;
    for (int shift = 24; shift >= 0; shift -= 8)
      code += static_cast<char>(change.property >> shift & 0xFF);
    all.push_back(std::to_string(change.device) + " " + std::to_string(change.channel) + " " +
                  code);
  }
  return all;
}

class PulseMirrorTest : public testing::Test {
 protected:
  std::vector<std::string> list(const std::vector<PulseSource> &sources) {
    return take(mirror.planListing(sources));
  }
  std::vector<std::string> take(PulseMirror::Plan plan) {
    mirror.commit(std::move(plan.devices));
    return texts(plan.changes);
  }

  PulseMirror mirror;
  using Texts = std::vector<std::string>;
  using IDs = std::vector<AudioDeviceID>;
};

TEST_F(PulseMirrorTest, DevicesAreNumberedFromOneInTheServersOrderAndKeepTheirNumbers) {
  EXPECT_EQ(list({source("a", 7), source("b", 8)}), Texts{});
  EXPECT_EQ(mirror.deviceIDs(), (IDs{1, 2}));
  list({source("c", 9), source("b", 8), source("a", 7)});
  EXPECT_EQ(mirror.deviceIDs(), (IDs{3, 2, 1}));
}

TEST_F(PulseMirrorTest, AnUnchangedListingTellsNothing) {
  list({source("a", 7)});
  EXPECT_EQ(list({source("a", 7)}), Texts{});
}

TEST_F(PulseMirrorTest, ADeviceThatGoesStaysListedAsAwayAndReturnsUnderItsNumber) {
  list({source("a", 7), source("b", 8)});
  EXPECT_EQ(list({source("b", 8)}), (Texts{"1 0 livn", "1 0 diff"}));
  EXPECT_EQ(mirror.deviceIDs(), (IDs{2, 1}));
  EXPECT_FALSE(mirror.device(1)->alive);
  EXPECT_FALSE(mirror.streamSpec(1).has_value());
  EXPECT_EQ(list({source("b", 8)}), Texts{});
  EXPECT_EQ(list({source("b", 8), source("a", 12)}), (Texts{"1 0 livn", "1 0 diff"}));
  EXPECT_TRUE(mirror.device(1)->alive);
}

TEST_F(PulseMirrorTest, ADeviceThatWasAwayBetweenTwoListingsIsToldAndItsStreamIsOutOfDate) {
  list({source("a", 7)});
  const auto before = mirror.streamSpec(1);
  EXPECT_EQ(list({source("a", 8)}), (Texts{"1 0 livn", "1 0 diff"}));
  EXPECT_FALSE(before == mirror.streamSpec(1));
}

TEST_F(PulseMirrorTest, ALostServerTakesAllDevicesAwayOnce) {
  list({source("a", 7), source("b", 8)});
  EXPECT_EQ(take(mirror.planLoss()), (Texts{"1 0 livn", "1 0 diff", "2 0 livn", "2 0 diff"}));
  EXPECT_EQ(take(mirror.planLoss()), Texts{});
}

TEST_F(PulseMirrorTest, AChangedRateIsAChangedFormatOnly) {
  list({source("a", 7)});
  PulseSource changed = source("a", 7);
  changed.sampleSpec.rate = 44100;
  EXPECT_EQ(list({changed}), (Texts{"1 0 sfmt", "1 0 diff"}));
  EXPECT_EQ(mirror.device(1)->sampleRate, 44100.0);
}

TEST_F(PulseMirrorTest, AChangedChannelCountIsAChangedFormatConfigurationAndVolume) {
  list({source("a", 7)});
  PulseSource mono = source("a", 7);
  mono.sampleSpec.channels = 1;
  pa_channel_map_init_mono(&mono.channelMap);
  pa_cvolume_set(&mono.volume, 1, PA_VOLUME_NORM);
  EXPECT_EQ(list({mono}), (Texts{"1 0 sfmt", "1 0 slay", "1 2 volm", "1 0 diff"}));
}

TEST_F(PulseMirrorTest, AVolumeIsToldForTheChannelThatChanged) {
  list({source("a", 7)});
  PulseSource changed = source("a", 7);
  changed.volume.values[1] = 1000;
  EXPECT_EQ(list({changed}), (Texts{"1 2 volm", "1 0 diff"}));
  changed.volumeBase = 30000;
  EXPECT_EQ(list({changed}), (Texts{"1 1 vdb#", "1 2 vdb#", "1 0 diff"}));
  changed.volumeSteps = 12;
  EXPECT_EQ(list({changed}), (Texts{"1 1 vdb#", "1 2 vdb#", "1 0 diff"}));
}

TEST_F(PulseMirrorTest, AChangedPortIsToldAndPortsKeepTheirNumbers) {
  list({source("a", 7)});
  EXPECT_EQ(mirror.device(1)->activeDataSource, 1U);
  PulseSource changed = source("a", 7);
  changed.activePort = "line";
  EXPECT_EQ(list({changed}), (Texts{"1 0 ssrc", "1 0 diff"}));
  EXPECT_EQ(mirror.device(1)->activeDataSource, 2U);
  changed.ports = {{"new", "New"}, {"line", "Line In"}};
  EXPECT_EQ(list({changed}), Texts{"1 0 diff"});
  const std::vector<DataSourceState> expected{{3, "new", "New"}, {2, "line", "Line In"}};
  EXPECT_EQ(mirror.device(1)->dataSources, expected);
}

TEST_F(PulseMirrorTest, PortsAreNumberedForEachDeviceAnew) {
  list({source("a", 7), source("b", 8)});
  EXPECT_EQ(mirror.device(2)->dataSources[0].id, 1U);
}

TEST_F(PulseMirrorTest, AMonitorHasNoStreamAndIsNoInput) {
  PulseSource monitor = source("a", 7);
  monitor.isMonitor = true;
  list({monitor});
  EXPECT_FALSE(mirror.device(1)->isInput);
  EXPECT_FALSE(mirror.streamSpec(1).has_value());
}

TEST_F(PulseMirrorTest, AStreamTakesRateChannelsAndMapOfTheSourceAsFloats) {
  list({source("a", 7)});
  const auto spec = mirror.streamSpec(1);
  ASSERT_TRUE(spec.has_value());
  EXPECT_EQ(spec->device, 1U);
  EXPECT_EQ(spec->source, "a");
  EXPECT_EQ(spec->sampleSpec.format, PA_SAMPLE_FLOAT32NE);
  EXPECT_EQ(spec->sampleSpec.rate, 48000U);
  EXPECT_EQ(spec->sampleSpec.channels, 2);
  EXPECT_EQ(spec->channelMap.map[1], PA_CHANNEL_POSITION_FRONT_RIGHT);
}

TEST_F(PulseMirrorTest, ASourceWithoutAUsableFormatHasNoStream) {
  PulseSource broken = source("a", 7);
  broken.sampleSpec.channels = 0;
  list({broken});
  EXPECT_FALSE(mirror.streamSpec(1).has_value());
}

TEST_F(PulseMirrorTest, OfTwoSourcesOfOneNameTheFirstCounts) {
  PulseSource second = source("a", 8);
  second.sampleSpec.rate = 8000;
  list({source("a", 7), second});
  EXPECT_EQ(mirror.deviceIDs(), IDs{1});
  EXPECT_EQ(mirror.device(1)->sampleRate, 48000.0);
}

}  // namespace
}  // namespace orvane
