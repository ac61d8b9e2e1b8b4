#include "views/HeightAnimation.h"

#include <QResizeEvent>

namespace orvane {
namespace {

// What is not answered by then will not be.
constexpr qint64 kLongestAnswer = 1000;

}  // namespace

HeightAnimation::HeightAnimation() {
  mAnimation.setEasingCurve(QEasingCurve::InOutQuad);
  connect(&mAnimation, &QVariantAnimation::valueChanged, this,
          [this](const QVariant &height) { take(height.toInt()); });
  connect(&mAnimation, &QVariantAnimation::finished, this, &HeightAnimation::ended);
}

void HeightAnimation::start(QWindow &window, int from, int to, int duration) {
  stop();
  if (mWindow != &window) {
    window.installEventFilter(this);
    mWindow = &window;
  }
  mAnswered = {window.size()};
  mAnimation.setDuration(duration);
  mAnimation.setStartValue(from);
  mAnimation.setEndValue(to);
  mAnimation.start();
}

void HeightAnimation::forget() {
  stop();
  mAsked.clear();
}

void HeightAnimation::ask(int height) {
  if (!mWindow || height == mWindow->height())
    return;
  if (!isAwaiting() || !mWindow->isVisible())
    mAsked.clear();
  // Nobody answers a hidden window.
  if (!mWindow->isVisible())
    return;
  mAsked.append(height);
  mSinceAsked.start();
  mDesktopSize = {};
}

void HeightAnimation::take(int height) {
  if (mAnimation.state() == QAbstractAnimation::Running && !isAwaiting() && height != target())
    emit goesOn(height);
}

bool HeightAnimation::isAwaiting() const {
  return !mAsked.isEmpty() && mSinceAsked.elapsed() < kLongestAnswer;
}

bool HeightAnimation::isOutOfDate(const QSize &size) {
  if (!isAwaiting())
    return false;
  const qsizetype answered = mAsked.indexOf(size.height());
  if (answered < 0 && isGoingBack(size)) {
    mAsked.clear();
    return false;
  }
  if (answered < 0) {
    // Not left to the window: it goes by the latest answer that has come, and that may be ours.
    stop();
    mDesktopSize = size;
    return false;
  }
  mAsked.remove(0, answered + 1);
  mAnswered.append(size);
  if (!mDesktopSize.isEmpty()) {
    mWindow->resize(mDesktopSize);
    return true;
  }
  return !mAsked.isEmpty();
}

bool HeightAnimation::eventFilter(QObject *watched, QEvent *event) {
  return (event->type() == QEvent::Resize &&
          isOutOfDate(static_cast<QResizeEvent *>(event)->size())) ||
         QObject::eventFilter(watched, event);
}

}  // namespace orvane
