// The toolkit's connection to the X server. Main thread.
#pragma once

#include <QGuiApplication>

namespace orvane {

// Null where there is none.
inline xcb_connection_t *x11Connection() {
  const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return x11 ? x11->connection() : nullptr;
}

}  // namespace orvane
