#include "views/PointerState.h"

#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>
#include <QGuiApplication>

namespace orvane {

bool isMouseButtonDown() {
  const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (!x11)
    return false;
  xcb_connection_t *connection = x11->connection();
  const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
  const std::unique_ptr<xcb_query_pointer_reply_t, decltype(&std::free)> reply(
      xcb_query_pointer_reply(connection, xcb_query_pointer(connection, root), nullptr),
      &std::free);
  constexpr unsigned kButtons = XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3;
  return reply && (reply->mask & kButtons) != 0;
}

}  // namespace orvane
