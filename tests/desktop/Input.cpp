#include "tests/desktop/Input.h"

#include <chrono>
#include <stdexcept>
#include <thread>
#include <vector>
// After the others, whose names its macros would replace.
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>

namespace orvane::test {

namespace {

// Between the events of one gesture; toolkits take what comes faster for one thing.
constexpr std::chrono::milliseconds kStep{15};
constexpr int kDragSteps = 12;

void pause(::Display *display) {
  XSync(display, False);
  std::this_thread::sleep_for(kStep);
}

KeySym keySymbol(const std::string &name) {
  if (name == "Ctrl" || name == "Shift" || name == "Alt")
    return XStringToKeysym(((name == "Ctrl" ? "Control" : name) + "_L").c_str());
  const KeySym symbol = XStringToKeysym(name.c_str());
  if (symbol == NoSymbol)
    throw std::invalid_argument("no key named " + name);
  return symbol;
}

void turnKey(::Display *display, KeySym symbol, bool isDown) {
  XTestFakeKeyEvent(display, XKeysymToKeycode(display, symbol), isDown ? True : False, 0);
  pause(display);
}

}  // namespace

void Input::moveTo(const QPoint &place) const {
  XTestFakeMotionEvent(mConnection.get(), -1, place.x(), place.y(), 0);
  pause(mConnection.get());
}

void Input::press(Button button) const {
  XTestFakeButtonEvent(mConnection.get(), button, True, 0);
  pause(mConnection.get());
}

void Input::release(Button button) const {
  XTestFakeButtonEvent(mConnection.get(), button, False, 0);
  pause(mConnection.get());
}

void Input::click(const QPoint &place, Button button) const {
  moveTo(place);
  press(button);
  release(button);
}

void Input::drag(const QPoint &from, const QPoint &to) const {
  moveTo(from);
  press();
  for (int step = 1; step <= kDragSteps; ++step)
    moveTo(from + (to - from) * step / kDragSteps);
  release();
}

void Input::key(std::string_view keys) const {
  hold(keys);
  letGo(keys);
}

void Input::turn(std::string_view keys, bool isDown) const {
  std::vector<KeySym> symbols;
  for (std::size_t start = 0; start <= keys.size();) {
    const std::size_t end = std::min(keys.find('+', start), keys.size());
    symbols.push_back(keySymbol(std::string(keys.substr(start, end - start))));
    start = end + 1;
  }
  // Released in the opposite order.
  for (std::size_t k = 0; k < symbols.size(); ++k)
    turnKey(mConnection.get(), symbols[isDown ? k : symbols.size() - 1 - k], isDown);
}

void Input::type(std::string_view text) const {
  ::Display *display = mConnection.get();
  for (const char c : text) {
    // The symbols of these characters are their codes.
    const auto symbol = static_cast<KeySym>(static_cast<unsigned char>(c));
    const KeyCode key = XKeysymToKeycode(display, symbol);
    const bool isShifted = XkbKeycodeToKeysym(display, key, 0, 0) != symbol;
    if (isShifted)
      turnKey(display, XStringToKeysym("Shift_L"), true);
    turnKey(display, symbol, true);
    turnKey(display, symbol, false);
    if (isShifted)
      turnKey(display, XStringToKeysym("Shift_L"), false);
  }
}

}  // namespace orvane::test
