// Lets allocations of this program fail: malloc, realloc and the new[] that does not throw, where
// the code under test calls them by itself. The linker puts the stand-ins in their place.
#pragma once

#include <cstddef>

namespace orvane::test {

// While it lives, the calling thread's allocations of that many bytes or more fail.
class FailingAllocations {
 public:
  explicit FailingAllocations(std::size_t leastSize);
  ~FailingAllocations();
  FailingAllocations(const FailingAllocations &) = delete;
  FailingAllocations &operator=(const FailingAllocations &) = delete;

  int failures() const;
};

}  // namespace orvane::test
