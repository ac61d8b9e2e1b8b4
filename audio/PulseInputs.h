// The input procedures that were added to the devices, and the streams of those that are started.
// The main thread starts and stops; the notification thread closes the streams of devices that went
// away or changed, and opens them again.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "audio/AudioHardware.h"
#include "audio/PulseInputStream.h"
#include "audio/PulseMirror.h"

namespace orvane {

class PulseInputs {
 public:
  // onFailure is called on the input threads when a stream fails.
  PulseInputs(PulseMirror &mirror, std::function<void()> onFailure);

  // Main thread. After stop and remove the procedure is not running and will not run.
  OSStatus add(AudioDeviceID device, AudioDeviceIOProc proc, void *clientData);
  OSStatus start(AudioDeviceID device, AudioDeviceIOProc proc);
  OSStatus stop(AudioDeviceID device, AudioDeviceIOProc proc);
  OSStatus remove(AudioDeviceID device, AudioDeviceIOProc proc);

  // Main thread. Stops and forgets all.
  void removeAll();

  // Notification thread. Commits the devices to the mirror, having closed every stream that does
  // not fit them, so that nobody who sees the new format gets samples of the old one.
  void closeOutdatedAndCommit(std::vector<PulseMirror::Device> devices);
  // Notification thread. Opens the streams of started devices that are there.
  void openMissing();

 private:
  struct Input {
    AudioDeviceID device = 0;
    AudioDeviceIOProc proc = nullptr;
    void *clientData = nullptr;
    bool isStarted = false;
    std::unique_ptr<PulseInputStream> stream;
  };

  Input *find(AudioDeviceID device, AudioDeviceIOProc proc);
  bool open(Input &input);

  PulseMirror &mMirror;
  const std::function<void()> mOnFailure;
  std::mutex mMutex;  // taken before the mirror's
  std::vector<Input> mInputs;
};

}  // namespace orvane
