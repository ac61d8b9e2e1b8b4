// What ThreadSanitizer is worth with what it leaves out: a race of our own in a selector on the
// main thread, which the toolkit calls, must be reported.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "app/MainRunLoop.h"

namespace orvane::test {
namespace {

// A selector writes what another thread has read, with nothing between the two that orders them.
// What the thread that posts has written is no race.
void race(bool isPlanted) {
  MainRunLoop loop;
  // ThreadSanitizer remembers four accesses of eight bytes, so none of these shares them.
  alignas(8) int posted = 0;
  alignas(8) int shown = 0;
  std::atomic<bool> isRead{false};
  std::atomic<bool> isDone{false};
  std::thread reader([&] {
    EXPECT_EQ(isPlanted ? shown : 0, 0);
    isRead.store(true, std::memory_order_relaxed);
    // It forgets soon what an ended thread did, and a busy one.
    while (!isDone)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
  });
  std::thread notification([&] {
    posted = 1;
    loop.performSelectorOnMainThread(
        [&] {
          shown = posted;
          isDone = true;
        },
        {});
  });
  while (!isRead.load(std::memory_order_relaxed))
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  while (!isDone)
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  reader.join();
  notification.join();
}

TEST(PlantedRaceTest, ARaceInASelectorIsReported) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  constexpr int kExitCodeAfterReports = 66;
  EXPECT_EXIT(
      {
        race(true);
        std::exit(0);
      },
      testing::ExitedWithCode(kExitCodeAfterReports), "ThreadSanitizer: data race");
}

TEST(PlantedRaceTest, WhatIsHandedOverWithASelectorIsNone) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        race(false);
        std::exit(0);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace orvane::test
