// Eyes and ears of the tests of a hardware: what its properties read, what an input procedure
// heard, and what a listener was told.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "audio/AudioHardware.h"

namespace orvane::test {

// Waits until the condition holds; false when it does not come to hold. The wait is long, and only
// a failing test uses it up.
bool eventually(const std::function<bool()> &condition,
                std::chrono::milliseconds longest = std::chrono::seconds(15));

std::vector<AudioDeviceID> deviceIDs(AudioHardware &hardware);
// Empty when the device does not answer.
std::string textProperty(AudioHardware &hardware, AudioDeviceID device,
                         AudioDevicePropertyID property);
// 0 when no device has that name.
AudioDeviceID deviceNamed(AudioHardware &hardware, const std::string &name);
bool isAlive(AudioHardware &hardware, AudioDeviceID device);
std::optional<AudioStreamBasicDescription> streamFormat(AudioHardware &hardware,
                                                        AudioDeviceID device);
std::optional<UInt32> dataSource(AudioHardware &hardware, AudioDeviceID device);
std::vector<UInt32> dataSources(AudioHardware &hardware, AudioDeviceID device);
std::string dataSourceName(AudioHardware &hardware, AudioDeviceID device, UInt32 source);
std::optional<Float32> volume(AudioHardware &hardware, AudioDeviceID device, UInt32 channel);
OSStatus setVolume(AudioHardware &hardware, AudioDeviceID device, UInt32 channel, Float32 scalar);

// An input procedure that remembers the first channel of up to a minute. Started by the
// constructor, stopped by the destructor.
class Ear {
 public:
  Ear(AudioHardware &hardware, AudioDeviceID device);
  ~Ear();

  Ear(const Ear &) = delete;
  Ear &operator=(const Ear &) = delete;

  // Any thread.
  std::size_t frames() const { return mFrames.load(std::memory_order_acquire); }
  std::vector<float> samplesFrom(std::size_t frame) const;
  bool hears(float value, std::size_t from, std::size_t atLeast) const;
  // The sample clock of the first call; and how often it did not follow on from the call before.
  Float64 firstTime() const { return mFirstTime.load(); }
  int clockBreaks() const { return mClockBreaks.load(); }
  UInt32 channels() const { return mChannels.load(); }
  // The next call takes so long.
  void stallOnce(std::chrono::milliseconds duration) { mStallMilliseconds = duration.count(); }
  bool isStalling() const { return mIsStalling.load(); }

 private:
  static OSStatus heard(AudioDeviceID device, const AudioTimeStamp *now,
                        const AudioBufferList *input, const AudioTimeStamp *inputTime,
                        AudioBufferList *output, const AudioTimeStamp *outputTime, void *self);

  AudioHardware &mHardware;
  const AudioDeviceID mDevice;
  std::vector<float> mSamples;
  Float64 mNextTime = 0.0;  // input thread only
  std::atomic<std::size_t> mFrames{0};
  std::atomic<Float64> mFirstTime{0.0};
  std::atomic<int> mClockBreaks{0};
  std::atomic<UInt32> mChannels{0};
  std::atomic<std::int64_t> mStallMilliseconds{0};
  std::atomic<bool> mIsStalling{false};
};

// Listens to every property of a device that can be listened to.
class PropertyLog {
 public:
  PropertyLog(AudioHardware &hardware, AudioDeviceID device);
  ~PropertyLog();

  PropertyLog(const PropertyLog &) = delete;
  PropertyLog &operator=(const PropertyLog &) = delete;

  // Any thread. How often that was told.
  int count(AudioDevicePropertyID property, UInt32 channel = 0) const;

 private:
  static OSStatus told(AudioDeviceID device, UInt32 channel, Boolean isInput,
                       AudioDevicePropertyID property, void *self);

  struct Notice {
    UInt32 channel = 0;
    AudioDevicePropertyID property = 0;
  };

  AudioHardware &mHardware;
  const AudioDeviceID mDevice;
  mutable std::mutex mMutex;
  std::vector<Notice> mNotices;
};

}  // namespace orvane::test
