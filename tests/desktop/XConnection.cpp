#include "tests/desktop/XConnection.h"

#include <X11/Xlib.h>

#include <stdexcept>

namespace orvane::test {

namespace {

int ignoreError(::Display *, XErrorEvent *) {
  return 0;
}

}  // namespace

XConnection::XConnection(const std::string &display) : mDisplay(XOpenDisplay(display.c_str())) {
  if (mDisplay == nullptr)
    throw std::runtime_error("no X server at " + display);
  XSetErrorHandler(ignoreError);
}

XConnection::~XConnection() {
  XCloseDisplay(mDisplay);
}

}  // namespace orvane::test
