// The fonts of the system, before the toolkit asks for them. Without memory the font library would
// then try for ever; asked here, it tells.
#pragma once

namespace orvane {

// False when there is not enough memory for them. Without it the library can also forget one of its
// locks and wait for that; no other thread being there to open it, the process then ends, after
// some three seconds, with one line and exit status 1 (on x86-64 and arm64; elsewhere it waits).
// Other programs' locks and slow disks are waited for. Main thread, before any other is started;
// borrows ITIMER_REAL.
bool loadFonts();

}  // namespace orvane
