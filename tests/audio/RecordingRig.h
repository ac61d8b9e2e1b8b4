// A clock that the test moves, and an input procedure that keeps what it hears.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstring>
#include <mutex>
#include <set>
#include <stop_token>
#include <utility>
#include <vector>

#include "audio/AudioHardware.h"
#include "audio/PlaybackClock.h"

namespace orvane {

// A clock that stands still until the test moves it.
class ManualClock : public PlaybackClock {
 public:
  std::chrono::nanoseconds now() override {
    const std::lock_guard lock(mMutex);
    return mNow;
  }

  bool waitUntil(std::chrono::nanoseconds due, const std::stop_token &stop) override {
    std::unique_lock lock(mMutex);
    const auto waiting = mWaiting.insert(due);
    mChanged.notify_all();
    mChanged.wait(lock, stop, [&] { return mNow >= due; });
    mWaiting.erase(waiting);
    return !stop.stop_requested();
  }

  // Test. Waits until that many players sleep, and gives the time the first of them sleeps to.
  std::chrono::nanoseconds nextDue(std::size_t players = 1) {
    std::unique_lock lock(mMutex);
    mChanged.wait(lock, [&] { return mWaiting.size() >= players && *mWaiting.begin() > mNow; });
    return *mWaiting.begin();
  }

  // Test. Moves the clock on and wakes whom it concerns.
  void moveTo(std::chrono::nanoseconds time) {
    {
      const std::lock_guard lock(mMutex);
      mNow = time;
    }
    mChanged.notify_all();
  }

  // Test. Lets the only player have its next callback; returns when that is over and it sleeps
  // again.
  void step() {
    moveTo(nextDue());
    nextDue();
  }

 private:
  std::mutex mMutex;
  std::condition_variable_any mChanged;
  std::chrono::nanoseconds mNow = std::chrono::milliseconds(5000);
  std::multiset<std::chrono::nanoseconds> mWaiting;
};

struct Callback {
  AudioDeviceID device;
  Float64 sampleTime;
  UInt32 channels;
  std::vector<float> samples;
};

// Input procedure and listener of a test, with what they were called with.
struct Ear {
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<Callback> callbacks;
  std::vector<AudioDevicePropertyID> notifications;

  std::vector<Callback> heard() {
    const std::lock_guard lock(mutex);
    return callbacks;
  }
  std::size_t numberOfNotifications() {
    const std::lock_guard lock(mutex);
    return notifications.size();
  }
  void waitForNotifications(std::size_t count) {
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] { return notifications.size() >= count; });
  }
};

inline OSStatus listen(AudioDeviceID inDevice, const AudioTimeStamp *,
                       const AudioBufferList *inInputData, const AudioTimeStamp *inInputTime,
                       AudioBufferList *, const AudioTimeStamp *, void *inClientData) {
  auto *ear = static_cast<Ear *>(inClientData);
  const AudioBuffer &buffer = inInputData->mBuffers[0];
  Callback callback{inDevice, inInputTime->mSampleTime, buffer.mNumberChannels, {}};
  callback.samples.resize(buffer.mDataByteSize / sizeof(float));
  std::memcpy(callback.samples.data(), buffer.mData, buffer.mDataByteSize);
  const std::lock_guard lock(ear->mutex);
  ear->callbacks.push_back(std::move(callback));
  return noErr;
}

}  // namespace orvane
