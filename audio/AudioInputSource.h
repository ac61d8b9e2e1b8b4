// One entry of the list of inputs: a whole device, or one data source of a device that can switch
// between several. Entry i of the list is item i of the device pop-up.
#pragma once

#include <optional>
#include <string>

#include "audio/AudioHardware.h"

namespace orvane {

struct AudioInputSource {
  std::string name;  // UTF-8, unique in its list: the title in the device pop-up
  AudioDeviceID deviceID = 0;
  std::optional<UInt32> dataSource;  // only on entries made from a device's list of data sources
};

}  // namespace orvane
