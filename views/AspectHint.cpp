#include "views/AspectHint.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <xcb/xcb.h>
#include <QWindow>

#include "views/X11Connection.h"

namespace orvane {
namespace {

// Of the property, in words of 32 bits.
constexpr std::size_t kLength = 18;
constexpr std::size_t kFlags = 0;
constexpr std::size_t kSmallestAspect = 11;  // width, height
constexpr std::size_t kLargestAspect = 13;
constexpr std::uint32_t kHasAspect = 1U << 7U;

}  // namespace

void setAspectHint(const QWindow &window, const QSize &ratio) {
  xcb_connection_t *connection = x11Connection();
  if (!connection)
    return;
  const auto id = static_cast<xcb_window_t>(window.winId());
  const std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> reply(
      xcb_get_property_reply(connection,
                             xcb_get_property(connection, 0, id, XCB_ATOM_WM_NORMAL_HINTS,
                                              XCB_ATOM_WM_SIZE_HINTS, 0, kLength),
                             nullptr),
      &std::free);
  std::array<std::uint32_t, kLength> hints{};
  if (!reply || reply->format != 32 ||
      xcb_get_property_value_length(reply.get()) != static_cast<int>(sizeof(hints)))
    return;
  std::memcpy(hints.data(), xcb_get_property_value(reply.get()), sizeof(hints));
  if (ratio.isEmpty() && (hints[kFlags] & kHasAspect) == 0)
    return;
  hints[kFlags] = ratio.isEmpty() ? hints[kFlags] & ~kHasAspect : hints[kFlags] | kHasAspect;
  for (const std::size_t aspect : {kSmallestAspect, kLargestAspect}) {
    hints[aspect] = static_cast<std::uint32_t>(ratio.width());
    hints[aspect + 1] = static_cast<std::uint32_t>(ratio.height());
  }
  xcb_change_property(connection, XCB_PROP_MODE_REPLACE, id, XCB_ATOM_WM_NORMAL_HINTS,
                      XCB_ATOM_WM_SIZE_HINTS, 32, kLength, hints.data());
  xcb_flush(connection);
}

}  // namespace orvane
