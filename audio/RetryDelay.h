// How long to wait before trying again: 100 ms after the first failure, twice as long after each
// further one, never more than 1.6 s. One thread only.
#pragma once

#include <algorithm>
#include <chrono>

namespace orvane {

class RetryDelay {
 public:
  static constexpr std::chrono::milliseconds kFirst{100};
  static constexpr std::chrono::milliseconds kLongest{1600};

  // The delay for this failure.
  std::chrono::milliseconds next() {
    const auto delay = mNext;
    mNext = std::min(2 * mNext, kLongest);
    return delay;
  }
  // To be called after a success.
  void reset() { mNext = kFirst; }

 private:
  std::chrono::milliseconds mNext = kFirst;
};

}  // namespace orvane
