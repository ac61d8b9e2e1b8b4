// The way of a window's height from one value to another, eased: pixels, in milliseconds.
//
// The desktop answers a size some time after it was asked for. So no further height comes before
// the window has the last one; where the desktop is slow there are fewer. An answer that is out of
// date by then must not take the window back, and is kept from it: when another height has been
// asked for meanwhile, and when the desktop has given the window a size of its own, which then is
// asked for again. Main thread.
#pragma once

#include <QElapsedTimer>
#include <QList>
#include <QPointer>
#include <QVariantAnimation>
#include <QWindow>

namespace orvane {

class HeightAnimation : public QObject {
  Q_OBJECT

 public:
  HeightAnimation();

  void start(QWindow &window, int from, int to, int duration);
  // No height comes until it is started or stopped.
  void pause() { mAnimation.pause(); }
  // Nothing more is told of it.
  void stop() { mAnimation.stop(); }
  // Nor is any answer kept from the window.
  void forget();
  // The desktop is being asked for the height.
  void ask(int height);

  // Whether the desktop gives the window a size back that it has had on the way, as some do while a
  // hand moves the window.
  bool isGoingBack(const QSize &size) const { return mAnswered.contains(size); }

  // Paused, too.
  bool isOn() const { return mAnimation.state() != QAbstractAnimation::Stopped; }
  // The height that it ends with.
  int target() const { return mAnimation.endValue().toInt(); }

 signals:
  // The window is to ask for this height on the way.
  void goesOn(int height);
  // It is time for the last one.
  void ended();

 protected:
  bool eventFilter(QObject *watched, QEvent *event) override;

 private:
  void take(int height);
  bool isAwaiting() const;
  bool isOutOfDate(const QSize &size);

  QVariantAnimation mAnimation;
  QPointer<QWindow> mWindow;
  QList<int> mAsked;  // in order, those not answered
  QElapsedTimer mSinceAsked;
  QList<QSize> mAnswered;  // on the way
  QSize mDesktopSize;      // what the desktop has chosen meanwhile; empty for nothing
};

}  // namespace orvane
