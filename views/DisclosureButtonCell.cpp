#include "views/DisclosureButtonCell.h"

#include <array>
#include <cstddef>
#include <memory>
#include <utility>

#include <QAccessible>
#include <QMouseEvent>
#include <QPainter>

#include "views/DisclosureButton.h"
#include "views/Picture.h"

namespace orvane {
namespace {

enum PictureIndex : std::size_t { Down, Right, Middle };

// With the lower and the right edge outside.
bool isInside(const QPointF &point, const QRectF &rect) {
  return point.x() >= rect.left() && point.x() < rect.right() && point.y() >= rect.top() &&
         point.y() < rect.bottom();
}

}  // namespace

void DisclosureButtonCell::setState(int state, DisclosureButton &controlView) {
  const int former = std::exchange(mState, state == 0 ? 0 : 1);
  controlView.update();
  if (mState == former)
    return;
  QAccessible::State changed;
  changed.checked = true;
  QAccessibleStateChangeEvent event(&controlView, changed);
  QAccessible::updateAccessibility(&event);
}

void DisclosureButtonCell::toggle(DisclosureButton &controlView) {
  setState(mState == 0 ? 1 : 0, controlView);
}

void DisclosureButtonCell::drawWithFrame(QPainter &painter, const QRectF &cellFrame,
                                         const DisclosureButton &inView) const {
  static const std::array<std::shared_ptr<const Picture>, 3> pictures = {
      Picture::imageNamed(QStringLiteral("down")), Picture::imageNamed(QStringLiteral("right")),
      Picture::imageNamed(QStringLiteral("middle"))};
  const auto &picture = pictures[middleState ? Middle : mState != 0 ? Down : Right];
  if (picture)
    picture->drawInRect(painter, cellFrame);
  if (!inView.showsFirstResponder())
    return;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(inView.palette().color(QPalette::Highlight), 2.0));
  painter.setBrush(Qt::NoBrush);
  const double radius = cellFrame.width() * 0.5 - 4.0;
  painter.drawEllipse(QPointF(cellFrame.width() * 0.5, cellFrame.height() * 0.5), radius, radius);
  painter.restore();
}

bool DisclosureButtonCell::trackMouse(const QMouseEvent &event, const QRectF &inRect,
                                      DisclosureButton &ofView, bool /*untilMouseUp*/) {
  const bool isOver = isInside(event.position(), inRect);
  const bool isUp = event.type() == QEvent::MouseButtonRelease;
  setMiddleState(isOver && !isUp, ofView);
  if (isUp && isOver) {
    toggle(ofView);
    sendAction(ofView);
  }
  return true;
}

void DisclosureButtonCell::cancelTracking(DisclosureButton &controlView) {
  setMiddleState(false, controlView);
}

void DisclosureButtonCell::setMiddleState(bool state, DisclosureButton &controlView) {
  middleState = state;
  controlView.update();
}

void DisclosureButtonCell::sendAction(DisclosureButton &control) const {
  emit control.action();
}

}  // namespace orvane
