// Sound files as input devices: each plays at its own pace and starts again at its end. For
// machines without a microphone, and for looking twice at the same note.
//
// A device stands for a file, in the order given, with IDs from 1, the manufacturer "Recording" and
// the file's name without its folders. It has no volume and no data sources. A file that stops
// giving sound is reported as a device that is not alive.
#pragma once

#include <condition_variable>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "audio/AudioHardware.h"
#include "audio/DeviceState.h"
#include "audio/ListenerList.h"
#include "audio/PlaybackClock.h"
#include "audio/RecordingPlayer.h"
#include "audio/SoundFile.h"

namespace orvane {

class RecordingHardware : public AudioHardware {
 public:
  // A file that cannot be played, and why; fit to be shown as "FILE: reason".
  struct Refusal {
    std::filesystem::path file;
    std::string reason;
  };

  // Main thread. Opens every file; those that cannot be played are left out and told in refusals().
  // Does not throw (but for lack of memory). clock must outlive the hardware; null: the system's.
  explicit RecordingHardware(const std::vector<std::filesystem::path> &files,
                             PlaybackClock *clock = nullptr);
  // Main thread. Stops whatever plays.
  ~RecordingHardware() override;
  RecordingHardware(const RecordingHardware &) = delete;
  RecordingHardware &operator=(const RecordingHardware &) = delete;

  const std::vector<Refusal> &refusals() const { return mRefusals; }

  // As AudioHardware says. One input procedure plays a device at a time: starting another gets
  // kAudioHardwareIllegalOperationError. Starting plays from the file's first frame.
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
  struct Device;

  Device *find(AudioDeviceID id) const;
  DeviceState stateOf(const Device &device) const;
  void setAlive(Device &device, bool alive);
  void sendNotifications();

  SteadyPlaybackClock mSteadyClock;
  std::vector<Refusal> mRefusals;
  std::vector<AudioDeviceID> mDeviceIDs;
  std::vector<std::unique_ptr<Device>> mDevices;  // never changed after construction

  ListenerList mListeners;
  mutable std::mutex mMutex;  // of what follows, and of the devices' states
  std::condition_variable mChanged;
  std::deque<ListenerList::Subject> mChanges;
  bool mIsEnding = false;
  std::thread mNotificationThread;  // from the first listener on
};

}  // namespace orvane
