// For programs that are watched by another sanitizer.
#include "tests/realtime/RealTimeScope.h"

namespace orvane::test {

RealTimeScope::RealTimeScope() = default;
RealTimeScope::~RealTimeScope() = default;

std::span<const RealTimeEvent> RealTimeScope::end() {
  mIsOpen = false;
  return {mEvents.data(), mCount};
}

bool RealTimeScope::sees(RealTimeEvent::Kind /*kind*/) {
  return false;
}

bool RealTimeScope::endsTheProgram() {
  return false;
}

}  // namespace orvane::test
