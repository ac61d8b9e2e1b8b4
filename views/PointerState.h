// The mouse and the keys as the whole screen sees them, also while they act on what is not the
// program's, such as the edge of a window. Main thread.
#pragma once

#include <Qt>

namespace orvane {

struct PointerState {
  bool isButtonDown = false;        // any of the mouse's three
  Qt::KeyboardModifiers modifiers;  // Shift and Alt only
};

// Both as they are at this moment; nothing is down where it cannot be known.
PointerState pointerState();

}  // namespace orvane
