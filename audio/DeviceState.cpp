#include "audio/DeviceState.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace orvane {

namespace {

constexpr UInt32 kBufferListHeader = offsetof(AudioBufferList, mBuffers);

UInt32 sizeOf(std::size_t bytes) {
  return static_cast<UInt32>(bytes);
}

// A value that is handed out whole or not at all.
OSStatus putWhole(const void *value, std::size_t bytes, UInt32 *ioSize, void *out) {
  if (*ioSize < bytes)
    return kAudioHardwareBadPropertySizeError;
  std::memcpy(out, value, bytes);
  *ioSize = sizeOf(bytes);
  return noErr;
}

// A list of IDs, cut to the whole entries that fit.
OSStatus putList(std::span<const UInt32> list, UInt32 *ioSize, void *out) {
  const std::size_t count = std::min<std::size_t>(list.size(), *ioSize / sizeof(UInt32));
  if (count > 0)
    std::memcpy(out, list.data(), count * sizeof(UInt32));
  *ioSize = sizeOf(count * sizeof(UInt32));
  return noErr;
}

OSStatus putStreamConfiguration(const DeviceState &device, UInt32 *ioSize, void *out) {
  if (*ioSize < kBufferListHeader)
    return kAudioHardwareBadPropertySizeError;
  AudioBufferList list{};
  UInt32 bytes = kBufferListHeader;
  if (*ioSize >= sizeof(AudioBufferList)) {
    list.mNumberBuffers = 1;
    list.mBuffers[0].mNumberChannels = device.channels;
    bytes = sizeof(AudioBufferList);
  }
  std::memcpy(out, &list, bytes);
  *ioSize = bytes;
  return noErr;
}

AudioStreamBasicDescription streamFormat(const DeviceState &device) {
  constexpr UInt32 kSampleBytes = sizeof(Float32);
  AudioStreamBasicDescription format;
  format.mSampleRate = device.sampleRate;
  format.mFormatID = kAudioFormatLinearPCM;
  format.mFormatFlags = kAudioFormatFlagIsFloat | kAudioFormatFlagIsPacked;
  format.mFramesPerPacket = 1;
  format.mBytesPerFrame = device.channels * kSampleBytes;
  format.mBytesPerPacket = format.mBytesPerFrame;
  format.mChannelsPerFrame = device.channels;
  format.mBitsPerChannel = 8 * kSampleBytes;
  return format;
}

const DataSourceState *findDataSource(const DeviceState &device, UInt32 id) {
  const auto found = std::ranges::find(device.dataSources, id, &DataSourceState::id);
  return found == device.dataSources.end() ? nullptr : &*found;
}

OSStatus putDataSourceName(const DeviceState &device, const UInt32 *ioSize, void *out) {
  AudioValueTranslation translation;
  if (*ioSize < sizeof translation)
    return kAudioHardwareBadPropertySizeError;
  std::memcpy(&translation, out, sizeof translation);
  if (translation.mInputData == nullptr || translation.mInputDataSize < sizeof(UInt32) ||
      translation.mOutputData == nullptr || translation.mOutputDataSize < sizeof(AudioStringRef))
    return kAudioHardwareBadPropertySizeError;
  UInt32 id = 0;
  std::memcpy(&id, translation.mInputData, sizeof id);
  const DataSourceState *source = findDataSource(device, id);
  if (source == nullptr)
    return kAudioHardwareIllegalOperationError;
  const AudioStringRef name =
      AudioStringCreate(source->description.empty() ? source->name : source->description);
  std::memcpy(translation.mOutputData, &name, sizeof name);
  return noErr;
}

Float32 volumeScalar(UInt32 volume) {
  return static_cast<Float32>(
      std::min(static_cast<Float64>(volume) / DeviceState::kNormalVolume, 1.0));
}

bool hasVolume(const DeviceState &device, UInt32 channel) {
  return channel >= 1 && channel <= device.volumes.size();
}

struct PropertyInfo {
  UInt32 size = 0;
  bool writable = false;
};

// Size and writability, or the error of a property the device does not have at that place.
OSStatus describe(const DeviceState &device, UInt32 channel, bool isInput,
                  AudioDevicePropertyID property, PropertyInfo *info) {
  if (property == kAudioDevicePropertyVolumeScalar) {
    if (!isInput || !device.isInput || !hasVolume(device, channel))
      return kAudioHardwareUnknownPropertyError;
    *info = {sizeof(Float32), device.volumeWritable};
    return noErr;
  }
  if (channel != 0)
    return kAudioHardwareUnknownPropertyError;

  switch (property) {
    case kAudioDevicePropertyDeviceName:
      *info = {sizeOf(device.displayName.size() + 1), false};
      return noErr;
    case kAudioDevicePropertyDeviceManufacturer:
      *info = {sizeOf(device.manufacturer.size() + 1), false};
      return noErr;
    case kAudioDevicePropertyDeviceIsAlive:
      *info = {sizeof(UInt32), false};
      return noErr;
    default:
      break;
  }

  if (!isInput || !device.isInput)
    return kAudioHardwareUnknownPropertyError;
  const bool hasDataSources = !device.dataSources.empty();
  switch (property) {
    case kAudioDevicePropertyStreamFormat:
      *info = {sizeof(AudioStreamBasicDescription), false};
      return noErr;
    case kAudioDevicePropertyStreamConfiguration:
      *info = {sizeof(AudioBufferList), false};
      return noErr;
    case kAudioDevicePropertyDataSources:
      *info = {sizeOf(device.dataSources.size() * sizeof(UInt32)), false};
      return noErr;
    case kAudioDevicePropertyDataSource:
      *info = {sizeof(UInt32), true};
      return hasDataSources ? noErr : kAudioHardwareUnknownPropertyError;
    case kAudioDevicePropertyDataSourceNameForIDCFString:
      *info = {sizeof(AudioValueTranslation), false};
      return hasDataSources ? noErr : kAudioHardwareUnknownPropertyError;
    default:
      return kAudioHardwareUnknownPropertyError;
  }
}

}  // namespace

OSStatus DeviceStateGetPropertyInfo(const DeviceState &device, UInt32 inChannel, Boolean isInput,
                                    AudioDevicePropertyID inPropertyID, UInt32 *outSize,
                                    Boolean *outWritable) {
  PropertyInfo info;
  const OSStatus status = describe(device, inChannel, isInput != 0, inPropertyID, &info);
  if (status != noErr)
    return status;
  if (outSize != nullptr)
    *outSize = info.size;
  if (outWritable != nullptr)
    *outWritable = info.writable ? 1 : 0;
  return noErr;
}

OSStatus DeviceStateGetProperty(const DeviceState &device, UInt32 inChannel, Boolean isInput,
                                AudioDevicePropertyID inPropertyID, UInt32 *ioPropertyDataSize,
                                void *outPropertyData) {
  PropertyInfo info;
  const OSStatus status = describe(device, inChannel, isInput != 0, inPropertyID, &info);
  if (status != noErr)
    return status;
  if (ioPropertyDataSize == nullptr || (outPropertyData == nullptr && *ioPropertyDataSize > 0))
    return kAudioHardwareBadPropertySizeError;

  switch (inPropertyID) {
    case kAudioDevicePropertyDeviceName:
      return putWhole(device.displayName.c_str(), info.size, ioPropertyDataSize, outPropertyData);
    case kAudioDevicePropertyDeviceManufacturer:
      return putWhole(device.manufacturer.c_str(), info.size, ioPropertyDataSize, outPropertyData);
    case kAudioDevicePropertyDeviceIsAlive: {
      const UInt32 alive = device.alive ? 1 : 0;
      return putWhole(&alive, sizeof alive, ioPropertyDataSize, outPropertyData);
    }
    case kAudioDevicePropertyStreamFormat: {
      const AudioStreamBasicDescription format = streamFormat(device);
      return putWhole(&format, sizeof format, ioPropertyDataSize, outPropertyData);
    }
    case kAudioDevicePropertyStreamConfiguration:
      return putStreamConfiguration(device, ioPropertyDataSize, outPropertyData);
    case kAudioDevicePropertyDataSources: {
      std::vector<UInt32> ids;
      for (const DataSourceState &source : device.dataSources)
        ids.push_back(source.id);
      return putList(ids, ioPropertyDataSize, outPropertyData);
    }
    case kAudioDevicePropertyDataSource:
      if (device.activeDataSource == 0)
        return kAudioHardwareUnspecifiedError;
      return putWhole(&device.activeDataSource, sizeof(UInt32), ioPropertyDataSize,
                      outPropertyData);
    case kAudioDevicePropertyDataSourceNameForIDCFString:
      return putDataSourceName(device, ioPropertyDataSize, outPropertyData);
    case kAudioDevicePropertyVolumeScalar: {
      const Float32 scalar = volumeScalar(device.volumes[inChannel - 1]);
      return putWhole(&scalar, sizeof scalar, ioPropertyDataSize, outPropertyData);
    }
    default:
      return kAudioHardwareUnknownPropertyError;
  }
}

OSStatus DeviceStateCheckWrite(const DeviceState &device, UInt32 inChannel, Boolean isInput,
                               AudioDevicePropertyID inPropertyID, UInt32 inPropertyDataSize,
                               const void *inPropertyData) {
  PropertyInfo info;
  const OSStatus status = describe(device, inChannel, isInput != 0, inPropertyID, &info);
  if (status != noErr)
    return status;
  if (!info.writable)
    return kAudioHardwareIllegalOperationError;
  if (inPropertyData == nullptr || inPropertyDataSize != info.size)
    return kAudioHardwareBadPropertySizeError;
  if (!device.alive)
    return kAudioHardwareBadDeviceError;
  if (inPropertyID == kAudioDevicePropertyDataSource) {
    UInt32 id = 0;
    std::memcpy(&id, inPropertyData, sizeof id);
    return findDataSource(device, id) != nullptr ? noErr : kAudioHardwareIllegalOperationError;
  }
  Float32 scalar = 0.0F;
  std::memcpy(&scalar, inPropertyData, sizeof scalar);
  return std::isnan(scalar) ? kAudioHardwareIllegalOperationError : noErr;
}

OSStatus DeviceListGetPropertyInfo(std::span<const AudioDeviceID> devices,
                                   AudioHardwarePropertyID inPropertyID, UInt32 *outSize,
                                   Boolean *outWritable) {
  if (inPropertyID != kAudioHardwarePropertyDevices)
    return kAudioHardwareUnknownPropertyError;
  if (outSize != nullptr)
    *outSize = sizeOf(devices.size_bytes());
  if (outWritable != nullptr)
    *outWritable = 0;
  return noErr;
}

OSStatus DeviceListGetProperty(std::span<const AudioDeviceID> devices,
                               AudioHardwarePropertyID inPropertyID, UInt32 *ioPropertyDataSize,
                               void *outPropertyData) {
  if (inPropertyID != kAudioHardwarePropertyDevices)
    return kAudioHardwareUnknownPropertyError;
  if (ioPropertyDataSize == nullptr || (outPropertyData == nullptr && *ioPropertyDataSize > 0))
    return kAudioHardwareBadPropertySizeError;
  return putList(devices, ioPropertyDataSize, outPropertyData);
}

}  // namespace orvane
