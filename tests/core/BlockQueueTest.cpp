#include <thread>

#include <gtest/gtest.h>

#include "tests/core/CaptureFeed.h"

namespace orvane::test {
namespace {

struct CountingWakeUp : WakeUp {
  std::atomic<int> signals{0};
  void signal() noexcept override { signals.fetch_add(1); }
};

CaptureBlock blockOf(float value) {
  return CaptureBlock::withBytes(&value, sizeof value);
}

TEST(BlockQueue, BlocksArriveInOrderAndEachWakesTheReceiverOnce) {
  CountingWakeUp wakeUp;
  BlockQueue queue(&wakeUp);
  for (int i = 0; i < 3; ++i)
    queue.post(blockOf(static_cast<float>(i)));
  EXPECT_EQ(wakeUp.signals, 3);
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(queue.take()->samples()[0], static_cast<float>(i));
  EXPECT_FALSE(queue.take().has_value());
}

#ifndef NDEBUG
TEST(BlockQueueDeathTest, ASecondReceiverIsCaughtInDebugBuilds) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  BlockQueue queue(nullptr);
  queue.take();
  EXPECT_DEATH(std::thread([&] { queue.take(); }).join(), "mThread");
}
#endif

TEST(BlockQueue, ATakenBlockOutlivesTheQueue) {
  CaptureBlock kept;
  {
    BlockQueue queue(nullptr);
    queue.post(blockOf(0.5F));
    kept = std::move(*queue.take());
  }
  EXPECT_EQ(kept.samples()[0], 0.5F);
}

TEST(BlockQueue, ABlockThatFoundNoMemoryIsCountedAndNotPosted) {
  CountingWakeUp wakeUp;
  BlockQueue queue(&wakeUp);
  queue.post(CaptureBlock());
  EXPECT_EQ(queue.lostBlocks(), 1U);
  EXPECT_EQ(wakeUp.signals, 0);
  EXPECT_FALSE(queue.take().has_value());
}

TEST(BlockQueue, AReceiverThatStallsForLongerThanTheReserveLosesNothing) {
  BlockQueue queue(nullptr);
  constexpr std::size_t kBlocks = 3 * BlockQueue::kReservedBlocks;
  for (std::size_t i = 0; i < kBlocks; ++i)
    queue.post(blockOf(static_cast<float>(i)));
  for (std::size_t i = 0; i < kBlocks; ++i)
    ASSERT_EQ(queue.take()->samples()[0], static_cast<float>(i));
  EXPECT_EQ(queue.lostBlocks(), 0U);
}

// One thread feeds counted samples while the other takes the blocks and checks that every sample
// arrives once and in order.
TEST(BlockQueue, TwoThreadsHandOverEverySampleOnceAndInOrder) {
  CaptureFeed feed(8000);
  constexpr std::size_t kSamples = 436 * 2000;
  // Single precision counts exactly to 2^24; scaled into the range that is not clipped.
  const auto sampleAt = [](std::size_t i) { return static_cast<float>(i % 65536) / 65536.0F; };
  std::thread input([&] {
    std::size_t sent = 0;
    std::size_t size = 1;
    while (sent < kSamples) {
      std::vector<float> samples(std::min(size, kSamples - sent));
      for (float &sample : samples)
        sample = sampleAt(sent++);
      feed.feedMono(std::move(samples));
      size = size * 7 % 1009 + 1;
    }
  });
  std::size_t received = 0;
  bool inOrder = true;
  while (received < kSamples) {
    while (auto block = feed.queue.take()) {
      for (const float sample : block->samples())
        inOrder = inOrder && sample == sampleAt(received++);
    }
    std::this_thread::yield();
  }
  input.join();
  EXPECT_TRUE(inOrder);
  EXPECT_EQ(received, kSamples);
  EXPECT_FALSE(feed.queue.take().has_value());
}

// The rate handshake: a rate written together with the flag is never lost, whatever the timing.
TEST(BlockQueue, ARateWrittenFromAnotherThreadIsTakenUpByTheInputThread) {
  CaptureFeed feed(8000);
  std::atomic<bool> done{false};
  std::thread input([&] {
    while (!done.load())
      feed.feedMono(std::vector<float>(64, 0.5F));
    feed.feedMono({0.5F});
  });
  for (int i = 0; i < 2000; ++i) {
    feed.capture.setSampleRate(i % 2 == 0 ? 16000.0 : 22050.0);
    feed.takeAll();
  }
  feed.capture.setSampleRate(44100.0);
  done = true;
  input.join();
  EXPECT_EQ(feed.capture.mBufferFrames, 2405U);
}

}  // namespace
}  // namespace orvane::test
