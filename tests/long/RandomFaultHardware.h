// Scripted hardware that breaks at random: calls that fail, sizes that lie, devices that go and
// come between two calls, notifications in the midst of a call. Everything it does follows from its
// random numbers. Besides, it keeps the streams as the contract of the hardware layer says, so that
// a test can ask what runs and let it sound. Main thread only.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/audio/FakeHardware.h"
#include "tests/long/LongRun.h"

namespace orvane::test {

class RandomFaultHardware : public FakeHardware {
 public:
  RandomFaultHardware(Random &random, std::vector<FakeDevice> table)
      : FakeHardware(std::move(table)), mRandom(random) {}

  // How many calls in a hundred meet a fault. 0: the hardware is sound.
  void setFaultRate(unsigned perCent) { mFaultRate = perCent; }

  // The calls about a stream, and the device of each, that were made to fail since the last time.
  enum class StreamCall { kAdd, kListen, kStart, kStop, kRemove };
  using Refused = std::set<std::pair<StreamCall, AudioDeviceID>>;
  Refused takeRefused() { return std::exchange(mRefused, {}); }
  // Calls that met a fault of any kind so far.
  std::size_t faults() const { return mFaults; }

  // Devices come and go, and tell of it.
  void vanish(std::size_t place);
  void returnOne();
  void returnAll();
  std::size_t numberOfVanished() const { return mVanished.size(); }
  // What a device tells when it has come back: everything may have changed.
  void tellAll(AudioDeviceID device);
  // Any notification of any device, known or not.
  void notifyAtRandom();
  // Effects of writes, told later as the contract says.
  void sendNotifications();

  bool isThere(AudioDeviceID device) const;
  FakeDevice &at(AudioDeviceID device);
  bool isRunning(AudioDeviceID device) const;
  std::vector<AudioDeviceID> running() const;
  // One callback with these samples, when the device is there and runs.
  void sound(AudioDeviceID device, const std::vector<float> &samples);
  // As when the process ends: nothing runs and nobody listens.
  void forgetClients();

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
  struct Stream {
    AudioDeviceIOProc proc = nullptr;
    void *clientData = nullptr;
    bool isStarted = false;
  };
  struct Change {
    AudioDeviceID device;
    UInt32 channel;
    AudioDevicePropertyID property;
  };

  // Before a call: what happens meanwhile, and how the answer will be wrong. True when the call is
  // to fail.
  bool meddle(UInt32 propertyID);
  void meanwhile();
  void lie(UInt32 propertyID);
  // A call with whatever faults fall upon it.
  template <typename Call>
  OSStatus answer(UInt32 propertyID, Call call);
  // The same for a call about a stream; effect() is what it does to the stream when it works.
  template <typename Call, typename Effect>
  OSStatus answerStream(StreamCall kind, AudioDeviceID device, Call call, Effect effect);

  Random &mRandom;
  unsigned mFaultRate = 0;
  std::size_t mFaults = 0;
  bool mIsMeanwhile = false;
  std::vector<FakeDevice> mVanished;
  std::map<AudioDeviceID, Stream> mStreams;
  std::vector<Change> mChanges;
  Refused mRefused;
};

}  // namespace orvane::test
