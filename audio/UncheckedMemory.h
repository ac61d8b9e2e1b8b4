// What happens where a library uses memory without looking whether it got it. Without this the
// program would end by signal, and nobody be told why.
#pragma once

namespace orvane {

// From now on such a fault is one line on standard error, "PROGRAM: memory: not enough", and exit
// status 1. It is known by its address, which is close to none, and by the last error of the
// thread, which is the allocator's; after a want of memory that was got over, another fault may
// look the same. Every other one is told of, "PROGRAM: LIBRARY: used memory that is not there", and
// then goes the way it would have gone; so is a trap, by which libraries end a program: "PROGRAM:
// LIBRARY: ended the program". A full stack is told of on the calling thread only. The name must
// live as long as the program. Call once, before other threads are started; allocates nothing.
void reportUncheckedMemory(const char *program) noexcept;

}  // namespace orvane
