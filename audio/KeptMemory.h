// Keeps the memory that the blocks of sound come and go in. Left to itself the allocator gives it
// back to the system with nearly every block and takes it again with the next; the input thread,
// which takes it, can then have to wait for a main thread that is in the midst of giving back.
#pragma once

#include <malloc.h>

namespace orvane {

// Call before any thread is started. Up to 1 MiB that is free stays the program's.
inline void keepFreedMemory() noexcept {
#ifdef __GLIBC__
  constexpr int kKept = 1 << 20;  // bytes
  mallopt(M_TRIM_THRESHOLD, kKept);
  mallopt(M_TOP_PAD, kKept);
#endif
}

}  // namespace orvane
