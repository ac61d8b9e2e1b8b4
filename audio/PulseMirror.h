// The mirror of the sound server's sources: what is known of every source seen since the start,
// kept under numbers of our own. A source that goes away stays listed, marked as not alive, and has
// its number again when it returns under its lasting name.
//
// The notification thread plans a change, then commits it; all threads read. A reader waits for
// nothing but another's copying. Not real-time safe.
#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "audio/DeviceState.h"
#include "audio/PulseSource.h"

namespace orvane {

// All that a record stream needs to know. A stream is out of date when any of it has changed.
struct PulseStreamSpec {
  AudioDeviceID device = 0;
  std::string source;           // lasting name
  std::uint32_t index = 0;      // the source's number at the server
  pa_sample_spec sampleSpec{};  // of the stream: the source's rate and channels, float samples
  pa_channel_map channelMap{};

  bool operator==(const PulseStreamSpec &other) const;
};

class PulseMirror {
 public:
  struct Device {
    DeviceState state;
    std::uint32_t index = PA_INVALID_INDEX;  // at the server
    pa_channel_map channelMap{};
  };
  struct Change {
    AudioDeviceID device = 0;
    UInt32 channel = 0;
    AudioDevicePropertyID property = 0;
  };
  struct Plan {
    std::vector<Device> devices;
    std::vector<Change> changes;  // in the order in which they are to be told
  };

  // Notification thread. What the mirror will hold after this listing, and what that changes: the
  // listed devices in the server's order, then those that are away.
  Plan planListing(std::span<const PulseSource> sources);
  // Notification thread. The same when the server is gone.
  Plan planLoss() const;
  // Notification thread.
  void commit(std::vector<Device> devices);

  // Any thread.
  std::vector<AudioDeviceID> deviceIDs() const;
  std::optional<DeviceState> device(AudioDeviceID id) const;
  // Nothing when the device is unknown, not an input, away, or without a usable format.
  std::optional<PulseStreamSpec> streamSpec(AudioDeviceID id) const;
  static std::optional<PulseStreamSpec> streamSpec(std::span<const Device> devices,
                                                   AudioDeviceID id);

 private:
  Device deviceOf(const PulseSource &source);
  static void appendChanges(const Device &before, const Device &after,
                            std::vector<Change> *changes);

  mutable std::mutex mMutex;
  std::vector<Device> mDevices;  // written by the notification thread only

  // Numbers once given stay given. Notification thread only.
  std::map<std::string, AudioDeviceID> mDeviceIDs;
  std::map<std::pair<AudioDeviceID, std::string>, UInt32> mDataSourceIDs;
  std::map<AudioDeviceID, UInt32> mDataSourceCounts;
};

}  // namespace orvane
