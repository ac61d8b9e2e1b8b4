// The clocks of the whole test program, in the test's hands: SteppedClocks.cpp puts functions of
// its own in the place of the library's. Any thread.
#pragma once

namespace orvane::test {

// Somebody sets the time of day.
void stepWallClock(double seconds);
// Time passes on every clock, as it does for a process that is stopped meanwhile.
void passTime(double seconds);

}  // namespace orvane::test
