// Counts what a test program has in memory: the linker's --wrap puts the functions __wrap_… of
// CountedMemory.cpp in the place of malloc, realloc, free, new and delete, for all that is linked
// into the program statically. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orvane::test {

struct CountedMemory {
  std::uint64_t allocations;  // since the start, those of realloc left out
  std::int64_t blocks;        // allocated and not freed yet
  std::int64_t bytes;         // in those; of what was reallocated, as many as were asked for
  // Bytes that the allocator has given out, or keeps for the next who asks; 0 where not known.
  std::size_t heap;

  static CountedMemory now();
};

}  // namespace orvane::test
