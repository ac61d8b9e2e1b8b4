#include "views/HeightAnimation.h"

#include <chrono>

#include <QWidget>
#include <QWindow>

#include "views/PointerState.h"

namespace orvane {
namespace {

constexpr std::chrono::milliseconds kBetweenLooks{30};
// Long enough for the desktop's answer to a height.
constexpr int kSettled = 3;
// A desktop that does not give the height by then does not want to.
constexpr int kMostTries = 5;

}  // namespace

HeightAnimation::HeightAnimation(QWidget &window) : mWindow(window) {
  mAnimation.setEasingCurve(QEasingCurve::InOutQuad);
  connect(&mAnimation, &QVariantAnimation::valueChanged, this, [this](const QVariant &height) {
    if (mAnimation.state() == QAbstractAnimation::Running)
      ask(height.toInt());
  });
  mTimer.setInterval(kBetweenLooks);
  connect(&mTimer, &QTimer::timeout, this, &HeightAnimation::look);
}

void HeightAnimation::start(int height, int duration) {
  if (!isOn())
    mAsked.clear();
  mAsked.append(mWindow.size());
  mWidth = mWindow.width();
  mAnimation.stop();
  mTarget = height;
  mLooksThere = 0;
  mLooksOff = 0;
  mTries = 0;
  mIsOn = true;
  mTimer.start();
  mAnimation.setDuration(duration);
  mAnimation.setStartValue(mWindow.height());
  mAnimation.setEndValue(height);
  mAnimation.start();
}

void HeightAnimation::stop() {
  mAnimation.stop();
  mTimer.stop();
  mIsOn = false;
}

void HeightAnimation::cutShort() {
  mAnimation.stop();
  if (mIsOn)
    mTimer.start();
}

bool HeightAnimation::isAway() const {
  return mWindow.isMinimized() || !mWindow.isVisible();
}

// An answer to an earlier height may come after the last one was asked for, and be taken for the
// window's own; the last one's comes then, or has to be asked for again.
void HeightAnimation::look() {
  if (isAway())
    mTimer.stop();
  const bool isHeld = !mWindow.windowHandle()->isExposed() || pointerState().isButtonDown;
  if (mAnimation.state() == QAbstractAnimation::Running || isAway() || isHeld)
    return;
  if (mWindow.height() == mTarget) {
    mLooksOff = 0;
    if (++mLooksThere == kSettled)
      end();
    return;
  }
  mLooksThere = 0;
  if (++mLooksOff < kSettled)
    return;
  mLooksOff = 0;
  if (mTries++ == kMostTries)
    end();
  else
    ask(mTarget);
}

void HeightAnimation::ask(int height) {
  mAsked.append({mWidth, height});
  mWindow.resize(mWidth, height);
}

void HeightAnimation::end() {
  stop();
  emit ended();
}

}  // namespace orvane
