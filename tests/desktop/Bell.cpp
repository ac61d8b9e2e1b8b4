#include "tests/desktop/Bell.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>

namespace orvane::test {

Bell::Bell(const Desktop &desktop) : mConnection(desktop.display()) {
  int operation = 0;
  int firstError = 0;
  int major = XkbMajorVersion;
  int minor = XkbMinorVersion;
  XkbQueryExtension(mConnection.get(), &operation, &mFirstEvent, &firstError, &major, &minor);
  XkbSelectEvents(mConnection.get(), XkbUseCoreKbd, XkbBellNotifyMask, XkbBellNotifyMask);
  XSync(mConnection.get(), False);
}

int Bell::count() {
  XSync(mConnection.get(), False);
  while (XPending(mConnection.get()) > 0) {
    XEvent event{};
    XNextEvent(mConnection.get(), &event);
    const auto &keyboard = reinterpret_cast<const XkbEvent &>(event);
    if (event.type == mFirstEvent && keyboard.any.xkb_type == XkbBellNotify)
      ++mCount;
  }
  return mCount;
}

}  // namespace orvane::test
