#include "audio/PlaybackClock.h"

#include <condition_variable>
#include <mutex>

namespace orvane {

std::chrono::nanoseconds SteadyPlaybackClock::now() {
  return std::chrono::steady_clock::now().time_since_epoch();
}

bool SteadyPlaybackClock::waitUntil(std::chrono::nanoseconds due, const std::stop_token &stop) {
  std::mutex mutex;
  std::condition_variable_any stopped;
  std::unique_lock lock(mutex);
  const std::chrono::steady_clock::time_point time(due);
  // Nobody notifies: only a stop or the time ends the wait.
  stopped.wait_until(lock, stop, time, [] { return false; });
  return !stop.stop_requested();
}

}  // namespace orvane
