// What happens to an error that nobody catches: one thrown before main or in a thread, or one that
// there was no memory to report. Without this it would end the program with a core dump.
#pragma once

namespace orvane {

// From now on such an error is one line on standard error, "PROGRAM: REASON", and exit status 1;
// nothing is unwound or written on the way. The name must live as long as the program. Any thread;
// allocates nothing, so that it can be called before anything else.
void reportUncaughtErrors(const char *program) noexcept;

// Besides: on the thread that calls this, memory that `new` cannot get ends the program in the same
// way at once, whoever would catch it. For a toolkit that does not stand being unwound.
void endWithoutMemory() noexcept;

}  // namespace orvane
