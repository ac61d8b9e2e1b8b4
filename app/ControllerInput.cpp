// The controller's sound: the procedures that the device layer calls, and the controls of the input
// device and its volume.
#include "app/Controller.h"

namespace orvane {

OSStatus Controller::ControllerIOProc(AudioDeviceID inDevice, const AudioTimeStamp *inNow,
                                      const AudioBufferList *inInputData,
                                      const AudioTimeStamp *inInputTime,
                                      AudioBufferList *outOutputData,
                                      const AudioTimeStamp *inOutputTime, void *inClientData) {
  const IOProcCall call{inDevice, inNow, inInputData, inInputTime, outOutputData, inOutputTime};
  return static_cast<Controller *>(inClientData)->mCapture.inputIOProc(&call);
}

OSStatus Controller::ControllerPropertyListener(AudioDeviceID inDevice, UInt32 inChannel,
                                                Boolean isInput, AudioDevicePropertyID inPropertyID,
                                                void *inClientData) {
  const PropertyChange change{inDevice, inChannel, isInput, inPropertyID};
  return static_cast<Controller *>(inClientData)->listenerProc(&change);
}

OSStatus Controller::listenerProc(const PropertyChange *change) {
  if (change->isInput == 0)
    return noErr;
  mCapture.updateSampleRate(mAUInputUnit->sampleRate());
  return noErr;
}

void Controller::readSampleRate() {
  mCapture.setSampleRate(mAUInputUnit->sampleRate());
  // A change told between the reading and the storing of the rate must not be lost.
  mCapture.updateSampleRate(mAUInputUnit->sampleRate());
}

void Controller::inputDevicePopupChanged() {
  // While the application is hidden nothing runs, before the change and after it.
  if (mIsHidden)
    mAUInputUnit->start();
  mAUInputUnit->setInputDeviceAtIndex(mInputDevicePopUpButton->indexOfSelectedItem());
  if (mIsHidden)
    mAUInputUnit->stop();
  readSampleRate();
}

void Controller::inputVolumeSliderChanged() {
  const int percent = mInputVolumeSlider->intValue();
  if (percent == mInputVolume)
    return;
  mInputVolume = percent;
  mInputVolumeText->setIntValue(percent);
  mAUInputUnit->setVolume(percent);
}

void Controller::openSoundPreferences() {
  mSystem.openSoundSettings();
  mSystem.showSoundInputPage();
}

}  // namespace orvane
