#include "views/MovedEvent.h"

#include <QDropEvent>
#include <QHelpEvent>
#include <QMouseEvent>

namespace orvane {
namespace {

using Place = std::function<QPointF(const QPointF &)>;

std::unique_ptr<QEvent> movedMouse(const QMouseEvent &event, const Place &place) {
  auto moved = std::make_unique<QMouseEvent>(
      event.type(), place(event.position()), event.scenePosition(), event.globalPosition(),
      event.button(), event.buttons(), event.modifiers(), event.source(), event.pointingDevice());
  moved->setTimestamp(event.timestamp());
  return moved;
}

std::unique_ptr<QEvent> movedHover(const QHoverEvent &event, const Place &place) {
  return std::make_unique<QHoverEvent>(event.type(), place(event.position()),
                                       event.globalPosition(), place(event.oldPosF()),
                                       event.modifiers(), event.pointingDevice());
}

std::unique_ptr<QEvent> movedWheel(const QWheelEvent &event, const Place &place) {
  auto moved = std::make_unique<QWheelEvent>(
      place(event.position()), event.globalPosition(), event.pixelDelta(), event.angleDelta(),
      event.buttons(), event.modifiers(), event.phase(), event.inverted(), event.source(),
      event.pointingDevice());
  moved->setTimestamp(event.timestamp());
  return moved;
}

template <class Event>
std::unique_ptr<QEvent> movedDrag(const Event &event, const Place &place) {
  auto moved = std::make_unique<Event>(place(event.position()).toPoint(), event.possibleActions(),
                                       event.mimeData(), event.buttons(), event.modifiers());
  moved->setDropAction(event.dropAction());
  return moved;
}

}  // namespace

std::unique_ptr<QEvent> movedEvent(const QEvent &event, const Place &place) {
  switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
      return movedMouse(static_cast<const QMouseEvent &>(event), place);
    case QEvent::HoverEnter:
    case QEvent::HoverMove:
    case QEvent::HoverLeave:
      return movedHover(static_cast<const QHoverEvent &>(event), place);
    case QEvent::Wheel:
      return movedWheel(static_cast<const QWheelEvent &>(event), place);
    case QEvent::DragEnter:
      return movedDrag(static_cast<const QDragEnterEvent &>(event), place);
    case QEvent::DragMove:
      return movedDrag(static_cast<const QDragMoveEvent &>(event), place);
    case QEvent::Drop:
      return movedDrag(static_cast<const QDropEvent &>(event), place);
    default:
      // Those of context menus and tool tips are only used by their place on the screen.
      return nullptr;
  }
}

void takeAnswer(QEvent &event, const QEvent &moved) {
  event.setAccepted(moved.isAccepted());
  switch (event.type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
      static_cast<QDropEvent &>(event).setDropAction(
          static_cast<const QDropEvent &>(moved).dropAction());
      break;
    default:
      break;
  }
}

bool changesLook(QEvent::Type type) {
  switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::HoverEnter:
    case QEvent::HoverMove:
    case QEvent::HoverLeave:
      return true;
    default:
      return false;
  }
}

}  // namespace orvane
