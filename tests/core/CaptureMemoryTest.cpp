// The capture when memory runs out: what cannot be kept is lost and counted, nothing else.
#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "tests/core/CaptureFeed.h"
#include "tests/core/FailingAllocations.h"

namespace orvane::test {
namespace {

// 550 hertz give blocks of 30 frames.
constexpr double kRate = 550.0;
constexpr std::size_t kBlock = 30;

std::vector<float> counted(std::size_t first, std::size_t count) {
  std::vector<float> samples;
  for (std::size_t i = first; i < first + count; ++i)
    samples.push_back(static_cast<float>(i) / 1024.0F);
  return samples;
}

TEST(CaptureMemory, ABlockThatCannotBeCopiedIsLostAndTheNextIsWhole) {
  CaptureFeed feed(kRate);
  feed.feedMono(counted(0, kBlock - 1));
  {
    const FailingAllocations out(1);
    float samples[] = {29.0F / 1024.0F, 30.0F / 1024.0F};
    EXPECT_EQ(feed.feedMono(samples), noErr);
    EXPECT_EQ(out.failures(), 1);
  }
  EXPECT_EQ(feed.queue.lostBlocks(), 1U);
  EXPECT_TRUE(feed.takeAll().empty());
  feed.feedMono(counted(31, kBlock - 1));
  EXPECT_EQ(feed.takeAll(), std::vector<std::vector<float>>{counted(30, kBlock)});
  EXPECT_EQ(feed.queue.lostBlocks(), 1U);
}

TEST(CaptureMemory, ABufferThatCannotBeHadIsAskedForAgainByTheNextCallback) {
  CaptureFeed feed(kRate);
  float samples[kBlock] = {};
  {
    const FailingAllocations out(1);
    for (int i = 1; i <= 3; ++i) {
      EXPECT_EQ(feed.feedMono(samples), noErr);
      EXPECT_EQ(out.failures(), i);
    }
  }
  EXPECT_EQ(feed.queue.lostBlocks(), 3U);
  feed.feedMono(counted(0, kBlock));
  EXPECT_EQ(feed.takeAll(), std::vector<std::vector<float>>{counted(0, kBlock)});
}

TEST(CaptureMemory, ABufferThatCannotGrowIsAskedForAgainToo) {
  CaptureFeed feed(kRate);
  feed.feedMono(counted(0, kBlock));
  feed.takeAll();
  feed.capture.setSampleRate(2 * kRate);
  float samples[kBlock] = {};
  {
    const FailingAllocations out(1);
    EXPECT_EQ(feed.feedMono(samples), noErr);
    EXPECT_EQ(feed.feedMono(samples), noErr);
    EXPECT_EQ(out.failures(), 2);
  }
  EXPECT_TRUE(feed.takeAll().empty());
  feed.feedMono(counted(0, 2 * kBlock));
  EXPECT_EQ(feed.takeAll(), std::vector<std::vector<float>>{counted(0, 2 * kBlock)});
}

TEST(CaptureMemory, AQueueThatCannotGrowLosesTheNewestBlocksAndKeepsTheOrder) {
  BlockQueue queue(nullptr);
  std::size_t posted = 0;
  {
    // The queue's own memory, taken many blocks at a time, fails; that of a single sample does not.
    const FailingAllocations out(256);
    for (; queue.lostBlocks() == 0; ++posted) {
      ASSERT_LT(posted, 100000U);
      const auto value = static_cast<float>(posted);
      queue.post(CaptureBlock::withBytes(&value, sizeof value));
    }
    EXPECT_GT(out.failures(), 0);
  }
  EXPECT_GT(posted, BlockQueue::kReservedBlocks);
  for (std::size_t i = 0; i + 1 < posted; ++i) {
    const auto block = queue.take();
    ASSERT_TRUE(block);
    ASSERT_EQ(block->samples()[0], static_cast<float>(i));
  }
  EXPECT_FALSE(queue.take());
  const float last = -1.0F;
  queue.post(CaptureBlock::withBytes(&last, sizeof last));
  EXPECT_EQ(queue.take()->samples()[0], -1.0F);
}

}  // namespace
}  // namespace orvane::test
