#include "audio/AUInputUnit.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace orvane
