// A live input bound to a tuner: the input procedure and the change listener that the device layer
// calls, and what the terminal wants to know of the device. Main thread but where stated.
#pragma once

#include <atomic>
#include <optional>
#include <string>

#include "audio/AUInputUnit.h"
#include "audio/WakeUpDescriptor.h"
#include "cli/DeviceMenu.h"
#include "cli/Inputs.h"
#include "cli/TerminalTuner.h"

namespace orvane {

class LiveInput {
 public:
  // Both must outlive this. wakeUp is signalled when the device goes away or returns. Throws
  // CliError (exit 1) when there is no device at all or none of that title; no title stands
  // for the first device. The stream runs when this returns.
  LiveInput(const Inputs &inputs, const std::optional<std::string> &title, TerminalTuner &tuner,
            WakeUpDescriptor &wakeUp);
  // Stops the stream: neither procedure nor listener is running afterwards.
  ~LiveInput();
  LiveInput(const LiveInput &) = delete;
  LiveInput &operator=(const LiveInput &) = delete;

  const std::string &title() const { return mTitle; }
  // Whether it is a sound file, which does not come back once it is gone.
  bool isFile() const { return mIsFile; }
  bool isAlive() const { return mIsAlive.load(std::memory_order_relaxed); }

 private:
  static OSStatus ControllerIOProc(AudioDeviceID inDevice, const AudioTimeStamp *inNow,
                                   const AudioBufferList *inInputData,
                                   const AudioTimeStamp *inInputTime,
                                   AudioBufferList *outOutputData,
                                   const AudioTimeStamp *inOutputTime, void *inClientData);
  static OSStatus ControllerPropertyListener(AudioDeviceID inDevice, UInt32 inChannel,
                                             Boolean isInput, AudioDevicePropertyID inPropertyID,
                                             void *inClientData);
  // Notification thread.
  OSStatus listenerProc(const PropertyChange *change);
  // Main or notification thread.
  void readIsAlive(AudioDeviceID device);

  AudioHardware &mHardware;
  CaptureBuffer &mCapture;
  WakeUpDescriptor &mWakeUp;
  AUInputUnit mAUInputUnit;
  DeviceMenu mInputDevicePopUpButton;
  std::string mTitle;
  const bool mIsFile;
  std::atomic<bool> mIsAlive{true};
};

}  // namespace orvane
