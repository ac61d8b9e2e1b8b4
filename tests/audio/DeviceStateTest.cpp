#include "audio/DeviceState.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

namespace orvane {
namespace {

constexpr Boolean kInputSide = 1;
constexpr Boolean kOutputSide = 0;
constexpr UInt32 kWholeDevice = 0;

DeviceState stereoDevice() {
  DeviceState device;
  device.id = 5;
  device.name = "source.lasting";
  device.displayName = "Mikrofon";
  device.manufacturer = "Acme";
  device.sampleRate = 44100.0;
  device.channels = 2;
  device.dataSources = {{1, "port-mic", "Microphone"}, {4, "port-line", ""}};
  device.activeDataSource = 4;
  device.volumes = {32768, 98304};
  device.volumeWritable = true;
  return device;
}

OSStatus info(const DeviceState &device, AudioDevicePropertyID property, UInt32 *size,
              Boolean *writable, UInt32 channel = kWholeDevice) {
  return DeviceStateGetPropertyInfo(device, channel, kInputSide, property, size, writable);
}

OSStatus get(const DeviceState &device, AudioDevicePropertyID property, UInt32 *size, void *data,
             UInt32 channel = kWholeDevice) {
  return DeviceStateGetProperty(device, channel, kInputSide, property, size, data);
}

OSStatus check(const DeviceState &device, AudioDevicePropertyID property, UInt32 size,
               const void *data, UInt32 channel = kWholeDevice) {
  return DeviceStateCheckWrite(device, channel, kInputSide, property, size, data);
}

TEST(DeviceState, TheStreamFormatIsPackedNativeFloatsInterleavedOverAllChannels) {
  AudioStreamBasicDescription format;
  UInt32 size = sizeof format;
  ASSERT_EQ(get(stereoDevice(), kAudioDevicePropertyStreamFormat, &size, &format), noErr);
  EXPECT_EQ(size, 40U);
  EXPECT_EQ(format.mSampleRate, 44100.0);
  EXPECT_EQ(format.mFormatID, 0x6C70636DU);  // 'lpcm'
  EXPECT_EQ(format.mFormatFlags, 9U);        // float 1, packed 8
  EXPECT_EQ(format.mBytesPerPacket, 8U);
  EXPECT_EQ(format.mFramesPerPacket, 1U);
  EXPECT_EQ(format.mBytesPerFrame, 8U);
  EXPECT_EQ(format.mChannelsPerFrame, 2U);
  EXPECT_EQ(format.mBitsPerChannel, 32U);
}

TEST(DeviceState, AStreamFormatThatDoesNotFitLeavesBufferAndSizeAlone) {
  unsigned char bytes[40];
  std::memset(bytes, 0xAB, sizeof bytes);
  UInt32 size = 39;
  EXPECT_EQ(get(stereoDevice(), kAudioDevicePropertyStreamFormat, &size, bytes),
            kAudioHardwareBadPropertySizeError);
  EXPECT_EQ(size, 39U);
  for (const unsigned char byte : bytes)
    EXPECT_EQ(byte, 0xAB);
}

TEST(DeviceState, TheStreamConfigurationIsOneInterleavedBuffer) {
  UInt32 size = 0;
  ASSERT_EQ(info(stereoDevice(), kAudioDevicePropertyStreamConfiguration, &size, nullptr), noErr);
  EXPECT_EQ(size, 24U);
  AudioBufferList list{};
  size = 100;
  ASSERT_EQ(get(stereoDevice(), kAudioDevicePropertyStreamConfiguration, &size, &list), noErr);
  EXPECT_EQ(size, 24U);
  EXPECT_EQ(list.mNumberBuffers, 1U);
  EXPECT_EQ(list.mBuffers[0].mNumberChannels, 2U);
  EXPECT_EQ(list.mBuffers[0].mData, nullptr);
}

TEST(DeviceState, AStreamConfigurationIsCutToTheBuffersThatFit) {
  AudioBufferList list{};
  list.mNumberBuffers = 9;
  UInt32 size = 23;
  ASSERT_EQ(get(stereoDevice(), kAudioDevicePropertyStreamConfiguration, &size, &list), noErr);
  EXPECT_EQ(size, 8U);
  EXPECT_EQ(list.mNumberBuffers, 0U);
  size = 7;
  EXPECT_EQ(get(stereoDevice(), kAudioDevicePropertyStreamConfiguration, &size, &list),
            kAudioHardwareBadPropertySizeError);
  EXPECT_EQ(size, 7U);
}

TEST(DeviceState, NamesAreReadWithTheirClosingNul) {
  UInt32 size = 0;
  ASSERT_EQ(info(stereoDevice(), kAudioDevicePropertyDeviceName, &size, nullptr), noErr);
  EXPECT_EQ(size, 9U);
  char name[9];
  ASSERT_EQ(get(stereoDevice(), kAudioDevicePropertyDeviceName, &size, name), noErr);
  EXPECT_STREQ(name, "Mikrofon");
  char manufacturer[5];
  size = sizeof manufacturer;
  ASSERT_EQ(get(stereoDevice(), kAudioDevicePropertyDeviceManufacturer, &size, manufacturer),
            noErr);
  EXPECT_STREQ(manufacturer, "Acme");
  size = 8;
  EXPECT_EQ(get(stereoDevice(), kAudioDevicePropertyDeviceName, &size, name),
            kAudioHardwareBadPropertySizeError);
}

TEST(DeviceState, AMonitorHasANameButNoInputSide) {
  DeviceState monitor = stereoDevice();
  monitor.isInput = false;
  UInt32 size = 0;
  EXPECT_EQ(info(monitor, kAudioDevicePropertyDeviceName, &size, nullptr), noErr);
  for (const AudioDevicePropertyID property :
       {kAudioDevicePropertyStreamFormat, kAudioDevicePropertyStreamConfiguration,
        kAudioDevicePropertyDataSource, kAudioDevicePropertyDataSources}) {
    unsigned char bytes[64];
    size = sizeof bytes;
    EXPECT_EQ(get(monitor, property, &size, bytes), kAudioHardwareUnknownPropertyError);
    EXPECT_EQ(size, 64U);
  }
}

TEST(DeviceState, AnInputHasNoOutputSide) {
  AudioStreamBasicDescription format;
  UInt32 size = sizeof format;
  EXPECT_EQ(DeviceStateGetProperty(stereoDevice(), kWholeDevice, kOutputSide,
                                   kAudioDevicePropertyStreamFormat, &size, &format),
            kAudioHardwareUnknownPropertyError);
}

TEST(DeviceState, TheDataSourceIsWritableOnlyWhereThereAreSources) {
  Boolean writable = 0;
  EXPECT_EQ(info(stereoDevice(), kAudioDevicePropertyDataSource, nullptr, &writable), noErr);
  EXPECT_EQ(writable, 1);

  DeviceState plain = stereoDevice();
  plain.dataSources.clear();
  writable = 0;
  EXPECT_NE(info(plain, kAudioDevicePropertyDataSource, nullptr, &writable), noErr);
  EXPECT_EQ(writable, 0);
  UInt32 size = 99;
  EXPECT_EQ(info(plain, kAudioDevicePropertyDataSources, &size, nullptr), noErr);
  EXPECT_EQ(size, 0U);
}

TEST(DeviceState, TheSourceListIsCutToWholeEntries) {
  UInt32 ids[2] = {77, 77};
  UInt32 size = 7;
  ASSERT_EQ(get(stereoDevice(), kAudioDevicePropertyDataSources, &size, ids), noErr);
  EXPECT_EQ(size, 4U);
  EXPECT_EQ(ids[0], 1U);
  EXPECT_EQ(ids[1], 77U);
  size = 8;
  ASSERT_EQ(get(stereoDevice(), kAudioDevicePropertyDataSources, &size, ids), noErr);
  EXPECT_EQ(size, 8U);
  EXPECT_EQ(ids[1], 4U);
}

TEST(DeviceState, ASourcesNameIsItsDescriptionOrElseItsLastingName) {
  const auto nameOf = [](UInt32 id) {
    AudioStringRef name = nullptr;
    AudioValueTranslation translation{&id, sizeof id, &name, sizeof name};
    UInt32 size = sizeof translation;
    EXPECT_EQ(
        get(stereoDevice(), kAudioDevicePropertyDataSourceNameForIDCFString, &size, &translation),
        noErr);
    const std::unique_ptr<const std::string> owned(name);
    return owned != nullptr ? *owned : std::string();
  };
  EXPECT_EQ(nameOf(1), "Microphone");
  EXPECT_EQ(nameOf(4), "port-line");
}

TEST(DeviceState, AnUnknownSourceIsNotTranslatedAndItsSlotStaysAsItWas) {
  UInt32 id = 2;
  AudioStringRef name = nullptr;
  AudioValueTranslation translation{&id, sizeof id, &name, sizeof name};
  UInt32 size = sizeof translation;
  EXPECT_NE(
      get(stereoDevice(), kAudioDevicePropertyDataSourceNameForIDCFString, &size, &translation),
      noErr);
  EXPECT_EQ(name, nullptr);
  id = 1;
  translation.mOutputDataSize = 7;
  EXPECT_EQ(
      get(stereoDevice(), kAudioDevicePropertyDataSourceNameForIDCFString, &size, &translation),
      kAudioHardwareBadPropertySizeError);
  EXPECT_EQ(name, nullptr);
}

TEST(DeviceState, TheActiveSourceIsReadAndNoneIsAnError) {
  UInt32 id = 0;
  UInt32 size = sizeof id;
  EXPECT_EQ(get(stereoDevice(), kAudioDevicePropertyDataSource, &size, &id), noErr);
  EXPECT_EQ(id, 4U);
  DeviceState without = stereoDevice();
  without.activeDataSource = 0;
  EXPECT_NE(get(without, kAudioDevicePropertyDataSource, &size, &id), noErr);
  EXPECT_EQ(id, 4U);
}

TEST(DeviceState, AVolumeIsAShareOfTheNormalVolumeAndAtMostOne) {
  DeviceState device = stereoDevice();
  device.volumes = {0, 32768, 65536, 98304};
  const Float32 expected[] = {0.0F, 0.5F, 1.0F, 1.0F};
  for (UInt32 channel = 1; channel <= 4; ++channel) {
    Float32 scalar = -1.0F;
    UInt32 size = sizeof scalar;
    EXPECT_EQ(get(device, kAudioDevicePropertyVolumeScalar, &size, &scalar, channel), noErr);
    EXPECT_EQ(scalar, expected[channel - 1]) << channel;
  }
}

TEST(DeviceState, OnlyChannelsFromOneToTheLastHaveAVolume) {
  Float32 scalar = -1.0F;
  UInt32 size = sizeof scalar;
  for (const UInt32 channel : {0U, 3U, kAudioPropertyWildcardChannel}) {
    EXPECT_EQ(get(stereoDevice(), kAudioDevicePropertyVolumeScalar, &size, &scalar, channel),
              kAudioHardwareUnknownPropertyError);
  }
  EXPECT_EQ(scalar, -1.0F);
}

TEST(DeviceState, ADeviceThatIsAwayStillAnswersReadsButTakesNoWrites) {
  DeviceState device = stereoDevice();
  UInt32 alive = 7;
  UInt32 size = sizeof alive;
  EXPECT_EQ(get(device, kAudioDevicePropertyDeviceIsAlive, &size, &alive), noErr);
  EXPECT_EQ(alive, 1U);
  device.alive = false;
  EXPECT_EQ(get(device, kAudioDevicePropertyDeviceIsAlive, &size, &alive), noErr);
  EXPECT_EQ(alive, 0U);
  AudioStreamBasicDescription format;
  size = sizeof format;
  EXPECT_EQ(get(device, kAudioDevicePropertyStreamFormat, &size, &format), noErr);
  const Float32 half = 0.5F;
  EXPECT_EQ(check(device, kAudioDevicePropertyVolumeScalar, sizeof half, &half, 1),
            kAudioHardwareBadDeviceError);
}

TEST(DeviceState, AWriteMustBeOfAKnownSourceOrOfANumber) {
  const DeviceState device = stereoDevice();
  const UInt32 known = 4;
  const UInt32 unknown = 2;
  EXPECT_EQ(check(device, kAudioDevicePropertyDataSource, 4, &known), noErr);
  EXPECT_EQ(check(device, kAudioDevicePropertyDataSource, 4, &unknown),
            kAudioHardwareIllegalOperationError);
  EXPECT_EQ(check(device, kAudioDevicePropertyDataSource, 3, &known),
            kAudioHardwareBadPropertySizeError);
  EXPECT_EQ(check(device, kAudioDevicePropertyDataSource, 4, nullptr),
            kAudioHardwareBadPropertySizeError);
  const Float32 half = 0.5F;
  const Float32 nothing = std::numeric_limits<Float32>::quiet_NaN();
  EXPECT_EQ(check(device, kAudioDevicePropertyVolumeScalar, 4, &half, 2), noErr);
  EXPECT_EQ(check(device, kAudioDevicePropertyVolumeScalar, 4, &nothing, 2),
            kAudioHardwareIllegalOperationError);
  EXPECT_EQ(check(device, kAudioDevicePropertyVolumeScalar, 4, &half, 0),
            kAudioHardwareUnknownPropertyError);
  EXPECT_EQ(check(device, kAudioDevicePropertyStreamFormat, 4, &half),
            kAudioHardwareIllegalOperationError);
}

TEST(DeviceState, AVolumeThatCannotBeSetSaysSo) {
  DeviceState device = stereoDevice();
  device.volumeWritable = false;
  Boolean writable = 1;
  EXPECT_EQ(info(device, kAudioDevicePropertyVolumeScalar, nullptr, &writable, 1), noErr);
  EXPECT_EQ(writable, 0);
  const Float32 half = 0.5F;
  EXPECT_EQ(check(device, kAudioDevicePropertyVolumeScalar, 4, &half, 1),
            kAudioHardwareIllegalOperationError);
}

TEST(DeviceState, NotificationsAloneAreNotRead) {
  UInt32 value = 0;
  UInt32 size = sizeof value;
  for (const AudioDevicePropertyID property :
       {kAudioDevicePropertyDeviceHasChanged, kAudioDevicePropertyVolumeRangeDecibels})
    EXPECT_EQ(get(stereoDevice(), property, &size, &value), kAudioHardwareUnknownPropertyError);
}

TEST(DeviceList, IDsAreReadInOrderAndCutToWholeEntries) {
  const AudioDeviceID devices[] = {3, 1, 2};
  UInt32 size = 0;
  ASSERT_EQ(DeviceListGetPropertyInfo(devices, kAudioHardwarePropertyDevices, &size, nullptr),
            noErr);
  EXPECT_EQ(size, 12U);
  AudioDeviceID ids[3] = {};
  ASSERT_EQ(DeviceListGetProperty(devices, kAudioHardwarePropertyDevices, &size, ids), noErr);
  EXPECT_EQ(ids[0], 3U);
  EXPECT_EQ(ids[1], 1U);
  EXPECT_EQ(ids[2], 2U);
  size = 11;
  ids[2] = 77;
  ASSERT_EQ(DeviceListGetProperty(devices, kAudioHardwarePropertyDevices, &size, ids), noErr);
  EXPECT_EQ(size, 8U);
  EXPECT_EQ(ids[2], 77U);
}

TEST(DeviceList, AnEmptyListHasNoBytesAndOtherPropertiesAreUnknown) {
  UInt32 size = 9;
  EXPECT_EQ(DeviceListGetPropertyInfo({}, kAudioHardwarePropertyDevices, &size, nullptr), noErr);
  EXPECT_EQ(size, 0U);
  EXPECT_EQ(DeviceListGetProperty({}, kAudioHardwarePropertyDevices, &size, nullptr), noErr);
  EXPECT_EQ(DeviceListGetPropertyInfo({}, fourCharCode("dIn "), &size, nullptr),
            kAudioHardwareUnknownPropertyError);
}

}  // namespace
}  // namespace orvane
