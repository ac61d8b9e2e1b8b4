// Sounds that die away end in numbers too small to be normal, which processors may take many times
// as long for. They must cost the tuner at most half as much again as ordinary noise; the median of
// many rounds of each, in turns, so that a busy machine slows both.
#include <gtest/gtest.h>

#include <time.h>

#include <algorithm>
#include <array>
#include <bit>
#include <iostream>
#include <vector>

#include "core/PitchDetector.h"
#include "tests/core/CaptureFeed.h"
#include "tests/long/LongRun.h"

namespace orvane::test {
namespace {

constexpr double kRate = 48000.0;
constexpr std::size_t kFrames = 65536;
constexpr double kMostTimes = 1.5;

float ordinary(Random &random) {
  return static_cast<float>(static_cast<std::int32_t>(random.next())) / 4294967296.0F;
}

float denormal(Random &random) {
  return std::bit_cast<float>(static_cast<std::uint32_t>(random.next() & 0x807FFFFFU));
}

using Sample = float (*)(Random &);

std::vector<float> noise(Sample sample, std::size_t count) {
  Random random(1);
  std::vector<float> samples(count);
  for (float &x : samples)
    x = sample(random);
  return samples;
}

// What this thread has used of the processor; the time of others does not count.
double seconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// How many times as long the first takes as the second.
template <typename First, typename Second>
double timesAsLong(First &&first, Second &&second) {
  constexpr std::size_t kRounds = 41;
  std::array<double, kRounds> firsts{};
  std::array<double, kRounds> others{};
  for (std::size_t round = 0; round < kRounds; ++round) {
    const double start = seconds();
    first();
    const double middle = seconds();
    second();
    firsts[round] = middle - start;
    others[round] = seconds() - middle;
  }
  std::sort(firsts.begin(), firsts.end());
  std::sort(others.begin(), others.end());
  return firsts[kRounds / 2] / others[kRounds / 2];
}

// One callback with buffers of these channels.
class Callback {
 public:
  explicit Callback(std::vector<Buffer> buffers) : mList(std::move(buffers)) { operator()(); }

  void operator()() {
    const AudioTimeStamp time{1.0};
    const IOProcCall call{1, &time, mList.list(), &time, nullptr, nullptr};
    mFeed.capture.inputIOProc(&call);
    while (mFeed.queue.take()) {
    }
  }

 private:
  BufferList mList;
  CaptureFeed mFeed{kRate};
};

std::vector<Buffer> layout(Sample sample, UInt32 buffers, UInt32 channels) {
  return std::vector<Buffer>(buffers, {channels, noise(sample, kFrames * channels)});
}

std::vector<Buffer> duplicated(Sample sample) {
  const std::vector<float> mono = noise(sample, kFrames);
  std::vector<float> stereo;
  for (const float x : mono)
    stereo.insert(stereo.end(), {x, x});
  return {{2, stereo}};
}

TEST(DenormalCost, TheInputProcedureTakesAtMostHalfAsLongAgain) {
  for (const auto &[buffers, channels] :
       std::vector<std::pair<UInt32, UInt32>>{{1, 1}, {1, 2}, {1, 3}, {1, 8}, {2, 1}, {8, 1}}) {
    Callback small(layout(denormal, buffers, channels));
    Callback usual(layout(ordinary, buffers, channels));
    const double times = timesAsLong(small, usual);
    std::cout << buffers << " × " << channels << " channels: " << times << " times\n";
    EXPECT_LE(times, kMostTimes) << buffers << " buffers of " << channels;
  }
  Callback small(duplicated(denormal));
  Callback usual(duplicated(ordinary));
  const double times = timesAsLong(small, usual);
  std::cout << "duplicated stereo: " << times << " times\n";
  EXPECT_LE(times, kMostTimes) << "duplicated stereo";
}

// A block that starts like the one and ends like the other costs what the two do.
TEST(DenormalCost, TheDetectorTakesAtMostHalfAsLongAgain) {
  CaptureFeed feed(kRate);
  feed.feedMono({0.0F});
  PitchDetector detector(feed.capture);
  const auto blockOf = [](const std::vector<float> &samples) {
    return CaptureBlock::withBytes(samples.data(), samples.size() * sizeof(float));
  };
  const auto detect = [&](const CaptureBlock &block) {
    return [&] {
      for (int n = 0; n < 50; ++n)
        detector.detectPitch(block);
    };
  };
  // A tone of few and of many periods, so that the scan goes on to the end, and noise, of which it
  // soon has enough.
  for (const std::size_t period : {2618U, 100U, 42U}) {
    std::vector<float> usual(blockFrames(kRate));
    std::vector<float> small(usual.size());
    Random random(period);
    for (std::size_t n = 0; n < usual.size(); ++n) {
      const float sign = n % period < period / 2 ? 1.0F : -1.0F;
      usual[n] = sign * std::abs(ordinary(random));
      small[n] = sign * std::abs(denormal(random));
    }
    const double times = timesAsLong(detect(blockOf(small)), detect(blockOf(usual)));
    std::cout << "periods of " << period << ": " << times << " times\n";
    EXPECT_LE(times, kMostTimes) << "periods of " << period;
  }
  const double times = timesAsLong(detect(blockOf(noise(denormal, blockFrames(kRate)))),
                                   detect(blockOf(noise(ordinary, blockFrames(kRate)))));
  std::cout << "noise: " << times << " times\n";
  EXPECT_LE(times, kMostTimes) << "noise";
}

}  // namespace
}  // namespace orvane::test
