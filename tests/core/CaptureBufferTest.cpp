#include <cmath>
#include <limits>
#include <numeric>

#include <gtest/gtest.h>

#include "tests/core/CaptureFeed.h"

namespace orvane::test {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// 0/8192, 1/8192, 2/8192 … : every sample tells its own position exactly.
std::vector<float> ramp(std::size_t count, std::size_t first = 0) {
  std::vector<float> samples(count);
  for (std::size_t i = 0; i < count; ++i)
    samples[i] = static_cast<float>(first + i) / 8192.0F;
  return samples;
}

// Runs one mono frame through at a rate whose block is a single sample.
float foldedFrame(std::vector<Buffer> buffers) {
  CaptureFeed feed(18.4);
  feed.feed(std::move(buffers));
  const auto blocks = feed.takeAll();
  EXPECT_EQ(blocks.size(), 1U);
  return blocks.empty() ? kNan : blocks[0][0];
}

TEST(CaptureBuffer, ABlockHoldsOneAndAHalfPeriodsOfA0AtEveryRate) {
  const struct {
    double rate;
    UInt32 frames, bytes;
  } rows[] = {{8000, 436, 1744},    {22050, 1202, 4808},  {44100, 2405, 9620},
              {48000, 2618, 10472}, {96000, 5236, 20944}, {192000, 10472, 41888}};
  for (const auto &row : rows) {
    SCOPED_TRACE(row.rate);
    CaptureFeed feed(row.rate);
    feed.feedMono(std::vector<float>(row.frames - 1, 0.25F));
    EXPECT_EQ(feed.capture.mBufferFrames, row.frames);
    EXPECT_EQ(feed.capture.mBufferSize, row.bytes);
    EXPECT_TRUE(feed.takeAll().empty());
    feed.feedMono({0.25F});
    const auto blocks = feed.takeAll();
    ASSERT_EQ(blocks.size(), 1U);
    EXPECT_EQ(blocks[0].size(), row.frames);
  }
}

TEST(CaptureBuffer, FiveCallbacksOf512FramesCompleteABlockAt44100HertzAnd155FramesStartTheNext) {
  CaptureFeed feed(44100);
  for (std::size_t call = 0; call < 5; ++call) {
    EXPECT_TRUE(feed.takeAll().empty()) << "before call " << call;
    feed.feedMono(ramp(512, call * 512));
  }
  const auto blocks = feed.takeAll();
  ASSERT_EQ(blocks.size(), 1U);
  EXPECT_EQ(blocks[0], ramp(2405));
  EXPECT_EQ(feed.capture.mBufferOffset, 155U);
  feed.feedMono(ramp(2250, 2560));
  const auto next = feed.takeAll();
  ASSERT_EQ(next.size(), 1U);
  EXPECT_EQ(next[0], ramp(2405, 2405));
}

TEST(CaptureBuffer, ACallbackLongerThanTwoBlocksPostsTwoSeparateCopies) {
  CaptureFeed feed(8000);
  feed.feedMono(ramp(1000));
  const auto blocks = feed.takeAll();
  ASSERT_EQ(blocks.size(), 2U);
  EXPECT_EQ(blocks[0], ramp(436));
  EXPECT_EQ(blocks[1], ramp(436, 436));
  EXPECT_EQ(feed.capture.mBufferOffset, 128U);
}

TEST(CaptureBuffer, IdenticalStereoChannelsReadAsOneChannel) {
  EXPECT_EQ(foldedFrame({{2, {0.625F, 0.625F}}}), 0.625F);
}

TEST(CaptureBuffer, ASingleDifferingFrameKeepsTheSumOfBothChannelsForTheWholeCallback) {
  CaptureFeed feed(8000);
  std::vector<float> samples(436 * 2, 0.25F);
  samples[2 * 435 + 1] = 0.125F;
  feed.feed({{2, samples}});
  const auto blocks = feed.takeAll();
  ASSERT_EQ(blocks.size(), 1U);
  EXPECT_EQ(blocks[0][0], 0.5F);
  EXPECT_EQ(blocks[0][434], 0.5F);
  EXPECT_EQ(blocks[0][435], 0.375F);
}

TEST(CaptureBuffer, ADuplicatedSoundReadsAsItselfAcrossBlocks) {
  // Blocks of 30 frames; the callback of 45 ends in the middle of the second.
  CaptureFeed feed(550);
  for (const std::size_t first : {0U, 45U}) {
    std::vector<float> stereo;
    for (const float sample : ramp(45, first))
      stereo.insert(stereo.end(), 2, sample);
    feed.feed({{2, stereo}});
  }
  EXPECT_EQ(feed.takeAll(),
            (std::vector<std::vector<float>>{ramp(30), ramp(30, 30), ramp(30, 60)}));
}

TEST(CaptureBuffer, EveryFrameOfManyChannelsIsSummedAndClipped) {
  // Frame f of n channels holds f/64 in each, so its sum is n·f/64, at most 1.
  for (const UInt32 channels : {1U, 2U, 3U, 5U}) {
    SCOPED_TRACE(channels);
    CaptureFeed feed(550);
    std::vector<float> samples;
    std::vector<float> sums;
    for (UInt32 f = 0; f < 30; ++f) {
      samples.insert(samples.end(), channels, static_cast<float>(f) / 64.0F);
      sums.push_back(std::min(static_cast<float>(channels * f) / 64.0F, 1.0F));
    }
    // A second buffer of the same size, so that two channels are no duplicate.
    std::vector<float> twice = samples;
    twice.insert(twice.end(), samples.begin(), samples.end());
    feed.feed({{channels, twice}, {channels, std::vector<float>(twice.size(), 0.0F)}});
    EXPECT_EQ(feed.takeAll(), (std::vector<std::vector<float>>{sums, sums}));
  }
}

TEST(CaptureBuffer, WhatIsBarelyAboveFullScaleIsClippedWhereverItStands) {
  CaptureFeed feed(550);
  std::vector<float> samples(30, 1.0001F);
  std::fill_n(samples.begin() + 15, 10, -1.0001F);
  samples[29] = 0.5F;
  std::vector<float> clipped(30, 1.0F);
  std::fill_n(clipped.begin() + 15, 10, -1.0F);
  clipped[29] = 0.5F;
  feed.feedMono(samples);
  EXPECT_EQ(feed.takeAll(), std::vector<std::vector<float>>{clipped});
}

TEST(CaptureBuffer, NotANumberInBothChannelsIsNotADuplicate) {
  CaptureFeed feed(8000);
  std::vector<float> samples(436 * 2, 0.25F);
  samples[0] = samples[1] = kNan;
  feed.feed({{2, samples}});
  const auto blocks = feed.takeAll();
  ASSERT_EQ(blocks.size(), 1U);
  EXPECT_TRUE(std::isnan(blocks[0][0]));
  EXPECT_EQ(blocks[0][1], 0.5F);
}

TEST(CaptureBuffer, TheDuplicateTestIsMadeAnewForEachCallback) {
  CaptureFeed feed(8000);
  feed.feed({{2, std::vector<float>(436, 0.25F)}});  // 218 identical frames
  std::vector<float> different(436, 0.25F);
  different[1] = 0.5F;
  feed.feed({{2, different}});
  const auto blocks = feed.takeAll();
  ASSERT_EQ(blocks.size(), 1U);
  EXPECT_EQ(blocks[0][217], 0.25F);
  EXPECT_EQ(blocks[0][218], 0.75F);
  EXPECT_EQ(blocks[0][219], 0.5F);
}

TEST(CaptureBuffer, AStereoPairAboveFullScaleIsClippedAfterAnyHalving) {
  EXPECT_EQ(foldedFrame({{2, {0.75F, 0.5F}}}), 1.0F);
  EXPECT_EQ(foldedFrame({{2, {-0.75F, -0.5F}}}), -1.0F);
  EXPECT_EQ(foldedFrame({{2, {0.75F, 0.75F}}}), 0.75F);
  EXPECT_EQ(foldedFrame({{2, {1.5F, 1.5F}}}), 1.0F);
}

TEST(CaptureBuffer, InfinitiesAreClippedAndNotANumberIsKept) {
  EXPECT_EQ(foldedFrame({{1, {kInfinity}}}), 1.0F);
  EXPECT_EQ(foldedFrame({{1, {-kInfinity}}}), -1.0F);
  EXPECT_TRUE(std::isnan(foldedFrame({{1, {kNan}}})));
  EXPECT_TRUE(std::isnan(foldedFrame({{2, {kInfinity, -kInfinity}}})));
}

TEST(CaptureBuffer, AMinusZeroIsStoredAsZeroBecauseSumsStartFromZero) {
  EXPECT_FALSE(std::signbit(foldedFrame({{1, {-0.0F}}})));
}

TEST(CaptureBuffer, TwoMonoBuffersOfTheSameSizeAreSummedFrameByFrame) {
  CaptureFeed feed(8000);
  feed.feed({{1, std::vector<float>(436, 0.25F)}, {1, ramp(436)}});
  const auto blocks = feed.takeAll();
  ASSERT_EQ(blocks.size(), 1U);
  EXPECT_EQ(blocks[0][0], 0.25F);
  EXPECT_EQ(blocks[0][8], 0.25F + 8.0F / 8192.0F);
}

TEST(CaptureBuffer, ABufferOfAnotherSizeAndAllAfterItAreIgnored) {
  EXPECT_EQ(foldedFrame({{1, {0.25F}}, {1, {0.125F}}, {1, {0.5F, 0.5F}}, {1, {0.0625F}}}), 0.375F);
}

TEST(CaptureBuffer, OnlyALoneStereoBufferCanBeADuplicate) {
  EXPECT_EQ(foldedFrame({{2, {0.25F, 0.25F}}, {2, {0.25F, 0.25F}}}), 1.0F);
}

TEST(CaptureBuffer, BuffersMatchByBytesPerChannelAndNotByBytes) {
  EXPECT_EQ(foldedFrame({{1, {0.25F}}, {3, {0.125F, 0.0625F, 0.03125F}}}), 0.46875F);
}

TEST(CaptureBuffer, ChannelsAreSummedInOrderInSinglePrecision) {
  // (2^24 + 1) rounds to 2^24 in single precision, so 2^24 + 1 − 2^24 is 0 in this order and 1 in
  // another.
  EXPECT_EQ(foldedFrame({{3, {16777216.0F, 1.0F, -16777216.0F}}}), 0.0F);
  EXPECT_EQ(foldedFrame({{3, {16777216.0F, -16777216.0F, 0.5F}}}), 0.5F);
}

TEST(CaptureBuffer, ANewSampleRateStartsAFreshBlockAtTheNextCallback) {
  CaptureFeed feed(44100);
  feed.feedMono(std::vector<float>(2000, 0.25F));
  feed.capture.setSampleRate(48000);
  feed.feedMono(std::vector<float>(2617, 0.5F));
  EXPECT_EQ(feed.capture.mBufferFrames, 2618U);
  EXPECT_TRUE(feed.takeAll().empty());
  feed.feedMono({0.5F});
  const auto blocks = feed.takeAll();
  ASSERT_EQ(blocks.size(), 1U);
  EXPECT_EQ(blocks[0], std::vector<float>(2618, 0.5F));
}

TEST(CaptureBuffer, AnInputTimeOfZeroStoresNothing) {
  CaptureFeed early(8000);
  early.feed({{1, ramp(1000)}}, 1e-9);
  EXPECT_EQ(early.takeAll().size(), 2U);
  for (const double time : {0.0, -1.0, static_cast<double>(kNan)}) {
    CaptureFeed feed(8000);
    EXPECT_EQ(feed.feed({{1, ramp(1000)}}, time), noErr);
    EXPECT_TRUE(feed.takeAll().empty());
    EXPECT_EQ(feed.capture.mBufferOffset, 0U);
    EXPECT_EQ(feed.capture.mBufferFrames, 436U) << "the block is derived all the same";
    EXPECT_FALSE(feed.capture.mIsBufferInvalid);
  }
}

TEST(CaptureBuffer, AListWithoutBuffersDoesNothingAtAll) {
  CaptureFeed feed(8000);
  EXPECT_EQ(feed.feed({}), noErr);
  EXPECT_EQ(feed.capture.mBuffer, nullptr);
  EXPECT_TRUE(feed.capture.mIsBufferInvalid);
}

TEST(CaptureBuffer, ABufferWithLessThanAFrameStoresNothingAndKeepsItsPlace) {
  CaptureFeed feed(8000);
  feed.feedMono(ramp(10));
  EXPECT_EQ(feed.feed({{3, {0.5F, 0.5F}}}), noErr);
  EXPECT_EQ(feed.feed({{2, {0.5F}, 4}}), noErr);
  EXPECT_EQ(feed.feed({{1, {0.5F}, 3}}), noErr);
  EXPECT_EQ(feed.capture.mBufferOffset, 10U);
}

TEST(CaptureBuffer, BytesBeyondTheLastWholeFrameAreLeftOut) {
  CaptureFeed feed(8000);
  feed.feed({{2, {0.5F, 0.25F, 0.5F, 0.25F, 0.5F}, 19}});
  EXPECT_EQ(feed.capture.mBufferOffset, 2U);
}

TEST(CaptureBuffer, ABufferWithoutChannelsStoresNothingAndDoesNotFault) {
  CaptureFeed feed(8000);
  EXPECT_EQ(feed.feed({{0, {0.5F}}}), noErr);
  EXPECT_EQ(feed.feed({{0, {}}, {1, {0.5F}}}), noErr);
  EXPECT_EQ(feed.capture.mBufferOffset, 0U);
  EXPECT_EQ(feed.feed({{1, {0.5F}}, {0, {0.5F}}}), noErr);
  EXPECT_EQ(feed.capture.mBufferOffset, 1U);
}

TEST(CaptureBuffer, ABufferWithoutMemoryCountsAsSilence) {
  CaptureFeed feed(550);
  AudioTimeStamp time{1.0};
  struct {
    AudioBufferList list;
    AudioBuffer second;
  } buffers{};
  float samples[30] = {0.25F, -0.5F};
  const auto call = [&](AudioBuffer first, AudioBuffer second, UInt32 count) {
    buffers.list = {count, {first}};
    buffers.second = second;
    const IOProcCall arguments{1, &time, &buffers.list, &time, nullptr, nullptr};
    return feed.capture.inputIOProc(&arguments);
  };
  EXPECT_EQ(call({1, sizeof samples, nullptr}, {1, sizeof samples, samples}, 2), noErr);
  EXPECT_EQ(call({1, sizeof samples, samples}, {1, sizeof samples, nullptr}, 2), noErr);
  EXPECT_EQ(call({2, sizeof samples * 2, nullptr}, {}, 1), noErr);
  const std::vector<float> sound(samples, samples + 30);
  EXPECT_EQ(feed.takeAll(),
            (std::vector<std::vector<float>>{sound, sound, std::vector<float>(30, 0.0F)}));
}

TEST(CaptureBuffer, WithoutAUsableRateEveryCallbackIsLeftOutUntilThereIsOne) {
  CaptureFeed feed(0.0);
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(feed.feedMono(ramp(100)), noErr);
  EXPECT_TRUE(feed.takeAll().empty());
  feed.capture.setSampleRate(550);
  feed.feedMono(ramp(30));
  EXPECT_EQ(feed.takeAll(), std::vector<std::vector<float>>{ramp(30)});
}

TEST(CaptureBuffer, ARateThatGivesAnEmptyBlockStoresNothingAndPostsNothing) {
  // From 2^30 frames on, which 1.96853e10 hertz gives, the bytes no longer fit their 32 bits.
  for (const double rate : {0.0, -44100.0, 18.3, static_cast<double>(kNan), 1.9686e10, 3e10, 1e30,
                            static_cast<double>(kInfinity)}) {
    SCOPED_TRACE(rate);
    CaptureFeed feed(rate);
    EXPECT_EQ(feed.feedMono(ramp(5000)), noErr);
    EXPECT_TRUE(feed.takeAll().empty());
    EXPECT_EQ(feed.capture.mBufferFrames, 0U);
    // And a good rate afterwards works.
    feed.capture.setSampleRate(8000);
    feed.feedMono(ramp(436));
    EXPECT_EQ(feed.takeAll().size(), 1U);
    // And the bad rate again, with a buffer in hand.
    feed.capture.setSampleRate(rate);
    feed.feedMono(ramp(5000));
    EXPECT_TRUE(feed.takeAll().empty());
  }
}

TEST(CaptureBuffer, TheSmallestBlockHasOneFrame) {
  // 27.5 / 1.5 is 18.333333…; the next float above it.
  CaptureFeed feed(static_cast<double>(18.333334F));
  feed.feedMono({0.25F, -0.5F});
  EXPECT_EQ(feed.takeAll(), (std::vector<std::vector<float>>{{0.25F}, {-0.5F}}));
}

TEST(CaptureBuffer, AnUnchangedRateLeavesTheBlockInProgress) {
  CaptureFeed feed(44100);
  feed.feedMono(ramp(100));
  EXPECT_FALSE(feed.capture.updateSampleRate(44100.0));
  EXPECT_FALSE(feed.capture.mIsBufferInvalid);
  EXPECT_TRUE(feed.capture.updateSampleRate(48000.0));
  EXPECT_TRUE(feed.capture.mIsBufferInvalid);
  EXPECT_EQ(feed.capture.mSampleRate, 48000.0F);
}

TEST(CaptureBuffer, ARateThatIsNotANumberNeverCountsAsUnchanged) {
  CaptureFeed feed(static_cast<double>(kNan));
  feed.feedMono(ramp(1));
  EXPECT_TRUE(feed.capture.updateSampleRate(static_cast<double>(kNan)));
}

TEST(CaptureBuffer, ARateThatSinglePrecisionCannotHoldNeverCountsAsUnchanged) {
  CaptureFeed feed(44100.1);
  EXPECT_TRUE(feed.capture.updateSampleRate(44100.1));
}

}  // namespace
}  // namespace orvane::test
