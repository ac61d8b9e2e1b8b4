#include "app/MainRunLoop.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <memory>
#include <thread>
#include <vector>

namespace orvane::test {
namespace {

class MainRunLoopTest : public testing::Test {
 protected:
  void post(std::function<void()> selector) {
    loop->performSelectorOnMainThread(std::move(selector), {});
  }
  void postFromAnotherThread(const std::function<void()> &selector) {
    std::thread([&] { post(selector); }).join();
  }
  // Selectors that write down these numbers.
  void postNumbers(int first, int last) {
    for (int number = first; number <= last; ++number)
      post([this, number] { ran.push_back(number); });
  }

  std::unique_ptr<MainRunLoop> loop = std::make_unique<MainRunLoop>();
  std::vector<int> ran;
};

TEST_F(MainRunLoopTest, SelectorsOfAnotherThreadRunOnTheMainThreadInTheOrderOfPosting) {
  std::vector<std::thread::id> threads;
  std::thread poster([&] {
    for (int i = 0; i < 3; ++i)
      post([&] { threads.push_back(std::this_thread::get_id()); });
    postNumbers(1, 50);
  });
  poster.join();
  EXPECT_TRUE(threads.empty());
  QCoreApplication::processEvents();
  EXPECT_EQ(threads, std::vector<std::thread::id>(3, std::this_thread::get_id()));
  ASSERT_EQ(ran.size(), 50U);
  EXPECT_EQ(ran.front(), 1);
  EXPECT_TRUE(std::ranges::is_sorted(ran));
}

TEST_F(MainRunLoopTest, EachSelectorOfTwoThreadsAtOnceRunsOnceAndInItsThreadsOrder) {
  std::thread first([&] { postNumbers(1, 500); });
  std::thread second([&] { postNumbers(1001, 1500); });
  while (ran.size() < 1000)
    QCoreApplication::processEvents();
  first.join();
  second.join();
  QCoreApplication::processEvents();
  ASSERT_EQ(ran.size(), 1000U);
  std::stable_partition(ran.begin(), ran.end(), [](int number) { return number <= 500; });
  for (std::size_t i = 0; i < 500; ++i) {
    ASSERT_EQ(ran[i], static_cast<int>(i) + 1);
    ASSERT_EQ(ran[500 + i], static_cast<int>(i) + 1001);
  }
}

TEST_F(MainRunLoopTest, ASelectorPostedOnTheMainThreadRunsLater) {
  postNumbers(1, 1);
  EXPECT_EQ(ran, std::vector<int>());
  QCoreApplication::processEvents();
  EXPECT_EQ(ran, std::vector<int>{1});
}

TEST_F(MainRunLoopTest, ASelectorMayPostAnother) {
  post([&] {
    postNumbers(2, 2);
    ran.push_back(1);
  });
  while (ran.size() < 2)
    QCoreApplication::processEvents();
  EXPECT_EQ(ran, (std::vector<int>{1, 2}));
}

// As a dialog has.
TEST_F(MainRunLoopTest, OthersRunWhileASelectorHasAnEventLoopOfItsOwn) {
  post([&] {
    QEventLoop dialog;
    QTimer::singleShot(0, &dialog, &QEventLoop::quit);
    dialog.exec();
    ran.push_back(1);
  });
  postNumbers(2, 3);
  QCoreApplication::processEvents();
  EXPECT_EQ(ran, (std::vector<int>{2, 3, 1}));
}

TEST_F(MainRunLoopTest, WhatStillWaitsWhenItIsDestroyedNeverRunsAndIsReleased) {
  auto held = std::make_shared<int>(0);
  const std::weak_ptr<int> life = held;
  postFromAnotherThread([this, held] { ran.push_back(*held); });
  held.reset();
  EXPECT_FALSE(life.expired());
  loop.reset();
  EXPECT_TRUE(life.expired());
  QCoreApplication::processEvents();
  EXPECT_EQ(ran, std::vector<int>());
}

TEST_F(MainRunLoopTest, ASelectorIsReleasedOnceItHasRun) {
  auto held = std::make_shared<int>(0);
  const std::weak_ptr<int> life = held;
  postFromAnotherThread([this, held] { ran.push_back(*held); });
  held.reset();
  QCoreApplication::processEvents();
  EXPECT_EQ(ran, std::vector<int>{0});
  EXPECT_TRUE(life.expired());
}

}  // namespace
}  // namespace orvane::test
