#include "tests/core/FailingAllocations.h"

#include <cstdint>
#include <new>

namespace {

thread_local std::size_t leastFailing = SIZE_MAX;
thread_local int failureCount = 0;

bool fails(std::size_t size) {
  if (size < leastFailing)
    return false;
  ++failureCount;
  return true;
}

}  // namespace

// The names are the linker's: __wrap_NAME is called in place of NAME, which __real_NAME still is.
extern "C" {
void *__real_malloc(std::size_t size);
void *__real_realloc(void *memory, std::size_t size);
void *__real__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t &tag);

void *__wrap_malloc(std::size_t size) {
  return fails(size) ? nullptr : __real_malloc(size);
}

void *__wrap_realloc(void *memory, std::size_t size) {
  return fails(size) ? nullptr : __real_realloc(memory, size);
}

void *__wrap__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t &tag) {
  return fails(size) ? nullptr : __real__ZnamRKSt9nothrow_t(size, tag);
}
}

namespace orvane::test {

FailingAllocations::FailingAllocations(std::size_t leastSize) {
  failureCount = 0;
  leastFailing = leastSize;
}

FailingAllocations::~FailingAllocations() {
  leastFailing = SIZE_MAX;
}

int FailingAllocations::failures() const {
  return failureCount;
}

}  // namespace orvane::test
