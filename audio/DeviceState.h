// One device as a mirror of the hardware holds it, and the property reads answered from that record
// alone. Every backend keeps such records, so sizes, statuses and layouts are the same on all.
//
// Plain values and functions without state of their own: any thread may use them on its own copy.
// Not real-time safe (strings).
#pragma once

#include <span>
#include <string>
#include <vector>

#include "audio/AudioHardware.h"

namespace orvane {

// One of the inputs a device can be switched to, such as a microphone or a line socket.
struct DataSourceState {
  UInt32 id = 0;            // from 1, stable for the device
  std::string name;         // lasting name, unique within the device
  std::string description;  // for people; when empty, name stands in

  bool operator==(const DataSourceState &) const = default;
};

struct DeviceState {
  // Full scale of a channel volume.
  static constexpr UInt32 kNormalVolume = 65536;

  AudioDeviceID id = 0;
  std::string name;          // lasting name, unique
  std::string displayName;   // for people
  std::string manufacturer;  // never empty
  Float64 sampleRate = 0.0;  // hertz
  UInt32 channels = 0;       // interleaved in one buffer
  bool isInput = true;       // false: the input side has no properties
  bool alive = true;         // false while the device is away; reads still answer
  std::vector<DataSourceState> dataSources;
  UInt32 activeDataSource = 0;  // ID, 0 = none
  std::vector<UInt32> volumes;  // one a channel, kNormalVolume = 1.0; empty = no volume control
  bool volumeWritable = false;
  UInt32 volumeBase = kNormalVolume;  // the volume of 0 dB
  UInt32 volumeSteps = 0;             // number of steps the device knows, 0 = unknown

  bool operator==(const DeviceState &) const = default;
};

// AudioDeviceGetPropertyInfo of this device. outSize and outWritable may be null; on an error both
// are left alone.
OSStatus DeviceStateGetPropertyInfo(const DeviceState &device, UInt32 inChannel, Boolean isInput,
                                    AudioDevicePropertyID inPropertyID, UInt32 *outSize,
                                    Boolean *outWritable);

// AudioDeviceGetProperty of this device.
OSStatus DeviceStateGetProperty(const DeviceState &device, UInt32 inChannel, Boolean isInput,
                                AudioDevicePropertyID inPropertyID, UInt32 *ioPropertyDataSize,
                                void *outPropertyData);

// Whether AudioDeviceSetProperty may write these bytes to this device: noErr, or the status to
// return. A data source must be one of the device's; a volume must be a number.
OSStatus DeviceStateCheckWrite(const DeviceState &device, UInt32 inChannel, Boolean isInput,
                               AudioDevicePropertyID inPropertyID, UInt32 inPropertyDataSize,
                               const void *inPropertyData);

// AudioHardwareGetPropertyInfo and AudioHardwareGetProperty of a hardware with these devices.
OSStatus DeviceListGetPropertyInfo(std::span<const AudioDeviceID> devices,
                                   AudioHardwarePropertyID inPropertyID, UInt32 *outSize,
                                   Boolean *outWritable);
OSStatus DeviceListGetProperty(std::span<const AudioDeviceID> devices,
                               AudioHardwarePropertyID inPropertyID, UInt32 *ioPropertyDataSize,
                               void *outPropertyData);

}  // namespace orvane
