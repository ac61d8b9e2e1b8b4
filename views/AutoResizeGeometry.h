// Where a proportional control goes when the view that encloses it has another size: it zooms with
// the view's width and keeps its place at the view's top. Rectangles have the origin at the bottom
// left. Plain arithmetic, any thread.
#pragma once

#include <QRectF>
#include <QSizeF>

namespace orvane {

// The zoom of a view, by its width alone, rounded to single precision. 0 when the original has no
// width to compare with.
inline float relayoutScale(const QSizeF &originalSuperviewSize, const QSizeF &superviewSize) {
  return originalSuperviewSize.width() > 0.0
             ? static_cast<float>(superviewSize.width() / originalSuperviewSize.width())
             : 0.0F;
}

inline QRectF relayoutFrame(const QRectF &originalFrame, const QSizeF &originalSuperviewSize,
                            const QSizeF &superviewSize) {
  const double scale = static_cast<double>(relayoutScale(originalSuperviewSize, superviewSize));
  const double y =
      superviewSize.height() - (originalSuperviewSize.height() - originalFrame.y()) * scale;
  return {originalFrame.x() * scale, y, originalFrame.width() * scale,
          originalFrame.height() * scale};
}

}  // namespace orvane
