// A control of the toolkit that zooms with its enclosing view: it draws and is operated in its
// original coordinates, which the toolkit's own code goes on using, and these are zoomed on the way
// to the screen and back from the mouse.
//
// A class made of it whose toolkit control draws through a style option gives that option to
// useBounds() in its initStyleOption(). Main thread.
#pragma once

#include <memory>

#include <QPainter>
#include <QStyleOption>

#include "views/AutoResize.h"
#include "views/MovedEvent.h"

namespace orvane {

template <class Base>
class Zoomed : public Base, public AutoResize {
 public:
  explicit Zoomed(QWidget *parent = nullptr)
      : Base(parent), AutoResize(*static_cast<Base *>(this)) {}

 protected:
  // Every painter that is opened on the control, also by the toolkit's own code, begins here.
  void initPainter(QPainter *painter) const override {
    Base::initPainter(painter);
    painter->setTransform(zoom(), true);
    painter->setRenderHint(QPainter::SmoothPixmapTransform, scale() != 1.0F);
  }

  // Events with a place reach the toolkit's code at that place in original coordinates.
  bool event(QEvent *event) override {
    // A wheel turned over a control on the way elsewhere must not change a setting.
    if (event->type() == QEvent::Wheel && !Base::hasFocus()) {
      event->ignore();
      return true;
    }
    // A key must not act on what the window is too small to show.
    if (event->type() == QEvent::Shortcut && Base::visibleRegion().isEmpty())
      return true;
    const auto place = [this](const QPointF &point) { return placeInBounds(point); };
    const std::unique_ptr<QEvent> moved = movedEvent(*event, place);
    if (!moved)
      return Base::event(event);
    // The toolkit's code updates only the part that it changes, and that in original coordinates.
    if (changesLook(event->type()))
      Base::update();
    const bool isHandled = Base::event(moved.get());
    takeAnswer(*event, *moved);
    return isHandled;
  }

  // From the widget's coordinates to those the toolkit's code looks for its parts in.
  virtual QPointF placeInBounds(const QPointF &point) const { return zoom().inverted().map(point); }

  // What the style draws in and looks for the mouse in. The focus shows however it was given.
  void useBounds(QStyleOption &option) const {
    option.rect = bounds().toRect();
    if (option.state & QStyle::State_HasFocus)
      option.state |= QStyle::State_KeyboardFocusChange;
  }
};

}  // namespace orvane
