// A control in a view that can be zoomed, operated at the places where its drawing shows something.
// Main thread.
#pragma once

#include <utility>
#include <vector>

#include <QApplication>
#include <QImage>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QWidget>

#include "views/ContentView.h"

namespace orvane::test {

// Every factor is exact in binary, so places at it are, too.
inline const std::vector<double> kZooms = {0.75, 1.0, 1.5, 2.0, 3.0};

template <class Control>
class ZoomRig : public QObject {
 public:
  // The control lies at (20, 8) from the top left of a view of 240 by 80.
  explicit ZoomRig(const QSize &size) {
    view.setGeometry(200, 200, 240, 80);
    control = new Control(&view);
    control->setGeometry(QRect(QPoint(20, 8), size));
    control->installEventFilter(this);
    if constexpr (requires { &Control::action; })
      connect(control, &Control::action, this, [this] { ++actions; });
    view.show();
    view.activateWindow();
    settle();
    control->clearFocus();
  }

  void zoom(double factor) {
    mFactor = factor;
    view.resize(QSizeF(240.0 * factor, 80.0 * factor).toSize());
    settle();
  }

  // Sends a mouse event at a place of the control's drawing before zooming, top left origin.
  void mouse(QEvent::Type type, double x, double y, Qt::MouseButton button = Qt::LeftButton) {
    const QPointF place(x * mFactor, y * mFactor);
    const bool isMove = type == QEvent::MouseMove;
    const bool isUp = type == QEvent::MouseButtonRelease;
    QMouseEvent event(type, place, control->mapToGlobal(place), isMove ? Qt::NoButton : button,
                      isUp ? Qt::NoButton : button, Qt::NoModifier);
    QApplication::sendEvent(control, &event);
  }
  void click(double x, double y) {
    mouse(QEvent::MouseButtonPress, x, y);
    mouse(QEvent::MouseButtonRelease, x, y);
  }
  void key(int code, const QString &text = QString()) {
    QKeyEvent press(QEvent::KeyPress, code, Qt::NoModifier, text);
    QApplication::sendEvent(control, &press);
    QKeyEvent release(QEvent::KeyRelease, code, Qt::NoModifier, text);
    QApplication::sendEvent(control, &release);
  }
  void wheel(int eighthsOfDegree) {
    QWheelEvent event(QPointF(5, 5), control->mapToGlobal(QPointF(5, 5)), QPoint(),
                      QPoint(0, eighthsOfDegree), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
                      false);
    QApplication::sendEvent(control, &event);
  }

  QImage drawn() const { return control->grab().toImage().convertToFormat(QImage::Format_RGB32); }

  void settle() {
    QApplication::processEvents();
    painted = QRegion();
    paints = 0;
  }

  ContentView view;
  Control *control;
  int actions = 0;
  int paints = 0;   // since the view last settled
  QRegion painted;  // of them

 protected:
  bool eventFilter(QObject *, QEvent *event) override {
    if (event->type() == QEvent::Paint) {
      ++paints;
      painted += static_cast<QPaintEvent *>(event)->region();
    }
    return false;
  }

 private:
  double mFactor = 1.0;
};

}  // namespace orvane::test
