// RealtimeSanitizer ends the program at every allocation, lock and blocking call of a watched
// thread, but for the two allocations that the input procedure may make: they pass, and are noted.
// Which of them are right is for the test to say.
#include <cstdlib>
#include <new>

#include "tests/realtime/RealTimeScope.h"

// The sanitizer's run-time library has no header.
extern "C" {
void __rtsan_init();
void __rtsan_realtime_enter();
void __rtsan_realtime_exit();
void __rtsan_off();
void __rtsan_on();
}

namespace orvane::test {

namespace {

constinit thread_local RealTimeScope *tScope = nullptr;

[[maybe_unused]] const bool kIsReady = [] {
  __rtsan_init();
  return true;
}();

class Permit {
 public:
  Permit(RealTimeEvent::Kind kind, std::size_t bytes) {
    if (tScope == nullptr)
      return;
    tScope->note({kind, static_cast<long>(bytes), 0, false});
    mIsGranted = true;
    __rtsan_off();
  }
  ~Permit() {
    if (mIsGranted)
      __rtsan_on();
  }
  Permit(const Permit &) = delete;
  Permit &operator=(const Permit &) = delete;

 private:
  bool mIsGranted = false;
};

}  // namespace

RealTimeScope::RealTimeScope() {
  tScope = this;
  __rtsan_realtime_enter();
}

std::span<const RealTimeEvent> RealTimeScope::end() {
  if (mIsOpen) {
    __rtsan_realtime_exit();
    tScope = nullptr;
    mIsOpen = false;
  }
  return {mEvents.data(), mCount};
}

RealTimeScope::~RealTimeScope() {
  end();
}

bool RealTimeScope::sees(RealTimeEvent::Kind kind) {
  return kind == RealTimeEvent::Kind::kAllocation || kind == RealTimeEvent::Kind::kReallocation;
}

bool RealTimeScope::endsTheProgram() {
  return true;
}

}  // namespace orvane::test

using orvane::test::Permit;
using Kind = orvane::test::RealTimeEvent::Kind;

// How a capture block is copied.
void *operator new[](std::size_t bytes, const std::nothrow_t &) noexcept {
  const Permit permit(Kind::kAllocation, bytes);
  return std::malloc(bytes);
}
void operator delete[](void *memory) noexcept {
  std::free(memory);
}
void operator delete[](void *memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete[](void *memory, const std::nothrow_t &) noexcept {
  std::free(memory);
}

// How the capture buffer takes a new length. The linker leads every call here (--wrap).
extern "C" {
void *__real_realloc(void *memory, std::size_t bytes);
void *__wrap_realloc(void *memory, std::size_t bytes);

void *__wrap_realloc(void *memory, std::size_t bytes) {
  const Permit permit(Kind::kReallocation, bytes);
  return __real_realloc(memory, bytes);
}
}
