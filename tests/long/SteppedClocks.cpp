#include "tests/long/SteppedClocks.h"

#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cmath>

namespace {

constexpr long kSecond = 1000000000;  // nanoseconds

std::atomic<long> wallStep{0};    // nanoseconds
std::atomic<long> timePassed{0};  // nanoseconds

long nanoseconds(double seconds) {
  return std::lround(seconds * static_cast<double>(kSecond));
}

int steppedTime(clockid_t clock, timespec *time) {
  // Past the library, which would call the functions below.
  if (const long status = syscall(SYS_clock_gettime, clock, time); status != 0)
    return static_cast<int>(status);
  const bool isWall = clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE;
  const bool isProcessor = clock == CLOCK_PROCESS_CPUTIME_ID || clock == CLOCK_THREAD_CPUTIME_ID;
  const long total =
      time->tv_nsec + (isProcessor ? 0 : timePassed.load()) + (isWall ? wallStep.load() : 0);
  const long seconds = total >= 0 ? total / kSecond : -((kSecond - 1 - total) / kSecond);
  time->tv_sec += seconds;
  time->tv_nsec = total - seconds * kSecond;
  return 0;
}

}  // namespace

namespace orvane::test {

void stepWallClock(double seconds) {
  wallStep += nanoseconds(seconds);
}

void passTime(double seconds) {
  timePassed += nanoseconds(seconds);
}

}  // namespace orvane::test

extern "C" {

int clock_gettime(clockid_t clock, timespec *time) noexcept {
  return steppedTime(clock, time);
}

int gettimeofday(timeval *time, void * /*zone*/) noexcept {
  timespec exact{};
  const int status = steppedTime(CLOCK_REALTIME, &exact);
  *time = {exact.tv_sec, exact.tv_nsec / 1000};
  return status;
}

time_t time(time_t *seconds) noexcept {
  timespec exact{};
  steppedTime(CLOCK_REALTIME, &exact);
  if (seconds != nullptr)
    *seconds = exact.tv_sec;
  return exact.tv_sec;
}

}  // extern "C"
