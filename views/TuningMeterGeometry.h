// Where the needle of the tuning meter stands. The needle slides sideways over the meter's face,
// whose centre line lies at 202.5 of the face picture's units, four units to a cent; the view
// stretches the face, and the needle with it. Origin at the bottom left, y upwards. Plain
// arithmetic, any thread.
#pragma once

#include <cmath>

#include <QRectF>
#include <QSizeF>

namespace orvane {

// cent: the deviation in cents. Not a number is out of tune.
inline bool isInTune(float cent) {
  return std::abs(cent) < 3.0F;
}

// The needle's rectangle in a view of size bounds; face and needle are the pictures' natural sizes.
// Deviations beyond about 50 cents give a place beyond the face.
inline QRectF needleRect(float cent, const QSizeF &bounds, const QSizeF &face,
                         const QSizeF &needle) {
  float x = 4.0F * cent + 202.0F;
  x = static_cast<float>(static_cast<double>(x) - 0.5 * needle.width() + 0.5);
  const float y = 3.0F;
  const float sx = static_cast<float>(bounds.width() / face.width());
  const float sy = static_cast<float>(bounds.height() / face.height());
  return {static_cast<double>(x * sx), static_cast<double>(y * sy),
          needle.width() * static_cast<double>(sx), needle.height() * static_cast<double>(sy)};
}

}  // namespace orvane
