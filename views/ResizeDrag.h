// A user's drag at the edge of a window: from the first size that comes with a mouse button down
// until the button is up and the window rests. The window manager does the dragging and tells
// nothing of it, so the pointer is watched meanwhile, and at no other time.
//
// Only where the pointer of the whole screen can be asked; elsewhere nothing ever is a drag. Main
// thread.
#pragma once

#include <QObject>
#include <QRectF>
#include <QTimer>

namespace orvane {

class ResizeDrag : public QObject {
  Q_OBJECT

 public:
  ResizeDrag();

  // The window manager has given the window another size than it had in the frame before.
  void sizeChanged(const QRectF &before);
  // Nothing more is told of it.
  void cancel() { mTimer.stop(); }

  bool isOn() const { return mTimer.isActive(); }
  // The frame before the drag that is on or has just ended.
  QRectF frameBefore() const { return mFrameBefore; }
  // The keys held when the button was last seen down: a key may be let go together with it.
  Qt::KeyboardModifiers modifiers() const { return mModifiers; }

 signals:
  // The button is still down. Every 30 ms.
  void goesOn();
  // The button is up.
  void released();
  // The window has its last size, too.
  void ended();

 private:
  void look();

  QTimer mTimer;
  QRectF mFrameBefore;
  Qt::KeyboardModifiers mModifiers;
  int mQuietLooks = 0;  // with the button up, since the last change of size
};

}  // namespace orvane
