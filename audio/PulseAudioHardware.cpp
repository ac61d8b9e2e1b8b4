#include "audio/PulseAudioHardware.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstring>
#include <map>
#include <mutex>
#include <span>
#include <vector>

#include "audio/DeviceState.h"
#include "audio/ListenerList.h"
#include "audio/PulseInputs.h"
#include "audio/PulseMirror.h"
#include "audio/PulseServerLink.h"

namespace orvane {

namespace {

constexpr std::chrono::seconds kLongestFirstWait{3};

// The server's volume for a scalar. Rounded up: the display cuts to whole percents, and a volume
// just below what was asked for would be shown as one percent less.
UInt32 serverVolume(Float32 scalar) {
  const Float64 clamped = std::clamp(static_cast<Float64>(scalar), 0.0, 1.0);
  return static_cast<UInt32>(std::ceil(clamped * DeviceState::kNormalVolume));
}

}  // namespace

struct PulseAudioHardware::Parts {
  Parts()
      : inputs(mirror, [this] { link.listAgain(); }),
        link({[this](std::span<const PulseSource> sources) { listed(sources); },
              [this](const std::string &reason) { lost(reason); }}) {}

  // The link and the inputs call each other, so both stop before either goes.
  ~Parts() {
    link.stop();
    inputs.removeAll();
  }

  Parts(const Parts &) = delete;
  Parts &operator=(const Parts &) = delete;

  // All on the notification thread.
  void listed(std::span<const PulseSource> sources) {
    apply(mirror.planListing(sources));
    settle({});
  }
  void lost(const std::string &reason) {
    apply(mirror.planLoss());
    settle(reason);
  }
  void apply(PulseMirror::Plan plan) {
    inputs.closeOutdatedAndCommit(std::move(plan.devices));
    for (const PulseMirror::Change &change : plan.changes)
      listeners.notify({change.device, change.channel, true, change.property});
    inputs.openMissing();
  }
  void settle(const std::string &reason) {
    {
      const std::lock_guard lock(settledMutex);
      isSettled = true;
      error = reason;
    }
    settled.notify_all();
  }

  void waitForFirstListing() {
    std::unique_lock lock(settledMutex);
    if (!isSettled)
      settled.wait_for(lock, kLongestFirstWait, [this] { return isSettled; });
    isSettled = true;
  }

  // The format as the program last read it.
  void formatWasRead(const DeviceState &device) {
    const std::lock_guard lock(formatsMutex);
    formatsRead[device.id] = {device.sampleRate, device.channels};
  }
  // A change between that reading and the first listener would never be told otherwise.
  void tellMissedFormat(AudioDeviceID id) {
    const auto device = mirror.device(id);
    const std::lock_guard lock(formatsMutex);
    const auto read = formatsRead.find(id);
    if (!device || read == formatsRead.end() ||
        read->second == std::pair(device->sampleRate, device->channels))
      return;
    link.post([this, id] {
      listeners.notify({id, 0, true, kAudioDevicePropertyStreamConfiguration});
      listeners.notify({id, 0, true, kAudioDevicePropertyStreamFormat});
    });
  }

  PulseMirror mirror;
  ListenerList listeners;

  std::mutex formatsMutex;
  std::map<AudioDeviceID, std::pair<Float64, UInt32>> formatsRead;  // hertz, channels

  std::mutex settledMutex;
  std::condition_variable settled;
  bool isSettled = false;  // the first listing is there, or is waited for no longer
  std::string error = "no answer";

  PulseInputs inputs;
  PulseServerLink link;  // last: its thread uses all the rest
};

PulseAudioHardware::PulseAudioHardware() : mParts(std::make_unique<Parts>()) {}

PulseAudioHardware::~PulseAudioHardware() = default;

std::string PulseAudioHardware::connectionError() const {
  const std::lock_guard lock(mParts->settledMutex);
  return mParts->error;
}

OSStatus PulseAudioHardware::AudioHardwareGetPropertyInfo(AudioHardwarePropertyID inPropertyID,
                                                          UInt32 *outSize, Boolean *outWritable) {
  if (inPropertyID == kAudioHardwarePropertyDevices)
    mParts->waitForFirstListing();
  return DeviceListGetPropertyInfo(mParts->mirror.deviceIDs(), inPropertyID, outSize, outWritable);
}

OSStatus PulseAudioHardware::AudioHardwareGetProperty(AudioHardwarePropertyID inPropertyID,
                                                      UInt32 *ioPropertyDataSize,
                                                      void *outPropertyData) {
  if (inPropertyID == kAudioHardwarePropertyDevices)
    mParts->waitForFirstListing();
  return DeviceListGetProperty(mParts->mirror.deviceIDs(), inPropertyID, ioPropertyDataSize,
                               outPropertyData);
}

OSStatus PulseAudioHardware::AudioDeviceGetPropertyInfo(AudioDeviceID inDevice, UInt32 inChannel,
                                                        Boolean isInput,
                                                        AudioDevicePropertyID inPropertyID,
                                                        UInt32 *outSize, Boolean *outWritable) {
  const auto device = mParts->mirror.device(inDevice);
  if (!device)
    return kAudioHardwareBadDeviceError;
  return DeviceStateGetPropertyInfo(*device, inChannel, isInput, inPropertyID, outSize,
                                    outWritable);
}

OSStatus PulseAudioHardware::AudioDeviceGetProperty(AudioDeviceID inDevice, UInt32 inChannel,
                                                    Boolean isInput,
                                                    AudioDevicePropertyID inPropertyID,
                                                    UInt32 *ioPropertyDataSize,
                                                    void *outPropertyData) {
  const auto device = mParts->mirror.device(inDevice);
  if (!device)
    return kAudioHardwareBadDeviceError;
  const OSStatus status = DeviceStateGetProperty(*device, inChannel, isInput, inPropertyID,
                                                 ioPropertyDataSize, outPropertyData);
  if (status == noErr && inPropertyID == kAudioDevicePropertyStreamFormat)
    mParts->formatWasRead(*device);
  return status;
}

OSStatus PulseAudioHardware::AudioDeviceSetProperty(
    AudioDeviceID inDevice, const AudioTimeStamp * /*inWhen*/, UInt32 inChannel, Boolean isInput,
    AudioDevicePropertyID inPropertyID, UInt32 inPropertyDataSize, const void *inPropertyData) {
  const auto device = mParts->mirror.device(inDevice);
  if (!device)
    return kAudioHardwareBadDeviceError;
  const OSStatus status = DeviceStateCheckWrite(*device, inChannel, isInput, inPropertyID,
                                                inPropertyDataSize, inPropertyData);
  if (status != noErr)
    return status;

  Parts *parts = mParts.get();
  if (inPropertyID == kAudioDevicePropertyDataSource) {
    UInt32 id = 0;
    std::memcpy(&id, inPropertyData, sizeof id);
    const auto port = std::ranges::find(device->dataSources, id, &DataSourceState::id);
    parts->link.post(
        [parts, source = device->name, port = port->name] { parts->link.writePort(source, port); });
    return noErr;
  }
  Float32 scalar = 0.0F;
  std::memcpy(&scalar, inPropertyData, sizeof scalar);
  parts->link.post([parts, inDevice, inChannel, volume = serverVolume(scalar)] {
    if (const auto current = parts->mirror.device(inDevice))
      parts->link.writeVolume(*current, inChannel, volume);
  });
  return noErr;
}

OSStatus PulseAudioHardware::AudioDeviceAddIOProc(AudioDeviceID inDevice, AudioDeviceIOProc inProc,
                                                  void *inClientData) {
  return mParts->inputs.add(inDevice, inProc, inClientData);
}

OSStatus PulseAudioHardware::AudioDeviceStart(AudioDeviceID inDevice, AudioDeviceIOProc inProc) {
  const OSStatus status = mParts->inputs.start(inDevice, inProc);
  mParts->tellMissedFormat(inDevice);
  return status;
}

OSStatus PulseAudioHardware::AudioDeviceStop(AudioDeviceID inDevice, AudioDeviceIOProc inProc) {
  return mParts->inputs.stop(inDevice, inProc);
}

OSStatus PulseAudioHardware::AudioDeviceRemoveIOProc(AudioDeviceID inDevice,
                                                     AudioDeviceIOProc inProc) {
  return mParts->inputs.remove(inDevice, inProc);
}

OSStatus PulseAudioHardware::AudioDeviceAddPropertyListener(AudioDeviceID inDevice,
                                                            UInt32 inChannel, Boolean isInput,
                                                            AudioDevicePropertyID inPropertyID,
                                                            AudioDevicePropertyListenerProc inProc,
                                                            void *inClientData) {
  if (!mParts->mirror.device(inDevice))
    return kAudioHardwareBadDeviceError;
  if (inProc == nullptr)
    return kAudioHardwareIllegalOperationError;
  mParts->listeners.add({inDevice, inChannel, isInput != 0, inPropertyID}, inProc, inClientData);
  return noErr;
}

OSStatus PulseAudioHardware::AudioDeviceRemovePropertyListener(
    AudioDeviceID inDevice, UInt32 inChannel, Boolean isInput, AudioDevicePropertyID inPropertyID,
    AudioDevicePropertyListenerProc inProc) {
  const bool removed =
      mParts->listeners.remove({inDevice, inChannel, isInput != 0, inPropertyID}, inProc);
  return removed ? noErr : kAudioHardwareIllegalOperationError;
}

}  // namespace orvane
