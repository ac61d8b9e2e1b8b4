// The one way on which capture blocks cross from the input thread to the main thread: a lock-free
// queue with one producer and one consumer, and a wake-up for the consumer. This queue and not a
// ring of fixed length, because a block may never be lost or overtaken while the main thread is
// busy, and not one with locks, because the input thread may never wait.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>

#include <readerwriterqueue/readerwriterqueue.h>

#include "core/CaptureBlock.h"
#include "core/OneThread.h"

namespace orvane {

// Wakes the main thread. signal() is called on the input thread and must be real-time safe but for
// the one system call that wakes.
class WakeUp {
 public:
  virtual ~WakeUp() = default;
  virtual void signal() noexcept = 0;
};

class BlockQueue {
 public:
  // Blocks that fit before post() has to allocate: close to a minute of sound, far beyond any stall
  // that a user would sit through.
  static constexpr std::size_t kReservedBlocks = 1024;

  // wakeUp may be null where producer and consumer are the same thread. It must outlive the queue.
  explicit BlockQueue(WakeUp *wakeUp) : mQueue(kReservedBlocks), mWakeUp(wakeUp) {}

  // Input thread. Real-time safe up to kReservedBlocks waiting blocks. Never waits. An empty block
  // (one that found no memory) is counted as lost and not posted.
  void post(CaptureBlock &&block) noexcept;

  // Main thread, may free memory. The oldest block, or nothing when none waits.
  std::optional<CaptureBlock> take();

  // Any thread. Blocks that found no memory since construction.
  std::uint64_t lostBlocks() const { return mLostBlocks.load(std::memory_order_relaxed); }

 private:
  moodycamel::ReaderWriterQueue<CaptureBlock> mQueue;
  WakeUp *mWakeUp;
  OneThread mReceiver;
  std::atomic<std::uint64_t> mLostBlocks{0};
};

}  // namespace orvane
