// A hardware whose input procedures are called through a ProcedureWatch, and which is otherwise the
// one it is given.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "audio/AudioHardware.h"
#include "tests/realtime/ProcedureWatch.h"

namespace orvane::test {

class GuardedHardware final : public AudioHardware {
 public:
  // The watch must outlive this.
  GuardedHardware(std::unique_ptr<AudioHardware> hardware, ProcedureWatch &watch)
      : mHardware(std::move(hardware)), mWatch(watch) {}

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
  struct Guarded {
    ProcedureWatch &watch;
    AudioDeviceID device;
    AudioDeviceIOProc proc;
    void *clientData;
  };

  static OSStatus watched(AudioDeviceID device, const AudioTimeStamp *now,
                          const AudioBufferList *input, const AudioTimeStamp *inputTime,
                          AudioBufferList *output, const AudioTimeStamp *outputTime, void *guarded);

  const std::unique_ptr<AudioHardware> mHardware;
  ProcedureWatch &mWatch;
  std::vector<std::unique_ptr<Guarded>> mGuarded;  // at most one a device
};

}  // namespace orvane::test
