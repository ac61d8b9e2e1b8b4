#include "tests/realtime/RealTimeScope.h"

#include <sys/syscall.h>

namespace orvane::test {

void RealTimeScope::note(const RealTimeEvent &event) {
  if (mCount < kMostEvents)
    mEvents[mCount++] = event;
}

std::string nameOfSystemCall(long number) {
  switch (number) {
    case SYS_brk:
      return "brk";
    case SYS_mmap:
      return "mmap";
    case SYS_munmap:
      return "munmap";
    case SYS_mprotect:
      return "mprotect";
    case SYS_madvise:
      return "madvise";
    case SYS_futex:
      return "futex";
    case SYS_write:
      return "write";
    default:
      return "system call " + std::to_string(number);
  }
}

std::string textOf(const RealTimeEvent &event) {
  const std::string bytes = std::to_string(event.number) + " bytes";
  switch (event.kind) {
    case RealTimeEvent::Kind::kAllocation:
      return "allocation of " + bytes;
    case RealTimeEvent::Kind::kReallocation:
      return "reallocation to " + bytes;
    case RealTimeEvent::Kind::kFree:
      return "free";
    case RealTimeEvent::Kind::kLock:
      return "lock";
    case RealTimeEvent::Kind::kSystemCall:
      break;
  }
  return nameOfSystemCall(event.number) + "(" + std::to_string(event.argument) + ", …)" +
         (event.inAllocator ? " in the allocator" : "");
}

}  // namespace orvane::test
