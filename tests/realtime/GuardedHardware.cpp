#include "tests/realtime/GuardedHardware.h"

namespace orvane::test {

OSStatus GuardedHardware::watched(AudioDeviceID device, const AudioTimeStamp *now,
                                  const AudioBufferList *input, const AudioTimeStamp *inputTime,
                                  AudioBufferList *output, const AudioTimeStamp *outputTime,
                                  void *guarded) {
  const auto *self = static_cast<Guarded *>(guarded);
  return self->watch.call(self->proc, device, now, input, inputTime, output, outputTime,
                          self->clientData);
}

OSStatus GuardedHardware::AudioDeviceAddIOProc(AudioDeviceID inDevice, AudioDeviceIOProc inProc,
                                               void *inClientData) {
  auto guarded = std::make_unique<Guarded>(Guarded{mWatch, inDevice, inProc, inClientData});
  const OSStatus status = mHardware->AudioDeviceAddIOProc(inDevice, watched, guarded.get());
  if (status == noErr)
    mGuarded.push_back(std::move(guarded));
  return status;
}

OSStatus GuardedHardware::AudioDeviceStart(AudioDeviceID inDevice, AudioDeviceIOProc /*inProc*/) {
  return mHardware->AudioDeviceStart(inDevice, watched);
}

OSStatus GuardedHardware::AudioDeviceStop(AudioDeviceID inDevice, AudioDeviceIOProc /*inProc*/) {
  return mHardware->AudioDeviceStop(inDevice, watched);
}

OSStatus GuardedHardware::AudioDeviceRemoveIOProc(AudioDeviceID inDevice,
                                                  AudioDeviceIOProc /*inProc*/) {
  const OSStatus status = mHardware->AudioDeviceRemoveIOProc(inDevice, watched);
  std::erase_if(mGuarded, [inDevice](const auto &guarded) { return guarded->device == inDevice; });
  return status;
}

OSStatus GuardedHardware::AudioHardwareGetPropertyInfo(AudioHardwarePropertyID inPropertyID,
                                                       UInt32 *outSize, Boolean *outWritable) {
  return mHardware->AudioHardwareGetPropertyInfo(inPropertyID, outSize, outWritable);
}

OSStatus GuardedHardware::AudioHardwareGetProperty(AudioHardwarePropertyID inPropertyID,
                                                   UInt32 *ioPropertyDataSize,
                                                   void *outPropertyData) {
  return mHardware->AudioHardwareGetProperty(inPropertyID, ioPropertyDataSize, outPropertyData);
}

OSStatus GuardedHardware::AudioDeviceGetPropertyInfo(AudioDeviceID inDevice, UInt32 inChannel,
                                                     Boolean isInput,
                                                     AudioDevicePropertyID inPropertyID,
                                                     UInt32 *outSize, Boolean *outWritable) {
  return mHardware->AudioDeviceGetPropertyInfo(inDevice, inChannel, isInput, inPropertyID, outSize,
                                               outWritable);
}

OSStatus GuardedHardware::AudioDeviceGetProperty(AudioDeviceID inDevice, UInt32 inChannel,
                                                 Boolean isInput,
                                                 AudioDevicePropertyID inPropertyID,
                                                 UInt32 *ioPropertyDataSize,
                                                 void *outPropertyData) {
  return mHardware->AudioDeviceGetProperty(inDevice, inChannel, isInput, inPropertyID,
                                           ioPropertyDataSize, outPropertyData);
}

OSStatus GuardedHardware::AudioDeviceSetProperty(
    AudioDeviceID inDevice, const AudioTimeStamp *inWhen, UInt32 inChannel, Boolean isInput,
    AudioDevicePropertyID inPropertyID, UInt32 inPropertyDataSize, const void *inPropertyData) {
  return mHardware->AudioDeviceSetProperty(inDevice, inWhen, inChannel, isInput, inPropertyID,
                                           inPropertyDataSize, inPropertyData);
}

OSStatus GuardedHardware::AudioDeviceAddPropertyListener(AudioDeviceID inDevice, UInt32 inChannel,
                                                         Boolean isInput,
                                                         AudioDevicePropertyID inPropertyID,
                                                         AudioDevicePropertyListenerProc inProc,
                                                         void *inClientData) {
  return mHardware->AudioDeviceAddPropertyListener(inDevice, inChannel, isInput, inPropertyID,
                                                   inProc, inClientData);
}

OSStatus GuardedHardware::AudioDeviceRemovePropertyListener(
    AudioDeviceID inDevice, UInt32 inChannel, Boolean isInput, AudioDevicePropertyID inPropertyID,
    AudioDevicePropertyListenerProc inProc) {
  return mHardware->AudioDeviceRemovePropertyListener(inDevice, inChannel, isInput, inPropertyID,
                                                      inProc);
}

}  // namespace orvane::test
