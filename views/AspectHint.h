// What the window manager is told of a window's proportions, so that a drag at its edge keeps them.
// Main thread.
#pragma once

#include <QSize>

class QWindow;

namespace orvane {

// The proportions of the window without its decorations; none when ratio is empty. Without effect
// where there is no such hint. The toolkit takes the hint away when it sets the window's geometry.
void setAspectHint(const QWindow &window, const QSize &ratio);

}  // namespace orvane
