// The clock by which recordings are played: a time that never runs backwards, and a wait that can
// be broken off. Tests put a clock of their own in its place.
#pragma once

#include <chrono>
#include <stop_token>

namespace orvane {

class PlaybackClock {
 public:
  virtual ~PlaybackClock() = default;

  // Input thread; several at once.
  virtual std::chrono::nanoseconds now() = 0;
  // Input thread; several at once. Waits until due; true when it came, false as soon as a stop is
  // requested.
  virtual bool waitUntil(std::chrono::nanoseconds due, const std::stop_token &stop) = 0;
};

// The monotonic clock of the system.
class SteadyPlaybackClock : public PlaybackClock {
 public:
  std::chrono::nanoseconds now() override;
  bool waitUntil(std::chrono::nanoseconds due, const std::stop_token &stop) override;
};

}  // namespace orvane
