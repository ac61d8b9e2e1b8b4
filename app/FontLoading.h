// The fonts of the system, before the toolkit asks for them. Without memory the font library would
// then try for ever; asked here, it tells.
#pragma once

namespace orvane {

// False when there is not enough memory for them. Where the library waits for what never comes, a
// lock of its own or a disk that is gone, the process ends with one line and exit status 1, once it
// has done nothing for ten seconds. Main thread, before any other is started; uses the process's
// ITIMER_REAL.
bool loadFonts();

}  // namespace orvane
