// Tells what a thread does that a real-time thread should not: allocations, locks and system calls,
// from a scope's beginning to its end. Each test program is linked with one of its implementations:
// InterposedScope notes everything; SanitizedScope notes allocations of the two kinds that the
// input procedure may make, and leaves it to RealtimeSanitizer to end the program at anything else;
// UnwatchedScope notes nothing.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>

namespace orvane::test {

struct RealTimeEvent {
  enum class Kind { kAllocation, kReallocation, kFree, kLock, kSystemCall };

  Kind kind = Kind::kAllocation;
  long number = 0;           // bytes of an allocation, number of a system call
  long argument = 0;         // of a system call, its first
  bool inAllocator = false;  // a system call that an allocation led to
};

// A sentence about it, for a failing test.
std::string textOf(const RealTimeEvent &event);
// "mprotect"; the number where it has no business in an allocator.
std::string nameOfSystemCall(long number);

class RealTimeScope {
 public:
  // The thread that makes it; one at a time on a thread.
  RealTimeScope();
  ~RealTimeScope();

  RealTimeScope(const RealTimeScope &) = delete;
  RealTimeScope &operator=(const RealTimeScope &) = delete;

  // Ends the watch; what was done until then, in its order. Beyond kMostEvents only the number is
  // kept.
  std::span<const RealTimeEvent> end();

  // Whether this implementation can see that kind at all, on this system.
  static bool sees(RealTimeEvent::Kind kind);
  // Whether the program ends at what the input procedure may not do.
  static bool endsTheProgram();

  // Implementations only. Called within the scope.
  void note(const RealTimeEvent &event);

 private:
  static constexpr std::size_t kMostEvents = 64;

  std::array<RealTimeEvent, kMostEvents> mEvents{};
  std::size_t mCount = 0;
  bool mIsOpen = true;
};

}  // namespace orvane::test
