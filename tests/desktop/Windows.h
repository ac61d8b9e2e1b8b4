// The windows of a desktop, as its window manager knows them, and what a task bar can do with them.
// Rectangles are pixels from the top left of the screen. A window that is gone has empty rectangles
// and takes no commands. Main thread only.
#pragma once

#include <QRect>
#include <string>
#include <vector>

#include "tests/desktop/Desktop.h"

namespace orvane::test {

using WindowId = unsigned long;

class Windows {
 public:
  explicit Windows(const Desktop &desktop) : mConnection(desktop.connection()) {}

  // The first window with that title, 0 when there is none.
  WindowId find(const std::string &title) const;
  // In the order in which they appeared; minimised ones included.
  std::vector<WindowId> all() const;
  WindowId active() const;
  std::string title(WindowId window) const;
  // Empty for a window that is minimised or gone.
  QRect content(WindowId window) const;
  QRect frame(WindowId window) const;
  bool isMinimized(WindowId window) const;
  bool isMaximized(WindowId window) const;
  // Whether it asks the window manager to keep certain proportions.
  bool hasAspect(WindowId window) const;
  // Of the pictures, all square, from which a task bar may choose.
  std::vector<unsigned long> iconWidths(WindowId window) const;

  void activate(WindowId window) const;
  // Asks the program to close it, as the button in its frame does.
  void close(WindowId window) const;
  // Cuts the connection of the program that the window belongs to.
  void killClient(WindowId window) const;
  void minimize(WindowId window) const;
  // Both ways at once.
  void maximize(WindowId window, bool isOn = true) const;
  // Places the frame and sizes the content, as another program may.
  void moveResize(WindowId window, const QPoint &frameOrigin, const QSize &contentSize) const;

 private:
  std::vector<unsigned long> property(WindowId window, const char *name) const;
  void request(WindowId window, const char *message, const std::vector<long> &data) const;

  XConnection &mConnection;
};

// Hears every size that a window has from now on. One at a time for a window.
class SizeLog {
 public:
  SizeLog(const Desktop &desktop, WindowId window);
  ~SizeLog();

  SizeLog(const SizeLog &) = delete;
  SizeLog &operator=(const SizeLog &) = delete;

  // The sizes of the window without its decorations since the last time, each that differs from the
  // one before.
  std::vector<QSize> take();

 private:
  XConnection &mConnection;
  const WindowId mWindow;
};

}  // namespace orvane::test
