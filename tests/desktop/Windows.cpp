#include "tests/desktop/Windows.h"

#include <algorithm>
// After the others, whose names its macros would replace.
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace orvane::test {

namespace {

// The source of a request to the window manager: a task bar, whose requests it follows.
constexpr long kFromTaskBar = 2;
constexpr long kLongestProperty = 1 << 18;  // of 32 bits: icons are pictures

// A property's data; freed with the object.
class PropertyReply {
 public:
  PropertyReply(::Display *display, WindowId window, const char *name, Atom type) {
    Atom actualType = 0;
    unsigned long rest = 0;
    XGetWindowProperty(display, window, XInternAtom(display, name, False), 0, kLongestProperty,
                       False, type, &actualType, &mFormat, &mCount, &rest, &mData);
  }
  ~PropertyReply() {
    if (mData != nullptr)
      XFree(mData);
  }
  PropertyReply(const PropertyReply &) = delete;
  PropertyReply &operator=(const PropertyReply &) = delete;

  std::string text() const {
    return mFormat == 8 ? std::string(reinterpret_cast<const char *>(mData), mCount)
                        : std::string();
  }
  // Xlib keeps numbers of 32 bits in longs.
  std::vector<unsigned long> numbers() const {
    if (mFormat != 32)
      return {};
    const auto *first = static_cast<const unsigned long *>(static_cast<const void *>(mData));
    return {first, first + mCount};
  }

 private:
  int mFormat = 0;
  unsigned long mCount = 0;
  unsigned char *mData = nullptr;
};

}  // namespace

WindowId Windows::find(const std::string &title) const {
  const std::vector<WindowId> windows = all();
  const auto found =
      std::ranges::find_if(windows, [&](WindowId window) { return this->title(window) == title; });
  return found == windows.end() ? 0 : *found;
}

std::vector<WindowId> Windows::all() const {
  return property(DefaultRootWindow(mConnection.get()), "_NET_CLIENT_LIST");
}

WindowId Windows::active() const {
  const auto window = property(DefaultRootWindow(mConnection.get()), "_NET_ACTIVE_WINDOW");
  return window.empty() ? 0 : window.front();
}

std::string Windows::title(WindowId window) const {
  return PropertyReply(mConnection.get(), window, "_NET_WM_NAME", AnyPropertyType).text();
}

QRect Windows::content(WindowId window) const {
  ::Display *display = mConnection.get();
  XWindowAttributes attributes{};
  if (XGetWindowAttributes(display, window, &attributes) == 0 || attributes.map_state != IsViewable)
    return {};
  int x = 0;
  int y = 0;
  ::Window child = 0;
  XTranslateCoordinates(display, window, DefaultRootWindow(display), 0, 0, &x, &y, &child);
  return {x, y, attributes.width, attributes.height};
}

QRect Windows::frame(WindowId window) const {
  const QRect inner = content(window);
  const auto extents = property(window, "_NET_FRAME_EXTENTS");
  if (inner.isEmpty() || extents.size() != 4)
    return {};
  const auto pixels = [&](std::size_t k) { return static_cast<int>(extents[k]); };
  return inner.adjusted(-pixels(0), -pixels(2), pixels(1), pixels(3));
}

bool Windows::isMinimized(WindowId window) const {
  const auto state = property(window, "WM_STATE");
  return !state.empty() && state.front() == IconicState;
}

bool Windows::isMaximized(WindowId window) const {
  const auto states = property(window, "_NET_WM_STATE");
  const auto has = [&](const char *name) {
    return std::ranges::count(states, XInternAtom(mConnection.get(), name, False)) == 1;
  };
  return has("_NET_WM_STATE_MAXIMIZED_HORZ") && has("_NET_WM_STATE_MAXIMIZED_VERT");
}

bool Windows::hasAspect(WindowId window) const {
  const auto hints = property(window, "WM_NORMAL_HINTS");
  return !hints.empty() && (hints.front() & PAspect) != 0;
}

void Windows::activate(WindowId window) const {
  request(window, "_NET_ACTIVE_WINDOW", {kFromTaskBar, CurrentTime, 0});
}

void Windows::close(WindowId window) const {
  request(window, "_NET_CLOSE_WINDOW", {CurrentTime, kFromTaskBar});
}

void Windows::killClient(WindowId window) const {
  XKillClient(mConnection.get(), window);
  XSync(mConnection.get(), False);
}

void Windows::minimize(WindowId window) const {
  XIconifyWindow(mConnection.get(), window, DefaultScreen(mConnection.get()));
  XSync(mConnection.get(), False);
}

void Windows::maximize(WindowId window, bool isOn) const {
  const auto state = [this](const char *name) {
    return static_cast<long>(XInternAtom(mConnection.get(), name, False));
  };
  request(window, "_NET_WM_STATE",
          {isOn ? 1 : 0, state("_NET_WM_STATE_MAXIMIZED_HORZ"),
           state("_NET_WM_STATE_MAXIMIZED_VERT"), kFromTaskBar});
}

// By the place of the content: a request by the frame's gravity is forgotten by some window
// managers at the next change of size, and the window jumps by its decorations then.
void Windows::moveResize(WindowId window, const QPoint &frameOrigin,
                         const QSize &contentSize) const {
  constexpr long kAllFour = 0xF00;
  const QPoint place = frameOrigin + content(window).topLeft() - frame(window).topLeft();
  request(window, "_NET_MOVERESIZE_WINDOW",
          {StaticGravity | kAllFour | (kFromTaskBar << 12), place.x(), place.y(),
           contentSize.width(), contentSize.height()});
}

std::vector<unsigned long> Windows::iconWidths(WindowId window) const {
  const std::vector<unsigned long> icons = property(window, "_NET_WM_ICON");
  std::vector<unsigned long> widths;
  // Each is its width, its height and its pixels.
  for (std::size_t at = 0; at + 1 < icons.size(); at += 2 + icons[at] * icons[at + 1])
    widths.push_back(icons[at]);
  return widths;
}

std::vector<unsigned long> Windows::property(WindowId window, const char *name) const {
  return PropertyReply(mConnection.get(), window, name, AnyPropertyType).numbers();
}

void Windows::request(WindowId window, const char *message, const std::vector<long> &data) const {
  ::Display *display = mConnection.get();
  XEvent event{};
  event.xclient.type = ClientMessage;
  event.xclient.window = window;
  event.xclient.message_type = XInternAtom(display, message, False);
  event.xclient.format = 32;
  std::ranges::copy(data, event.xclient.data.l);
  XSendEvent(display, DefaultRootWindow(display), False,
             SubstructureNotifyMask | SubstructureRedirectMask, &event);
  XSync(display, False);
}

SizeLog::SizeLog(const Desktop &desktop, WindowId window)
    : mConnection(desktop.connection()), mWindow(window) {
  XSelectInput(mConnection.get(), mWindow, StructureNotifyMask);
  XSync(mConnection.get(), False);
}

SizeLog::~SizeLog() {
  XSelectInput(mConnection.get(), mWindow, NoEventMask);
}

std::vector<QSize> SizeLog::take() {
  XSync(mConnection.get(), False);
  std::vector<QSize> sizes;
  XEvent event{};
  while (XCheckTypedWindowEvent(mConnection.get(), mWindow, ConfigureNotify, &event) != 0) {
    const QSize size(event.xconfigure.width, event.xconfigure.height);
    if (sizes.empty() || sizes.back() != size)
      sizes.push_back(size);
  }
  return sizes;
}

}  // namespace orvane::test
