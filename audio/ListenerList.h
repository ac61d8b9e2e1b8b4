// The property listeners of a hardware: who asked to be told of which property of which device.
//
// Removal is final: once remove returns, what it removed is not running and will not run again. A
// removal from another thread therefore waits for a running call to end; a listener that removes
// itself, or any other, does not wait for itself. None of it is real-time safe.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

#include "audio/AudioHardware.h"

namespace orvane {

class ListenerList {
 public:
  // What a listener listens to. channel may be kAudioPropertyWildcardChannel.
  struct Subject {
    AudioDeviceID device = 0;
    UInt32 channel = 0;
    bool isInput = true;
    AudioDevicePropertyID property = 0;

    bool operator==(const Subject &) const = default;
  };

  // Main or notification thread. Adding the same procedure with the same client data to the same
  // subject again changes nothing.
  void add(const Subject &subject, AudioDevicePropertyListenerProc proc, void *clientData);

  // Main or notification thread. Removes the procedure from the subject, whatever its client data.
  // False when it was not there. The caller must hold no lock that the listener takes.
  bool remove(const Subject &subject, AudioDevicePropertyListenerProc proc);

  // Notification thread, no lock held. Calls the matching listeners in the order they were added.
  // One that is added meanwhile is not called, one that is removed meanwhile neither.
  void notify(const Subject &change);

 private:
  struct Entry {
    std::uint64_t key = 0;  // never used twice
    Subject subject;
    AudioDevicePropertyListenerProc proc = nullptr;
    void *clientData = nullptr;
  };
  // A call that is running. Kept apart from the entries, since a listener that removed itself is
  // still running until it returns.
  struct Call {
    Entry entry;
    std::thread::id thread;
  };

  bool runsElsewhere(const Subject &subject, AudioDevicePropertyListenerProc proc) const;

  std::mutex mMutex;
  std::condition_variable mCallEnded;
  std::vector<Entry> mEntries;
  std::vector<Call> mCalls;
  std::uint64_t mNextKey = 1;
};

}  // namespace orvane
