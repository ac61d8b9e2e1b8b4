#include "audio/AUInputUnit.h"

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <thread>

#include "tests/audio/FakePopUpButton.h"
#include "tests/audio/InputUnitRig.h"

namespace orvane {
namespace {

const Lines kStart41 = {
    "AddIOProc 41 proc refCon",
    "AddListener 41 0 in livn listener unit",
    "AddListener 41 0 in slay listener unit",
    "AddListener 41 0 in sfmt listener unit",
    "AddListener 41 0 in ssrc listener unit",
    "AddListener 41 0 in diff listener unit",
    "AddListener 41 * in volm listener unit",
    "AddListener 41 * in vdb# listener unit",
    "Start 41 proc",
};
const Lines kStop41 = {
    "Stop 41 proc",
    "RemoveListener 41 0 in livn listener",
    "RemoveListener 41 0 in slay listener",
    "RemoveListener 41 0 in sfmt listener",
    "RemoveListener 41 0 in ssrc listener",
    "RemoveListener 41 0 in diff listener",
    "RemoveListener 41 * in volm listener",
    "RemoveListener 41 * in vdb# listener",
    "RemoveIOProc 41 proc",
};
// One buffer: 8 bytes of header and 16 of buffer.
const Lines kRead41 = {
    "Get 41 0 in sfmt 40",         "Info 41 0 in slay size?", "Get 41 0 in slay 24",
    "Info 41 1 in volm writable?", "Get 41 1 in volm 4",
};

TEST(AUInputUnit, TheFirstDeviceIsReadThenStartedWithoutAStop) {
  FakeDevice device = plainDevice(41);
  device.isVolumeSettable = {true};
  Rig rig({device});
  rig.unit.setInputDeviceAtIndex(0);
  EXPECT_EQ(rig.hardware.calls, kRead41 + kStart41);
  EXPECT_EQ(rig.unit.inputDevice(), 41U);
  EXPECT_EQ(rig.unit.sampleRate(), 48000.0);
}

TEST(AUInputUnit, AnotherDeviceStopsTheOldOneFirst) {
  FakeDevice device = plainDevice(41);
  device.isVolumeSettable = {true};
  FakeDevice other = plainDevice(42, "Other");
  other.sampleRate = 44100.0;
  other.bufferChannels = {2};
  other.isVolumeSettable = {true, true};
  Rig rig({device, other});
  rig.unit.setInputDeviceAtIndex(0);
  rig.hardware.takeCalls();
  rig.unit.setInputDeviceAtIndex(1);
  const Lines next = {
      "Get 42 0 in sfmt 40",
      "Info 42 0 in slay size?",
      "Get 42 0 in slay 24",
      "Info 42 1 in volm writable?",
      "Info 42 2 in volm writable?",
      "Get 42 1 in volm 4",
      "AddIOProc 42 proc refCon",
      "AddListener 42 0 in livn listener unit",
      "AddListener 42 0 in slay listener unit",
      "AddListener 42 0 in sfmt listener unit",
      "AddListener 42 0 in ssrc listener unit",
      "AddListener 42 0 in diff listener unit",
      "AddListener 42 * in volm listener unit",
      "AddListener 42 * in vdb# listener unit",
      "Start 42 proc",
  };
  EXPECT_EQ(rig.hardware.calls, kStop41 + next);
  EXPECT_EQ(rig.unit.sampleRate(), 44100.0);
  EXPECT_EQ(rig.unit.channels(), 2U);
}

TEST(AUInputUnit, AnEntryWithASourceWritesItAfterTheStart) {
  FakeDevice device = sourceDevice(41);
  device.isVolumeSettable = {true};
  Rig rig({device});
  rig.unit.setInputDeviceAtIndex(1);
  const Lines write = {"Set 41 0 in ssrc 4 12"};
  EXPECT_EQ(rig.hardware.calls, kRead41 + kStart41 + write);
}

TEST(AUInputUnit, AnotherSourceOfTheDeviceInUseOnlyWritesTheSource) {
  Rig rig({sourceDevice(41)});
  rig.unit.setInputDeviceAtIndex(0);
  rig.hardware.takeCalls();
  rig.unit.setInputDeviceAtIndex(2);
  EXPECT_EQ(rig.hardware.calls, (Lines{"Set 41 0 in ssrc 4 13"}));
}

TEST(AUInputUnit, TheDeviceLevelEntryOfTheDeviceInUseChangesNothing) {
  Rig rig({plainDevice(41)});
  rig.unit.setInputDeviceAtIndex(0);
  rig.hardware.takeCalls();
  rig.unit.setInputDeviceAtIndex(0);
  EXPECT_TRUE(rig.hardware.calls.empty());
}

TEST(AUInputUnit, AnIndexThatNamesNoEntryDoesNothing) {
  Rig rig({plainDevice(41)});
  for (const std::int64_t index :
       {std::int64_t{-1}, std::int64_t{1}, std::int64_t{-2}, std::int64_t{1} << 32,
        std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()})
    rig.unit.setInputDeviceAtIndex(index);
  EXPECT_TRUE(rig.hardware.calls.empty());
  EXPECT_EQ(rig.unit.inputDevice(), 0U);
}

TEST(AUInputUnit, AStoredNameSelectsItsItem) {
  Rig rig({plainDevice(41), plainDevice(42, "Other")});
  FakePopUpButton button;
  rig.unit.setupPopUpButton(&button);
  rig.unit.setInputDeviceWithName("Acme : Other");
  EXPECT_EQ(button.selected, 1);
  EXPECT_EQ(rig.unit.inputDevice(), 42U);
}

TEST(AUInputUnit, AnUnknownOrMissingNameSelectsTheFirstItem) {
  for (const std::optional<std::string> &name :
       {std::optional<std::string>(), std::optional<std::string>("Gone : Mic"),
        std::optional<std::string>("")}) {
    Rig rig({plainDevice(41), plainDevice(42, "Other")});
    FakePopUpButton button;
    rig.unit.setupPopUpButton(&button);
    rig.unit.setInputDeviceWithName(name);
    EXPECT_EQ(button.selected, 0);
    EXPECT_EQ(rig.unit.inputDevice(), 41U);
  }
}

TEST(AUInputUnit, WithoutAMenuANameSelectsTheFirstEntry) {
  Rig rig({plainDevice(41), plainDevice(42, "Other")});
  rig.unit.setInputDeviceWithName("Acme : Other");
  EXPECT_EQ(rig.unit.inputDevice(), 41U);
}

TEST(AUInputUnit, WithAnEmptyListNothingReachesTheHardware) {
  Rig rig({});
  FakePopUpButton button;
  rig.unit.setupPopUpButton(&button);
  EXPECT_EQ(button.numberOfItems(), 0);
  rig.unit.start();
  rig.unit.stop();
  rig.unit.setInputDeviceAtIndex(0);
  rig.unit.setInputDeviceWithName(std::nullopt);
  EXPECT_TRUE(rig.hardware.calls.empty());
  EXPECT_EQ(button.actions, (Lines{"remove all"}));
}

TEST(AUInputUnit, ProceduresAreOnlyStored) {
  Rig rig({plainDevice(41)});
  rig.unit.setIOProc(ignoreInput, nullptr);
  rig.unit.setListenerProc(hear, &rig.heard);
  EXPECT_TRUE(rig.hardware.calls.empty());
  EXPECT_TRUE(rig.heard.changes.empty());
}

TEST(AUInputUnit, StopAndStartMirrorEachOther) {
  Rig rig({plainDevice(41)});
  rig.unit.setInputDeviceAtIndex(0);
  rig.hardware.takeCalls();
  rig.unit.stop();
  EXPECT_TRUE(rig.hardware.listeners.empty());
  rig.unit.start();
  EXPECT_EQ(rig.hardware.calls, kStop41 + kStart41);
}

TEST(AUInputUnit, ChannelsAreTheSumOverAllBuffers) {
  FakeDevice device = plainDevice(41);
  device.bufferChannels = {1, 2};
  Rig rig({device});
  rig.unit.setInputDeviceAtIndex(0);
  EXPECT_EQ(rig.unit.channels(), 3U);
  EXPECT_EQ(rig.hardware.calls[2], "Get 41 0 in slay 40");
}

TEST(AUInputUnit, ADeviceWithoutBuffersHasNoChannels) {
  FakeDevice device = plainDevice(41);
  device.bufferChannels = {};
  device.isVolumeSettable = {true};
  Rig rig({device});
  rig.unit.setInputDeviceAtIndex(0);
  EXPECT_EQ(rig.unit.channels(), 0U);
  EXPECT_FALSE(rig.unit.isVolumeWritable());
  EXPECT_EQ(rig.unit.inputVolume(), 0.5F);
}

TEST(AUInputUnit, ABufferCountBeyondTheBytesEndsWithThem) {
  Rig rig({plainDevice(41)});
  std::vector<std::byte> bytes(24, std::byte{0});
  bytes[0] = bytes[1] = bytes[2] = bytes[3] = std::byte{0xFF};
  bytes[8] = std::byte{5};  // channels of the one buffer that is there
  rig.hardware.rawValues[kAudioDevicePropertyStreamConfiguration] = bytes;
  rig.unit.setInputDeviceAtIndex(0);
  EXPECT_EQ(rig.unit.channels(), 5U);
}

TEST(AUInputUnit, AbsurdChannelCountsDoNotHang) {
  FakeDevice device = plainDevice(41);
  device.bufferChannels = {0xFFFFFFFFU};
  device.isVolumeSettable.assign(5000, true);
  Rig rig({device});
  rig.unit.setInputDeviceAtIndex(0);
  EXPECT_EQ(rig.unit.channels(), 0xFFFFFFFFU);
  EXPECT_LT(rig.hardware.calls.size(), 5000U);
}

TEST(AUInputUnit, OneChannelWhoseVolumeIsFixedMakesTheVolumeReadOnly) {
  FakeDevice device = plainDevice(41);
  device.bufferChannels = {3};
  device.isVolumeSettable = {true, false, true};
  device.volume = 0.25F;
  Rig rig({device});
  rig.unit.setInputDeviceAtIndex(0);
  EXPECT_FALSE(rig.unit.isVolumeWritable());
  EXPECT_EQ(rig.unit.inputVolume(), 0.25F);
  // The third channel is not asked any more.
  EXPECT_EQ(rig.hardware.calls[4], "Info 41 2 in volm writable?");
  EXPECT_EQ(rig.hardware.calls[5], "Get 41 1 in volm 4");
}

TEST(AUInputUnit, VolumeThatCanBeSetOnEveryChannelIsWritable) {
  FakeDevice device = plainDevice(41);
  device.bufferChannels = {2};
  device.isVolumeSettable = {true, true};
  Rig rig({device});
  rig.unit.setInputDeviceAtIndex(0);
  EXPECT_TRUE(rig.unit.isVolumeWritable());
}

struct RefreshRow {
  AudioDevicePropertyID propertyID;
  Lines calls;
};

TEST(AUInputUnit, EachNotificationReadsWhatItIsAbout) {
  const Lines volume = {"Info 41 1 in volm writable?", "Get 41 1 in volm 4"};
  const std::vector<RefreshRow> rows = {
      {kAudioDevicePropertyDeviceHasChanged, volume},
      {kAudioDevicePropertyDataSource, volume},
      {kAudioDevicePropertyVolumeScalar, volume},
      {kAudioDevicePropertyStreamFormat, {"Get 41 0 in sfmt 40"}},
      {kAudioDevicePropertyStreamConfiguration, {"Info 41 0 in slay size?", "Get 41 0 in slay 24"}},
      {kAudioDevicePropertyDeviceIsAlive, {}},
      {kAudioDevicePropertyVolumeRangeDecibels, {}},
  };
  FakeDevice device = plainDevice(41);
  device.isVolumeSettable = {true};
  Rig rig({device});
  rig.unit.setInputDeviceAtIndex(0);
  for (const RefreshRow &row : rows) {
    rig.hardware.takeCalls();
    rig.heard.changes.clear();
    rig.hardware.notify(41, 0, 1, row.propertyID);
    EXPECT_EQ(rig.hardware.calls, row.calls);
    ASSERT_EQ(rig.heard.changes.size(), 1U);
    EXPECT_EQ(rig.heard.changes[0].propertyID, row.propertyID);
  }
}

TEST(AUInputUnit, TheListenerHearsOfAChangeAfterItWasRead) {
  Rig rig({plainDevice(41)});
  rig.unit.setInputDeviceAtIndex(0);
  rig.hardware.devices[0].sampleRate = 96000.0;
  rig.hardware.notify(41, 0, 1, kAudioDevicePropertyStreamFormat);
  EXPECT_EQ(rig.heard.rates, (std::vector<Float64>{96000.0}));
}

TEST(AUInputUnit, ANotificationIsPassedOnUnchangedAndItsAnswerReturned) {
  Rig rig({plainDevice(41)});
  rig.unit.setInputDeviceAtIndex(0);
  rig.heard.answer = 77;
  EXPECT_EQ(AUInputUnitPropertyListener(41, 2, 0, kAudioDevicePropertyVolumeScalar, &rig.unit), 77);
  ASSERT_EQ(rig.heard.changes.size(), 1U);
  EXPECT_EQ(rig.heard.changes[0].device, 41U);
  EXPECT_EQ(rig.heard.changes[0].channel, 2U);
  EXPECT_EQ(rig.heard.changes[0].isInput, 0);
  EXPECT_EQ(rig.heard.changes[0].propertyID, kAudioDevicePropertyVolumeScalar);
}

TEST(AUInputUnit, WithoutAListenerANotificationIsAnsweredWithNoError) {
  FakeHardware hardware({plainDevice(41)});
  AUInputUnit unit(hardware);
  EXPECT_EQ(AUInputUnitPropertyListener(41, 0, 1, kAudioDevicePropertyDeviceIsAlive, &unit), noErr);
}

TEST(AUInputUnit, AFailedReadLeavesTheFieldsAsTheyWere) {
  FakeDevice device = plainDevice(41);
  device.bufferChannels = {2};
  device.isVolumeSettable = {true, true};
  Rig rig({device});
  rig.unit.setInputDeviceAtIndex(0);
  rig.hardware.devices[0].sampleRate = 8000.0;
  rig.hardware.devices[0].bufferChannels = {1};
  rig.hardware.devices[0].volume = 1.0F;
  rig.hardware.firstFailing = 1;
  rig.unit.setStreamFormat();
  rig.unit.setStreamConfiguration();
  rig.unit.setVolumeState();
  EXPECT_EQ(rig.unit.sampleRate(), 48000.0);
  EXPECT_EQ(rig.unit.channels(), 2U);
  EXPECT_EQ(rig.unit.inputVolume(), 0.5F);
}

TEST(AUInputUnit, TheMainThreadMayReadWhileNotificationsAreTakenIn) {
  FakeDevice device = plainDevice(41);
  device.isVolumeSettable = {true, true};
  Rig rig({device});
  rig.unit.setInputDeviceAtIndex(0);
  std::atomic<bool> isOver = false;
  std::thread notifier([&] {
    for (int i = 0; i < 2000; ++i) {
      rig.hardware.devices[0].sampleRate = i % 2 == 0 ? 96000.0 : 48000.0;
      rig.hardware.devices[0].bufferChannels = {i % 2 == 0 ? 2U : 1U};
      rig.hardware.notify(41, 0, 1, kAudioDevicePropertyStreamFormat);
      rig.hardware.notify(41, 0, 1, kAudioDevicePropertyStreamConfiguration);
      rig.hardware.notify(41, 0, 1, kAudioDevicePropertyVolumeScalar);
    }
    isOver = true;
  });
  bool areWhole = true;
  while (!isOver) {
    const Float64 rate = rig.unit.sampleRate();
    const UInt32 channels = rig.unit.channels();
    areWhole = areWhole && (rate == 48000.0 || rate == 96000.0) &&
               (channels == 1 || channels == 2) && rig.unit.isVolumeWritable() &&
               rig.unit.inputVolume() == 0.5F;
  }
  notifier.join();
  EXPECT_TRUE(areWhole);
}

}  // namespace
}  // namespace orvane
