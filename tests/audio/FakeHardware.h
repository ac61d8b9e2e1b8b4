// An AudioHardware that answers from a table of devices, writes down every call, and fails the
// calls it is told to fail. Sizes can be made to lie. Main thread only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "audio/AudioHardware.h"

namespace orvane {

struct FakeDevice {
  AudioDeviceID id = 0;
  std::string name;          // handed out with a NUL behind it
  std::string manufacturer;  // likewise
  bool hasInput = true;      // without: the input side's stream format cannot be read
  Float64 sampleRate = 48000.0;
  std::vector<UInt32> bufferChannels = {1};
  bool isDataSourceSettable = false;
  std::vector<std::pair<UInt32, std::string>> dataSources;
  std::vector<bool> isVolumeSettable;  // channel 1 on
  Float32 volume = 0.5F;
};

class FakeHardware : public AudioHardware {
 public:
  FakeHardware() = default;
  explicit FakeHardware(std::vector<FakeDevice> table) : devices(std::move(table)) {}

  std::vector<FakeDevice> devices;

  // One line per call: the operation, device, channel, "in" or "out", property code, then what else
  // was passed: "size?" and "writable?" for what is asked for, a size in bytes for reads, the bytes
  // as a number for writes, procedures and client data by the names below.
  std::vector<std::string> calls;
  std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }
  // The text under which a procedure or client data is written down.
  std::map<std::uintptr_t, std::string> names;
  template <typename Pointer>
  void setName(Pointer pointer, std::string text) {
    names[reinterpret_cast<std::uintptr_t>(pointer)] = std::move(text);
  }

  // Calls are numbered from 1. Those from firstFailing to lastFailing answer with failure and touch
  // nothing.
  static constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();
  std::size_t numberOfCalls = 0;
  std::size_t firstFailing = kNever;
  std::size_t lastFailing = kNever;
  OSStatus failure = kAudioHardwareUnspecifiedError;

  // How often one of the faults below or a failure was met.
  mutable std::size_t faultsMet = 0;

  // Property sizes that are reported in place of the true ones.
  std::map<UInt32, UInt32> reportedSizes;
  // Property values that are handed out in place of the true ones, without an end of their own.
  std::map<UInt32, std::vector<std::byte>> rawValues;
  // When set: reads claim to have written this many bytes, whatever they wrote.
  std::optional<UInt32> claimedReadSize;
  // When set: reads write at most this many bytes, and say so.
  std::optional<UInt32> longestRead;
  // When set: names of sources come as a null reference.
  bool translatesToNothing = false;

  struct Listener {
    AudioDeviceID device = 0;
    UInt32 channel = 0;
    Boolean isInput = 0;
    AudioDevicePropertyID propertyID = 0;
    AudioDevicePropertyListenerProc proc = nullptr;
    void *clientData = nullptr;
  };
  std::vector<Listener> listeners;
  // Calls every listener of that property, as the hardware does after a change.
  OSStatus notify(AudioDeviceID device, UInt32 channel, Boolean isInput,
                  AudioDevicePropertyID propertyID);

  OSStatus AudioHardwareGetPropertyInfo(AudioHardwarePropertyID inPropertyID, UInt32 *outSize,
                                        Boolean *outWritable) override;
  OSStatus AudioHardwareGetProperty(AudioHardwarePropertyID inPropertyID,
                                    UInt32 *ioPropertyDataSize, void *outPropertyData) override;
  OSStatus AudioDeviceGetPropertyInfo(AudioDeviceID inDevice, UInt32 inChannel, Boolean isInput,
                                      AudioDevicePropertyID inPropertyID, UInt32 *outSize,
                                      Boolean *outWritable) override;
  OSStatus AudioDeviceGetProperty(AudioDeviceID inDevice, UInt32 inChannel, Boolean isInput,
                                  AudioDevicePropertyID inPropertyID, UInt32 *ioPropertyDataSize,
                                  void *outPropertyData) override;
  OSStatus AudioDeviceSetProperty(AudioDeviceID inDevice, const AudioTimeStamp *inWhen,
                                  UInt32 inChannel, Boolean isInput,
                                  AudioDevicePropertyID inPropertyID, UInt32 inPropertyDataSize,
                                  const void *inPropertyData) override;
  OSStatus AudioDeviceAddIOProc(AudioDeviceID inDevice, AudioDeviceIOProc inProc,
                                void *inClientData) override;
  OSStatus AudioDeviceStart(AudioDeviceID inDevice, AudioDeviceIOProc inProc) override;
  OSStatus AudioDeviceStop(AudioDeviceID inDevice, AudioDeviceIOProc inProc) override;
  OSStatus AudioDeviceRemoveIOProc(AudioDeviceID inDevice, AudioDeviceIOProc inProc) override;
  OSStatus AudioDeviceAddPropertyListener(AudioDeviceID inDevice, UInt32 inChannel, Boolean isInput,
                                          AudioDevicePropertyID inPropertyID,
                                          AudioDevicePropertyListenerProc inProc,
                                          void *inClientData) override;
  OSStatus AudioDeviceRemovePropertyListener(AudioDeviceID inDevice, UInt32 inChannel,
                                             Boolean isInput, AudioDevicePropertyID inPropertyID,
                                             AudioDevicePropertyListenerProc inProc) override;

 private:
  const FakeDevice *find(AudioDeviceID id) const;
  // Writes the call down; true when it is to fail.
  bool record(const std::string &call);
  std::string nameOf(std::uintptr_t pointer) const;
  std::optional<std::vector<std::byte>> value(const FakeDevice &device, UInt32 channel,
                                              Boolean isInput, UInt32 propertyID) const;
  OSStatus translate(const FakeDevice &device, UInt32 *ioSize, void *outData) const;
  OSStatus read(const std::vector<std::byte> &bytes, bool isList, UInt32 *ioSize,
                void *outData) const;
};

}  // namespace orvane
