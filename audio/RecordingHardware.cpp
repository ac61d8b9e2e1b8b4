#include "audio/RecordingHardware.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "audio/BackgroundThread.h"

namespace orvane {

// Procedures and the player belong to the main thread, the file to the player while it plays.
struct RecordingHardware::Device {
  struct Procedure {
    AudioDeviceIOProc proc;
    void *clientData;
  };

  Device(SoundFile openFile, DeviceState initialState)
      : file(std::move(openFile)), state(std::move(initialState)) {}

  auto findProcedure(AudioDeviceIOProc proc) {
    return std::find_if(procedures.begin(), procedures.end(),
                        [proc](const Procedure &added) { return added.proc == proc; });
  }

  SoundFile file;
  DeviceState state;
  std::vector<Procedure> procedures;
  AudioDeviceIOProc startedProc = nullptr;
  std::unique_ptr<RecordingPlayer> player;
};

RecordingHardware::RecordingHardware(const std::vector<std::filesystem::path> &files,
                                     PlaybackClock *clock) {
  PlaybackClock &playbackClock = clock != nullptr ? *clock : mSteadyClock;
  for (const std::filesystem::path &path : files) {
    std::string reason;
    std::optional<SoundFile> file = SoundFile::open(path, reason);
    if (!file) {
      mRefusals.push_back({path, reason});
      continue;
    }
    DeviceState state;
    state.id = static_cast<AudioDeviceID>(mDevices.size() + 1);
    state.name = path.string();
    state.displayName = path.filename().string();
    state.manufacturer = "Recording";
    state.sampleRate = file->rate();
    state.channels = static_cast<UInt32>(file->channels());
    mDeviceIDs.push_back(state.id);
    mDevices.push_back(std::make_unique<Device>(std::move(*file), std::move(state)));
    Device &device = *mDevices.back();
    device.player = std::make_unique<RecordingPlayer>(device.file, playbackClock, device.state.id,
                                                      [this, &device] { setAlive(device, false); });
  }
}

RecordingHardware::~RecordingHardware() {
  for (const auto &device : mDevices)
    device->player->stop();
  {
    const std::lock_guard lock(mMutex);
    mIsEnding = true;
  }
  mChanged.notify_all();
  if (mNotificationThread.joinable())
    mNotificationThread.join();
}

RecordingHardware::Device *RecordingHardware::find(AudioDeviceID id) const {
  return id >= 1 && id <= mDevices.size() ? mDevices[id - 1].get() : nullptr;
}

DeviceState RecordingHardware::stateOf(const Device &device) const {
  const std::lock_guard lock(mMutex);
  return device.state;
}

void RecordingHardware::setAlive(Device &device, bool alive) {
  {
    const std::lock_guard lock(mMutex);
    if (device.state.alive == alive)
      return;
    device.state.alive = alive;
    mChanges.push_back({device.state.id, 0, true, kAudioDevicePropertyDeviceIsAlive});
  }
  mChanged.notify_all();
}

void RecordingHardware::sendNotifications() {
  std::unique_lock lock(mMutex);
  while (true) {
    mChanged.wait(lock, [this] { return mIsEnding || !mChanges.empty(); });
    if (mIsEnding)
      return;
    const ListenerList::Subject change = mChanges.front();
    mChanges.pop_front();
    lock.unlock();
    mListeners.notify(change);
    lock.lock();
  }
}

OSStatus RecordingHardware::AudioHardwareGetPropertyInfo(AudioHardwarePropertyID inPropertyID,
                                                         UInt32 *outSize, Boolean *outWritable) {
  return DeviceListGetPropertyInfo(mDeviceIDs, inPropertyID, outSize, outWritable);
}

OSStatus RecordingHardware::AudioHardwareGetProperty(AudioHardwarePropertyID inPropertyID,
                                                     UInt32 *ioPropertyDataSize,
                                                     void *outPropertyData) {
  return DeviceListGetProperty(mDeviceIDs, inPropertyID, ioPropertyDataSize, outPropertyData);
}

OSStatus RecordingHardware::AudioDeviceGetPropertyInfo(AudioDeviceID inDevice, UInt32 inChannel,
                                                       Boolean isInput,
                                                       AudioDevicePropertyID inPropertyID,
                                                       UInt32 *outSize, Boolean *outWritable) {
  const Device *device = find(inDevice);
  if (device == nullptr)
    return kAudioHardwareBadDeviceError;
  return DeviceStateGetPropertyInfo(stateOf(*device), inChannel, isInput, inPropertyID, outSize,
                                    outWritable);
}

OSStatus RecordingHardware::AudioDeviceGetProperty(AudioDeviceID inDevice, UInt32 inChannel,
                                                   Boolean isInput,
                                                   AudioDevicePropertyID inPropertyID,
                                                   UInt32 *ioPropertyDataSize,
                                                   void *outPropertyData) {
  const Device *device = find(inDevice);
  if (device == nullptr)
    return kAudioHardwareBadDeviceError;
  return DeviceStateGetProperty(stateOf(*device), inChannel, isInput, inPropertyID,
                                ioPropertyDataSize, outPropertyData);
}

OSStatus RecordingHardware::AudioDeviceSetProperty(AudioDeviceID inDevice, const AudioTimeStamp *,
                                                   UInt32 inChannel, Boolean isInput,
                                                   AudioDevicePropertyID inPropertyID,
                                                   UInt32 inPropertyDataSize,
                                                   const void *inPropertyData) {
  const Device *device = find(inDevice);
  if (device == nullptr)
    return kAudioHardwareBadDeviceError;
  // A file has nothing that can be written, so this is always an error.
  return DeviceStateCheckWrite(stateOf(*device), inChannel, isInput, inPropertyID,
                               inPropertyDataSize, inPropertyData);
}

OSStatus RecordingHardware::AudioDeviceAddIOProc(AudioDeviceID inDevice, AudioDeviceIOProc inProc,
                                                 void *inClientData) {
  Device *device = find(inDevice);
  if (device == nullptr)
    return kAudioHardwareBadDeviceError;
  if (inProc == nullptr || device->findProcedure(inProc) != device->procedures.end())
    return kAudioHardwareIllegalOperationError;
  device->procedures.push_back({inProc, inClientData});
  return noErr;
}

OSStatus RecordingHardware::AudioDeviceStart(AudioDeviceID inDevice, AudioDeviceIOProc inProc) {
  Device *device = find(inDevice);
  if (device == nullptr)
    return kAudioHardwareBadDeviceError;
  const auto procedure = device->findProcedure(inProc);
  if (procedure == device->procedures.end())
    return kAudioHardwareIllegalOperationError;
  if (device->startedProc != nullptr)
    return device->startedProc == inProc ? noErr : kAudioHardwareIllegalOperationError;
  // A start is a new try for a file that gave nothing before.
  setAlive(*device, true);
  try {
    device->player->start(procedure->proc, procedure->clientData);
  } catch (const std::system_error &) {
    setAlive(*device, false);
    return kAudioHardwareUnspecifiedError;
  }
  device->startedProc = inProc;
  return noErr;
}

OSStatus RecordingHardware::AudioDeviceStop(AudioDeviceID inDevice, AudioDeviceIOProc inProc) {
  Device *device = find(inDevice);
  if (device == nullptr)
    return kAudioHardwareBadDeviceError;
  if (device->findProcedure(inProc) == device->procedures.end())
    return kAudioHardwareIllegalOperationError;
  if (device->startedProc == inProc) {
    device->player->stop();
    device->startedProc = nullptr;
  }
  return noErr;
}

OSStatus RecordingHardware::AudioDeviceRemoveIOProc(AudioDeviceID inDevice,
                                                    AudioDeviceIOProc inProc) {
  const OSStatus status = AudioDeviceStop(inDevice, inProc);
  if (status != noErr)
    return status;
  Device *device = find(inDevice);
  device->procedures.erase(device->findProcedure(inProc));
  return noErr;
}

OSStatus RecordingHardware::AudioDeviceAddPropertyListener(AudioDeviceID inDevice, UInt32 inChannel,
                                                           Boolean isInput,
                                                           AudioDevicePropertyID inPropertyID,
                                                           AudioDevicePropertyListenerProc inProc,
                                                           void *inClientData) {
  if (find(inDevice) == nullptr)
    return kAudioHardwareBadDeviceError;
  if (inProc == nullptr)
    return kAudioHardwareIllegalOperationError;
  try {
    const std::lock_guard lock(mMutex);
    if (!mNotificationThread.joinable())
      mNotificationThread = startBackgroundThread([this] { sendNotifications(); });
  } catch (const std::system_error &) {
    return kAudioHardwareUnspecifiedError;
  }
  mListeners.add({inDevice, inChannel, isInput != 0, inPropertyID}, inProc, inClientData);
  return noErr;
}

OSStatus RecordingHardware::AudioDeviceRemovePropertyListener(
    AudioDeviceID inDevice, UInt32 inChannel, Boolean isInput, AudioDevicePropertyID inPropertyID,
    AudioDevicePropertyListenerProc inProc) {
  if (find(inDevice) == nullptr)
    return kAudioHardwareBadDeviceError;
  const bool removed = mListeners.remove({inDevice, inChannel, isInput != 0, inPropertyID}, inProc);
  return removed ? noErr : kAudioHardwareIllegalOperationError;
}

}  // namespace orvane
