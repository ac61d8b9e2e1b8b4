#include "tests/long/CountedMemory.h"

#include <malloc.h>

#include <atomic>
#include <new>

// The new and delete that the tuner uses, by the names they have for the linker.
extern "C" {
void *__real_malloc(std::size_t size);
void *__real_realloc(void *memory, std::size_t size);
void __real_free(void *memory);
void *__real__Znwm(std::size_t size);
void *__real__Znam(std::size_t size);
void *__real__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t &tag);
void *__real__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t &tag);
void __real__ZdlPv(void *memory);
void __real__ZdaPv(void *memory);
void __real__ZdlPvm(void *memory, std::size_t size);
void __real__ZdaPvm(void *memory, std::size_t size);
}

namespace {

std::atomic<std::uint64_t> allocationsMade{0};
std::atomic<std::int64_t> liveBlocks{0};
std::atomic<std::int64_t> liveBytes{0};

// The one block that is reallocated: the capture buffer. What it has beyond what was asked for
// depends on its neighbours.
std::atomic<void *> reallocated{nullptr};
std::atomic<std::int64_t> reallocatedBytes{0};

void *counted(void *memory) {
  if (memory == nullptr)
    return nullptr;
  ++allocationsMade;
  ++liveBlocks;
  liveBytes += static_cast<std::int64_t>(malloc_usable_size(memory));
  return memory;
}

void *discounted(void *memory) {
  if (memory == nullptr)
    return nullptr;
  --liveBlocks;
  if (memory != reallocated) {
    liveBytes -= static_cast<std::int64_t>(malloc_usable_size(memory));
    return memory;
  }
  liveBytes -= reallocatedBytes.exchange(0);
  reallocated = nullptr;
  return memory;
}

}  // namespace

namespace orvane::test {

CountedMemory CountedMemory::now() {
  const struct mallinfo2 heap = mallinfo2();
  return {allocationsMade, liveBlocks, liveBytes, heap.uordblks + heap.hblkhd};
}

}  // namespace orvane::test

extern "C" {

void *__wrap_malloc(std::size_t size) {
  return counted(__real_malloc(size));
}

void *__wrap_realloc(void *memory, std::size_t size) {
  void *grown = __real_realloc(memory, size);
  if (grown == nullptr)
    return nullptr;
  if (reallocated == nullptr)
    ++liveBlocks;
  liveBytes += static_cast<std::int64_t>(size) - reallocatedBytes.load();
  reallocated = grown;
  reallocatedBytes = static_cast<std::int64_t>(size);
  return grown;
}

void __wrap_free(void *memory) {
  __real_free(discounted(memory));
}

void *__wrap__Znwm(std::size_t size) {
  return counted(__real__Znwm(size));
}

void *__wrap__Znam(std::size_t size) {
  return counted(__real__Znam(size));
}

void *__wrap__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t &tag) {
  return counted(__real__ZnwmRKSt9nothrow_t(size, tag));
}

void *__wrap__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t &tag) {
  return counted(__real__ZnamRKSt9nothrow_t(size, tag));
}

void __wrap__ZdlPv(void *memory) {
  __real__ZdlPv(discounted(memory));
}

void __wrap__ZdaPv(void *memory) {
  __real__ZdaPv(discounted(memory));
}

void __wrap__ZdlPvm(void *memory, std::size_t size) {
  __real__ZdlPvm(discounted(memory), size);
}

void __wrap__ZdaPvm(void *memory, std::size_t size) {
  __real__ZdaPvm(discounted(memory), size);
}

}  // extern "C"
