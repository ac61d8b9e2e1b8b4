// One control in a window of 200 by 100 units, which the tests zoom by the window's width and
// operate with the mouse and the keyboard of the window, so that the toolkit decides what is hit.
//
// Places are in the window's units before zooming, origin at the top left.
#pragma once

#include <array>
#include <functional>

#include <QApplication>
#include <QDeadlineTimer>
#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QWindow>

#include <gtest/gtest.h>

#include "views/ContentView.h"

namespace orvane::test {

inline constexpr std::array kZooms{0.75, 1.0, 1.5, 2.0, 3.0};

// Handles events until it holds, for no longer than some seconds.
inline bool waitFor(const std::function<bool()> &holds) {
  const QDeadlineTimer deadline(5000);
  while (!holds() && !deadline.hasExpired())
    QApplication::processEvents(QEventLoop::AllEvents, 10);
  return holds();
}

template <class Control>
class ZoomRig {
 public:
  explicit ZoomRig(const QRect &place) {
    mView.resize(200, 100);
    mControl = new Control(&mView);
    mControl->setGeometry(place);
    mView.show();
    mView.activateWindow();
    QApplication::processEvents();
  }

  Control &operator*() { return *mControl; }
  Control *operator->() { return mControl; }
  QWidget &view() { return mView; }

  void zoomTo(double zoom) {
    mZoom = zoom;
    mView.resize(qRound(200.0 * zoom), qRound(100.0 * zoom));
    QApplication::processEvents();
  }

  void press(const QPointF &place) { mouse(QEvent::MouseButtonPress, place, Qt::LeftButton); }
  void drag(const QPointF &place) { mouse(QEvent::MouseMove, place, Qt::LeftButton); }
  void release(const QPointF &place) { mouse(QEvent::MouseButtonRelease, place, Qt::NoButton); }
  void click(const QPointF &place) {
    press(place);
    release(place);
  }
  void hover(const QPointF &place) { mouse(QEvent::MouseMove, place, Qt::NoButton); }
  // At a place of the screen, as for a list that has opened over the window.
  void hoverOnScreen(const QPointF &place) { send(QEvent::MouseMove, place, Qt::NoButton); }
  void clickOnScreen(const QPointF &place) {
    send(QEvent::MouseMove, place, Qt::NoButton);
    send(QEvent::MouseButtonPress, place, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, place, Qt::NoButton);
  }

  void key(int code, const QString &text = {}, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QKeyEvent down(QEvent::KeyPress, code, modifiers, text);
    QApplication::sendEvent(mView.windowHandle(), &down);
    QKeyEvent up(QEvent::KeyRelease, code, modifiers, text);
    QApplication::sendEvent(mView.windowHandle(), &up);
    QApplication::processEvents();
  }

  // One notch away from the user.
  void wheel(const QPointF &place) {
    const QPointF zoomed = place * mZoom;
    QWheelEvent event(zoomed, mView.mapToGlobal(zoomed), QPoint(), QPoint(0, 120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(mView.windowHandle(), &event);
    QApplication::processEvents();
  }

 private:
  void mouse(QEvent::Type type, const QPointF &place, Qt::MouseButtons buttons) {
    send(type, mView.mapToGlobal(place * mZoom), buttons);
  }

  void send(QEvent::Type type, const QPointF &screen, Qt::MouseButtons buttons) {
    const QPointF place = mView.mapFromGlobal(screen);
    QMouseEvent event(type, place, place, screen,
                      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons,
                      Qt::NoModifier);
    QApplication::sendEvent(mView.windowHandle(), &event);
    QApplication::processEvents();
  }

  ContentView mView;
  Control *mControl = nullptr;
  double mZoom = 1.0;
};

// Counts what a control draws, and where, in the widget's coordinates.
class Repaints : public QObject {
 public:
  explicit Repaints(QWidget &widget) : mWidget(widget) {
    QApplication::processEvents();
    mWidget.installEventFilter(this);
  }

  int count() {
    QApplication::processEvents();
    return mCount;
  }
  QRegion region() const { return mRegion; }
  void forget() {
    QApplication::processEvents();
    mCount = 0;
    mRegion = {};
  }

  bool eventFilter(QObject * /*object*/, QEvent *event) override {
    if (event->type() == QEvent::Paint) {
      ++mCount;
      mRegion += static_cast<const QPaintEvent *>(event)->region();
    }
    return false;
  }

 private:
  QWidget &mWidget;
  int mCount = 0;
  QRegion mRegion;
};

}  // namespace orvane::test
