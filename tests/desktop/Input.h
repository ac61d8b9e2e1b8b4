// A person's hands: the pointer and the keys of a desktop. Coordinates are pixels from the top left
// of the screen. Each operation returns when the server has taken it, not when a program has
// answered it. Main thread only.
#pragma once

#include <QPoint>
#include <string>
#include <string_view>

#include "tests/desktop/Desktop.h"

namespace orvane::test {

class Input {
 public:
  enum Button : unsigned { kLeft = 1, kMiddle = 2, kRight = 3, kWheelUp = 4, kWheelDown = 5 };

  explicit Input(const Desktop &desktop) : mConnection(desktop.connection()) {}

  void moveTo(const QPoint &place) const;
  void press(Button button = kLeft) const;
  void release(Button button = kLeft) const;
  void click(const QPoint &place, Button button = kLeft) const;
  // Presses at the first place, goes to the second step by step as a hand would, and releases
  // there.
  void drag(const QPoint &from, const QPoint &to) const;
  // A key, or several held together: "Return", "Ctrl+Q", "Shift+Tab". A key is named as the server
  // names it (XStringToKeysym). Throws std::invalid_argument for a name it does not know.
  void key(std::string_view keys) const;
  // Presses and does not release them, and the other way round: "Shift", "Alt".
  void hold(std::string_view keys) const { turn(keys, true); }
  void letGo(std::string_view keys) const { turn(keys, false); }
  // Printable ASCII.
  void type(std::string_view text) const;

 private:
  void turn(std::string_view keys, bool isDown) const;

  XConnection &mConnection;
};

}  // namespace orvane::test
