// One device of one side, with what listing it asks the hardware for. A read that fails gives an
// empty name or list; names are UTF-8 whatever the hardware hands out. Main thread; not real-time
// safe.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "audio/AudioHardware.h"
#include "audio/PropertyBytes.h"

namespace orvane {

class ListedDevice {
 public:
  // hardware must outlive this.
  ListedDevice(AudioHardware &hardware, AudioDeviceID device, bool isInput)
      : mHardware(hardware), mDevice(device), mIsInput(isInput ? 1 : 0) {}

  // A device without one on this side has no such side.
  bool hasStreamFormat() const;
  std::string name(AudioDevicePropertyID propertyID) const;
  bool isDataSourceSettable() const;
  // Nothing when the device has no list of sources; a list too short for one entry is an empty one.
  std::optional<std::vector<UInt32>> dataSources() const;
  std::string dataSourceName(UInt32 dataSource) const;

 private:
  UInt32 sizeOf(AudioDevicePropertyID propertyID) const;
  PropertyBytes bytes(AudioDevicePropertyID propertyID, UInt32 size) const;

  AudioHardware &mHardware;
  AudioDeviceID mDevice;
  Boolean mIsInput;
};

}  // namespace orvane
