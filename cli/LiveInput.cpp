#include "cli/LiveInput.h"

#include "cli/CliError.h"

namespace orvane {

LiveInput::LiveInput(const Inputs &inputs, const std::optional<std::string> &title,
                     TerminalTuner &tuner, WakeUpDescriptor &wakeUp)
    : mHardware(inputs.hardware()),
      mCapture(tuner.capture()),
      mWakeUp(wakeUp),
      mAUInputUnit(mHardware),
      mIsFile(!inputs.isServer()) {
  inputs.checkReached();
  mAUInputUnit.setIOProc(ControllerIOProc, this);
  mAUInputUnit.setListenerProc(ControllerPropertyListener, this);
  mAUInputUnit.setupPopUpButton(&mInputDevicePopUpButton);
  if (mInputDevicePopUpButton.numberOfItems() < 1)
    throw CliError(kExitFailed, "input devices",
                   "Sorry, Orvane cannot run with no audio input device.");
  if (title && mInputDevicePopUpButton.indexOfItemWithTitle(*title) < 0)
    throw CliError(kExitFailed, "--device",
                   "there is no input device '" + *title + "' (see 'orvane-cli devices')");
  mAUInputUnit.setInputDeviceWithName(title);
  mTitle = mAUInputUnit
               .audioInputSources()[static_cast<std::size_t>(
                   mInputDevicePopUpButton.indexOfSelectedItem())]
               .name;
  mCapture.setSampleRate(mAUInputUnit.sampleRate());
  // A change told between the reading and the storing of the rate must not be lost.
  mCapture.updateSampleRate(mAUInputUnit.sampleRate());
  readIsAlive(mAUInputUnit.inputDevice());
}

LiveInput::~LiveInput() {
  mAUInputUnit.stop();
}

OSStatus LiveInput::ControllerIOProc(AudioDeviceID inDevice, const AudioTimeStamp *inNow,
                                     const AudioBufferList *inInputData,
                                     const AudioTimeStamp *inInputTime,
                                     AudioBufferList *outOutputData,
                                     const AudioTimeStamp *inOutputTime, void *inClientData) {
  const IOProcCall call{inDevice, inNow, inInputData, inInputTime, outOutputData, inOutputTime};
  return static_cast<LiveInput *>(inClientData)->mCapture.inputIOProc(&call);
}

OSStatus LiveInput::ControllerPropertyListener(AudioDeviceID inDevice, UInt32 inChannel,
                                               Boolean isInput, AudioDevicePropertyID inPropertyID,
                                               void *inClientData) {
  const PropertyChange change{inDevice, inChannel, isInput, inPropertyID};
  return static_cast<LiveInput *>(inClientData)->listenerProc(&change);
}

OSStatus LiveInput::listenerProc(const PropertyChange *change) {
  if (change->isInput == 0)
    return noErr;
  mCapture.updateSampleRate(mAUInputUnit.sampleRate());
  if (change->propertyID == kAudioDevicePropertyDeviceIsAlive)
    readIsAlive(change->device);
  return noErr;
}

void LiveInput::readIsAlive(AudioDeviceID device) {
  UInt32 isAlive = 1;
  UInt32 size = sizeof isAlive;
  mHardware.AudioDeviceGetProperty(device, 0, 1, kAudioDevicePropertyDeviceIsAlive, &size,
                                   &isAlive);
  mIsAlive.store(isAlive != 0, std::memory_order_relaxed);
  mWakeUp.signal();
}

}  // namespace orvane
