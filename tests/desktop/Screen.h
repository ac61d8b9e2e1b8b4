// What is to be seen on a desktop. Coordinates are pixels from the top left of the screen.
// Main thread only.
#pragma once

#include <QColor>
#include <QImage>
#include <QRect>
#include <string>

#include "tests/desktop/Desktop.h"

namespace orvane::test {

class Screen {
 public:
  explicit Screen(const Desktop &desktop) : mConnection(desktop.connection()) {}

  QRect bounds() const;
  // What of the rectangle is on the screen; a null image when nothing is.
  QImage image(const QRect &rect) const;
  QColor pixel(const QPoint &place) const;
  // Each component averaged over the rectangle.
  QColor meanColor(const QRect &rect) const;
  // Keeps the screen, or a part of it, as NAME.png among the screenshots of the build, or in
  // the folder that the environment names as ORVANE_SCREENSHOTS.
  bool save(const std::string &name, const QRect &rect = {}) const;

 private:
  XConnection &mConnection;
};

}  // namespace orvane::test
