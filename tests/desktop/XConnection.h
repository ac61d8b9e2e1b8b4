// A connection to an X server. What goes wrong on it, such as a window that is gone by the time it
// is asked about, makes the one request fail and not the program end.
// One thread at a time.
#pragma once

#include <memory>
#include <string>

// Xlib's own name for it; its header's macros stay out of the tests.
struct _XDisplay;

namespace orvane::test {

class XConnection {
 public:
  // A display's name as in DISPLAY. Throws std::runtime_error when nobody answers there.
  explicit XConnection(const std::string &display);
  ~XConnection();

  XConnection(const XConnection &) = delete;
  XConnection &operator=(const XConnection &) = delete;

  _XDisplay *get() const { return mDisplay; }

 private:
  _XDisplay *mDisplay;
};

}  // namespace orvane::test
