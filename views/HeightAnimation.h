// The way of a window's height from one value to another, eased. Whatever the desktop makes of the
// heights on the way, and however late it tells of them, the window has the last one in the end;
// but it is not taken out of a hand that moves it, nor brought back while it is minimised: then the
// rest comes at once, afterwards. Main thread.
#pragma once

#include <QList>
#include <QSize>
#include <QTimer>
#include <QVariantAnimation>

class QWidget;

namespace orvane {

class HeightAnimation : public QObject {
  Q_OBJECT

 public:
  // window outlives it.
  explicit HeightAnimation(QWidget &window);

  // In pixels and milliseconds.
  void start(int height, int duration);
  // The window keeps the height it has.
  void stop();
  // No more heights on the way: the last one as soon as the window is free. To be called whenever
  // the window is shown or hidden.
  void cutShort();

  bool isOn() const { return mIsOn; }
  // The height that it ends with.
  int target() const { return mTarget; }
  // Whether it has asked for that size, or begun with it: the desktop's answer may come late.
  bool hasAskedFor(const QSize &size) const { return mAsked.contains(size); }

 signals:
  // The window has the last height, or never will.
  void ended();

 private:
  void look();
  void end();
  bool isAway() const;
  void ask(int height);

  QWidget &mWindow;
  QVariantAnimation mAnimation;
  QTimer mTimer;  // while it is on and the window is not away
  bool mIsOn = false;
  QList<QSize> mAsked;
  int mWidth = 0;
  int mTarget = 0;
  int mLooksThere = 0;  // on end, with the last height
  int mLooksOff = 0;    // on end, with another one
  int mTries = 0;       // with the last height
};

}  // namespace orvane
