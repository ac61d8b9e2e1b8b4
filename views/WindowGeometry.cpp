#include "views/WindowGeometry.h"

#include <cmath>

namespace orvane {
namespace {

float ratio(double numerator, double denominator) {
  return static_cast<float>(numerator / denominator);
}

}  // namespace

QRectF disclosedContentRect(const QRectF &content, double originalWidth, double layoutHeight) {
  const float scale = ratio(content.width(), originalWidth);
  const double height = static_cast<double>(std::floor(static_cast<float>(layoutHeight) * scale));
  return {content.x(), content.y() + content.height() - height, content.width(), height};
}

QRectF frameFittedToScreen(const QRectF &frame, double visibleHeight) {
  if (!(frame.height() > visibleHeight))
    return frame;
  const double scale = static_cast<double>(ratio(visibleHeight, frame.height()));
  return {frame.x(), frame.y() + frame.height() - visibleHeight, std::floor(frame.width() * scale),
          visibleHeight};
}

QRectF collapsedStartContentRect(const QRectF &content, const QSizeF &original) {
  const double scale = static_cast<double>(ratio(content.width(), original.width()));
  return integralRect({content.topLeft(), original * scale});
}

QRectF integralRect(const QRectF &rect) {
  if (rect.isEmpty())
    return {};
  return {QPointF(std::floor(rect.left()), std::floor(rect.top())),
          QPointF(std::ceil(rect.right()), std::ceil(rect.bottom()))};
}

QSizeF resizedFrameSize(const QSizeF &proposed, const QSizeF &minimum,
                        Qt::KeyboardModifiers modifiers) {
  const float vertical = ratio(proposed.height(), minimum.height());
  if (modifiers.testFlag(Qt::AltModifier))
    return minimum * static_cast<double>(std::nearbyint(vertical));
  if (modifiers.testFlag(Qt::ShiftModifier))
    return proposed;
  const float horizontal = ratio(proposed.width(), minimum.width());
  return minimum * static_cast<double>(horizontal < vertical ? horizontal : vertical);
}

QSizeF proportionalProposal(const QSizeF &before, const QSizeF &after, const QSizeF &minimum) {
  if (after.height() == before.height())
    return {after.width(), after.width() * minimum.height() / minimum.width()};
  if (after.width() == before.width())
    return {after.height() * minimum.width() / minimum.height(), after.height()};
  return after;
}

QSizeF usableFrameSize(const QSizeF &size, const QSizeF &minimum) {
  constexpr double kSmallest = 0.25;
  return size.isEmpty() ? minimum : size.expandedTo(minimum * kSmallest);
}

QRectF resizedFrame(const QRectF &before, const QRectF &after, const QSizeF &size) {
  const bool isLeftDragged = after.left() != before.left() && after.right() == before.right();
  // With y upwards, what the toolkit calls the bottom is the higher edge.
  const bool isUpperDragged = after.bottom() != before.bottom() && after.top() == before.top();
  return {{isLeftDragged ? after.right() - size.width() : after.left(),
           isUpperDragged ? after.top() : after.bottom() - size.height()},
          size};
}

bool isSideDragged(const QRectF &before, const QSizeF &after, const QPointF &pointer) {
  constexpr double kCorner = 32.0;
  return after.width() != before.width() && after.height() == before.height() &&
         pointer.y() > before.top() + kCorner && pointer.y() < before.bottom() - kCorner;
}

QSizeF largestLayoutSize(const QSizeF &area, const QSizeF &layout) {
  if (area.width() * layout.height() <= area.height() * layout.width())
    return {area.width(), std::floor(area.width() * layout.height() / layout.width())};
  return {std::floor(area.height() * layout.width() / layout.height()), area.height()};
}

}  // namespace orvane
