// What a disclosure control shows and how it follows the mouse: a triangle that points down in
// state 1 and to the right in state 0, and a third picture while it is pressed. The control owns
// it. Coordinates have the origin at the top left. Main thread.
#pragma once

#include <QRectF>

class QMouseEvent;
class QPainter;

namespace orvane {

class DisclosureButton;

class DisclosureButtonCell {
 public:
  int state() const { return mState; }
  // 0, or 1 for any other value. Redraws the control.
  void setState(int state, DisclosureButton &controlView);
  void toggle(DisclosureButton &controlView);

  // The pictures are loaded by the first drawing in the process; one that is missing is left out.
  void drawWithFrame(QPainter &painter, const QRectF &cellFrame,
                     const DisclosureButton &inView) const;

  // Takes the next event of a press of the left button. The release ends it: inside inRect it
  // toggles the state and then sends the action, outside it does nothing. A press is followed to
  // its release whatever untilMouseUp says. Always true: the event is dealt with.
  bool trackMouse(const QMouseEvent &event, const QRectF &inRect, DisclosureButton &ofView,
                  bool untilMouseUp);
  // Ends a press whose release will not come.
  void cancelTracking(DisclosureButton &controlView);

  void sendAction(DisclosureButton &control) const;

 private:
  void setMiddleState(bool state, DisclosureButton &controlView);

  int mState = 0;
  bool middleState = false;  // the button is down and the pointer is inside
};

}  // namespace orvane
