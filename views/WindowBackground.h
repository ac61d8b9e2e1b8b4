// What is to be seen of a window where it has grown and is not painted yet. Main thread.
#pragma once

class QColor;
class QWindow;

namespace orvane {

// The window exists on the desktop. Without effect where the desktop shows a window's new size
// together with its new picture.
void setWindowBackground(const QWindow &window, const QColor &color);

}  // namespace orvane
