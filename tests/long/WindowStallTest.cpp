// The window's main thread away for long, while an input thread goes on in real time: the window
// must not crawl through what it missed, one painting for each. ./stall repeats it.
#include <gtest/gtest.h>

#include <iostream>
#include <thread>

#include "tests/app/PaintWatch.h"
#include "tests/app/SoundingTuner.h"
#include "tests/long/LongRun.h"
#include "tests/long/TellingRecording.h"

namespace orvane::test {
namespace {

TEST(WindowStall, WhatWasMissedIsPaintedOnceAndAtOnce) {
  SoundingTuner rig;
  const UpdateLoop &loop = rig.tuner.mLoop;
  rig.hardware.setSampleRate(TellingRecording::kRate);
  PaintWatch watch;
  double longest = 0.0;
  std::uint64_t block = 0;
  const std::uint64_t count = longRunCount(1);
  for (std::uint64_t n = 0; n < count; ++n) {
    rig.play(TellingRecording::samplesOf(block++));
    watch.settle();

    const auto start = std::chrono::steady_clock::now();
    const std::uint64_t first = block;
    std::thread input([&] {
      for (; secondsSince(start) < std::chrono::duration<double>(kStall).count(); ++block) {
        rig.hardware.sound({{1, TellingRecording::samplesOf(block)}});
        std::this_thread::sleep_until(
            start + std::chrono::duration_cast<std::chrono::nanoseconds>(
                        std::chrono::duration<double>(TellingRecording::kBlockFrames) *
                        static_cast<double>(block + 1 - first) / TellingRecording::kRate));
      }
    });
    input.join();  // the main thread is away
    ASSERT_GT(block, first + 30);

    const auto end = std::chrono::steady_clock::now();
    const float newest = TellingRecording::frequencyOf(block - 1);
    while (loop.mDisplayFrequency != newest && secondsSince(end) < 30.0)
      QApplication::processEvents();
    QApplication::processEvents();
    longest = std::max(longest, secondsSince(end));
    ASSERT_EQ(loop.mDisplayFrequency, newest);
    ASSERT_LE(longest, kCurrentWithin);
    const Paints paints = watch.settle();
    ASSERT_EQ(paints.at("mFrequencyText"), 1);
    for (const auto &[name, number] : paints)
      ASSERT_EQ(number, 1) << name;
    ASSERT_EQ(rig.tuner.mBlocks.lostBlocks(), 0U);
  }
  std::cout << count << " stalls of 5 s, " << block << " blocks, painted at the latest "
            << longest * 1000.0 << " ms after a stall\n";
}

}  // namespace
}  // namespace orvane::test
