#include "views/WindowBackground.h"

#include <cstdint>

#include <xcb/xcb.h>
#include <QColor>
#include <QScreen>
#include <QWindow>

#include "views/X11Connection.h"

namespace orvane {

void setWindowBackground(const QWindow &window, const QColor &color) {
  xcb_connection_t *connection = x11Connection();
  // Eight bits a component, as the colour has them.
  if (!connection || (window.screen()->depth() != 24 && window.screen()->depth() != 32))
    return;
  const std::uint32_t pixel = color.rgba();
  xcb_change_window_attributes(connection, static_cast<xcb_window_t>(window.winId()),
                               XCB_CW_BACK_PIXEL, &pixel);
}

}  // namespace orvane
