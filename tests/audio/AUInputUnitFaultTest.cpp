#include "audio/AUInputUnit.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/audio/FakePopUpButton.h"
#include "tests/audio/InputUnitRig.h"

namespace orvane {
namespace {

// The whole life of a unit, on hardware with every kind of device.
void useEverything(FakeHardware &hardware) {
  FakePopUpButton button;
  Heard heard;
  AUInputUnit unit(hardware);
  unit.setIOProc(ignoreInput, &heard);
  unit.setListenerProc(hear, &heard);
  unit.setupPopUpButton(&button);
  EXPECT_EQ(button.items, titlesOf(unit));
  unit.setInputDeviceWithName("Acme : Front");
  for (const AudioDevicePropertyID propertyID :
       {kAudioDevicePropertyDeviceHasChanged, kAudioDevicePropertyStreamFormat,
        kAudioDevicePropertyStreamConfiguration})
    AUInputUnitPropertyListener(unit.inputDevice(), 0, 1, propertyID, &unit);
  EXPECT_EQ(heard.changes.size(), 3U);
  for (std::int64_t i = 0; i < button.numberOfItems(); ++i)
    unit.setInputDeviceAtIndex(i);
  unit.stop();
  // The fake's listeners may outlive the unit when their removal was refused.
  hardware.listeners.clear();
}

std::vector<FakeDevice> everyKindOfDevice() {
  FakeDevice output = plainDevice(5, "Speaker");
  output.hasInput = false;
  FakeDevice plain = plainDevice(4);
  plain.bufferChannels = {1, 2};
  plain.isVolumeSettable = {true, true, true};
  return {plain, output, sourceDevice(6), plainDevice(7)};
}

TEST(AUInputUnit, AnyOneFailingCallIsSurvived) {
  FakeHardware sound(everyKindOfDevice());
  useEverything(sound);
  ASSERT_GT(sound.numberOfCalls, 50U);
  for (std::size_t n = 1; n <= sound.numberOfCalls; ++n) {
    FakeHardware hardware(everyKindOfDevice());
    hardware.firstFailing = hardware.lastFailing = n;
    useEverything(hardware);
    EXPECT_EQ(hardware.faultsMet, 1U) << n;
  }
}

TEST(AUInputUnit, FailureFromAnyCallOnIsSurvived) {
  FakeHardware sound(everyKindOfDevice());
  useEverything(sound);
  for (std::size_t n = 1; n <= sound.numberOfCalls; ++n) {
    FakeHardware hardware(everyKindOfDevice());
    hardware.firstFailing = n;
    useEverything(hardware);
    EXPECT_GE(hardware.faultsMet, 1U) << n;
  }
}

TEST(AUInputUnit, SizesThatLieAreSurvived) {
  const std::vector<UInt32> properties = {
      kAudioHardwarePropertyDevices, kAudioDevicePropertyDeviceName,
      kAudioDevicePropertyDeviceManufacturer, kAudioDevicePropertyDataSources,
      kAudioDevicePropertyStreamConfiguration};
  for (const UInt32 property : properties) {
    for (const UInt32 size : {0U, 1U, 3U, 4U, 7U, 8U, 9U, 1000000U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
      FakeHardware hardware(everyKindOfDevice());
      hardware.reportedSizes[property] = size;
      useEverything(hardware);
      EXPECT_GE(hardware.faultsMet, 1U) << property;
    }
  }
}

TEST(AUInputUnit, ReadsThatClaimMoreOrLessThanTheyWroteAreSurvived) {
  for (const UInt32 size : {0U, 1U, 3U, 5U, 100U, 0xFFFFFFFFU}) {
    FakeHardware hardware(everyKindOfDevice());
    hardware.claimedReadSize = size;
    useEverything(hardware);
    EXPECT_GE(hardware.faultsMet, 1U);
    FakeHardware brief(everyKindOfDevice());
    brief.longestRead = size;
    useEverything(brief);
    EXPECT_GE(brief.faultsMet, 1U);
  }
}

TEST(AUInputUnit, AValueThatIsOnlyWrittenInPartLeavesWhatWasKnown) {
  FakeDevice device = plainDevice(4);
  device.isVolumeSettable = {true};
  Rig rig({device});
  rig.unit.setInputDeviceAtIndex(0);
  rig.hardware.devices.front().sampleRate = 44100.0;
  rig.hardware.devices.front().volume = 0.25F;
  for (const UInt32 bytes : {1U, 3U, 7U}) {
    // Seven bytes hold most of the rate and all of the volume.
    rig.hardware.longestRead = std::min(bytes, 3U);
    rig.hardware.notify(4, 1, 1, kAudioDevicePropertyVolumeScalar);
    rig.hardware.longestRead = bytes;
    rig.hardware.notify(4, 0, 1, kAudioDevicePropertyStreamFormat);
    EXPECT_EQ(rig.unit.sampleRate(), 48000.0) << bytes;
    EXPECT_EQ(rig.unit.inputVolume(), 0.5F) << bytes;
  }
}

}  // namespace
}  // namespace orvane
