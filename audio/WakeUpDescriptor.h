// A wake-up that an event loop can wait for: a file descriptor that turns readable once signalled.
// The input thread signals it after it has queued a block; the main thread clears it and then
// empties the queue, so that no block is left behind.
#pragma once

#include "core/BlockQueue.h"

namespace orvane {

class WakeUpDescriptor : public WakeUp {
 public:
  // Where the system has no descriptor to give, descriptor() is -1 and signal() does nothing.
  WakeUpDescriptor() noexcept;
  ~WakeUpDescriptor() override;
  WakeUpDescriptor(const WakeUpDescriptor &) = delete;
  WakeUpDescriptor &operator=(const WakeUpDescriptor &) = delete;

  // For poll() and the like: readable from a signal() until the next clear(). Any thread.
  int descriptor() const noexcept { return mDescriptor; }

  // Any thread, real-time safe: one write that never waits. Leaves errno as it was.
  void signal() noexcept override;

  // Main thread. Clear before taking from the queue, never after. Leaves errno as it was.
  void clear() noexcept;

 private:
  int mDescriptor;
};

}  // namespace orvane
