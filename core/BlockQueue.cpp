#include "core/BlockQueue.h"

#include <utility>

namespace orvane {

void BlockQueue::post(CaptureBlock &&block) noexcept {
  if (block.isEmpty() || !mQueue.enqueue(std::move(block))) {
    mLostBlocks.fetch_add(1, std::memory_order_relaxed);
    return;
  }
  if (mWakeUp != nullptr)
    mWakeUp->signal();
}

std::optional<CaptureBlock> BlockQueue::take() {
  mReceiver.check();
  CaptureBlock block;
  if (!mQueue.try_dequeue(block))
    return std::nullopt;
  return block;
}

}  // namespace orvane
