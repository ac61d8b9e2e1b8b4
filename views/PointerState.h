// The mouse as the whole screen sees it, also while it acts on what is not the program's, such as
// the edge of a window. Main thread.
#pragma once

namespace orvane {

// Whether a mouse button is down. False where it cannot be known.
bool isMouseButtonDown();

}  // namespace orvane
