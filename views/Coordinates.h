// The one place where the tuner's coordinates, with their origin at the bottom left and y upwards,
// meet the toolkit's, with theirs at the top left and y downwards. Plain functions, any thread.
#pragma once

#include <QRectF>

namespace orvane {

// rect in the other coordinates of the same enclosing area, in either direction. enclosingHeight:
// of that area, in the units of rect.
inline QRectF flipped(const QRectF &rect, double enclosingHeight) {
  return {rect.x(), enclosingHeight - rect.y() - rect.height(), rect.width(), rect.height()};
}

}  // namespace orvane
