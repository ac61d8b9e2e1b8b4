#include "views/PointerState.h"

#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

#include "views/X11Connection.h"

namespace orvane {

PointerState pointerState() {
  xcb_connection_t *connection = x11Connection();
  if (!connection)
    return {};
  const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
  const std::unique_ptr<xcb_query_pointer_reply_t, decltype(&std::free)> reply(
      xcb_query_pointer_reply(connection, xcb_query_pointer(connection, root), nullptr),
      &std::free);
  if (!reply)
    return {};
  constexpr unsigned kButtons = XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3;
  PointerState state;
  state.isButtonDown = (reply->mask & kButtons) != 0;
  state.modifiers.setFlag(Qt::ShiftModifier, (reply->mask & XCB_MOD_MASK_SHIFT) != 0);
  state.modifiers.setFlag(Qt::AltModifier, (reply->mask & XCB_MOD_MASK_1) != 0);
  return state;
}

}  // namespace orvane
