// Events of the mouse and of drags, as seen by a control whose coordinates are not its widget's.
// Main thread.
#pragma once

#include <functional>
#include <memory>

#include <QEvent>
#include <QPointF>

namespace orvane {

// The same event at place(its place in the widget). Null for an event without a place.
std::unique_ptr<QEvent> movedEvent(const QEvent &event,
                                   const std::function<QPointF(const QPointF &)> &place);

// Passes on to event what the receiver of its moved copy made of it.
void takeAnswer(QEvent &event, const QEvent &moved);

// Whether the toolkit's controls look different after such an event.
bool changesLook(QEvent::Type type);

}  // namespace orvane
