// One change notification of a device property, as it travels from the hardware's listener to the
// objects that react to it. Plain data on the caller's stack; valid for the call only.
#pragma once

#include "audio/AudioHardware.h"

namespace orvane {

struct PropertyChange {
  AudioDeviceID device = 0;
  UInt32 channel = 0;
  Boolean isInput = 0;  // non-zero for the input side
  AudioDevicePropertyID propertyID = 0;
};

}  // namespace orvane
