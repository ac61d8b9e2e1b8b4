// The sources of a PulseAudio or PipeWire desktop as input devices.
//
// Every source that is not a monitor is an input device, under a number of our own that it keeps
// while the process lives; its ports are its data sources. A monitor is listed too, but has no
// input side and never runs. A source that goes away is told ('livn'), and heard again when it
// returns under the same name; no other source is heard in its place.
//
// The notification thread belongs to the object. Input procedures run on a thread a started device.
#pragma once

#include <memory>
#include <string>

#include "audio/AudioHardware.h"

namespace orvane {

class PulseAudioHardware final : public AudioHardware {
 public:
  // Main thread. Begins to connect and returns at once. Throws std::system_error where the system
  // refuses the notification thread.
  PulseAudioHardware();
  // Main thread. Waits for a running listener or input procedure, never for the server.
  ~PulseAudioHardware() override;

  PulseAudioHardware(const PulseAudioHardware &) = delete;
  PulseAudioHardware &operator=(const PulseAudioHardware &) = delete;

  // Main or notification thread, not real-time safe, does not wait. Why the sound server cannot be
  // reached; empty when it can. Settled once the devices have been read.
  std::string connectionError() const;

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

  // A device that is away may be started; it is heard when it returns.
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
  struct Parts;

  std::unique_ptr<Parts> mParts;
};

}  // namespace orvane
