#include "audio/WakeUpDescriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <thread>

namespace orvane {
namespace {

bool isReadable(const WakeUpDescriptor &wakeUp, int timeoutMilliseconds = 0) {
  pollfd entry{wakeUp.descriptor(), POLLIN, 0};
  return poll(&entry, 1, timeoutMilliseconds) == 1 && (entry.revents & POLLIN) != 0;
}

TEST(WakeUpDescriptor, IsQuietUntilSignalled) {
  WakeUpDescriptor wakeUp;
  ASSERT_GE(wakeUp.descriptor(), 0);
  EXPECT_FALSE(isReadable(wakeUp));
  wakeUp.signal();
  EXPECT_TRUE(isReadable(wakeUp));
}

TEST(WakeUpDescriptor, OneClearTakesAllSignals) {
  WakeUpDescriptor wakeUp;
  wakeUp.signal();
  wakeUp.signal();
  wakeUp.signal();
  wakeUp.clear();
  EXPECT_FALSE(isReadable(wakeUp));
  wakeUp.signal();
  EXPECT_TRUE(isReadable(wakeUp));
}

TEST(WakeUpDescriptor, ClearingWithoutASignalDoesNotWaitAndKeepsErrno) {
  WakeUpDescriptor wakeUp;
  errno = E2BIG;
  wakeUp.clear();
  EXPECT_EQ(errno, E2BIG);
  EXPECT_FALSE(isReadable(wakeUp));
}

TEST(WakeUpDescriptor, SignallingAFullCounterDoesNotWaitAndKeepsErrno) {
  WakeUpDescriptor wakeUp;
  const std::uint64_t fullest = std::numeric_limits<std::uint64_t>::max() - 1;
  ASSERT_EQ(write(wakeUp.descriptor(), &fullest, sizeof(fullest)),
            static_cast<ssize_t>(sizeof(fullest)));
  errno = E2BIG;
  wakeUp.signal();
  EXPECT_EQ(errno, E2BIG);
  EXPECT_TRUE(isReadable(wakeUp));
}

TEST(WakeUpDescriptor, IsClosedInProgramsThatAreStarted) {
  WakeUpDescriptor wakeUp;
  EXPECT_NE(fcntl(wakeUp.descriptor(), F_GETFD) & FD_CLOEXEC, 0);
  EXPECT_NE(fcntl(wakeUp.descriptor(), F_GETFL) & O_NONBLOCK, 0);
}

TEST(WakeUpDescriptor, EverySignalOfAnotherThreadIsSeen) {
  WakeUpDescriptor wakeUp;
  constexpr int kSignals = 20000;
  std::atomic<int> sent = 0;
  std::thread sender([&] {
    for (int i = 0; i < kSignals; ++i) {
      sent.fetch_add(1);
      wakeUp.signal();
    }
  });
  int seen = 0;
  bool isLost = false;
  while (seen < kSignals && !isLost) {
    isLost = !isReadable(wakeUp, 60000);
    wakeUp.clear();
    seen = sent.load();
  }
  sender.join();
  EXPECT_FALSE(isLost);
  EXPECT_EQ(seen, kSignals);
}

TEST(WakeUpDescriptor, TheDescriptorIsGivenBack) {
  int descriptor = -1;
  {
    WakeUpDescriptor wakeUp;
    descriptor = wakeUp.descriptor();
  }
  EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
}

}  // namespace
}  // namespace orvane
