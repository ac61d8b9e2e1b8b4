#include "views/ResizeDrag.h"

#include <chrono>

#include "views/PointerState.h"

namespace orvane {
namespace {

constexpr std::chrono::milliseconds kBetweenLooks{30};
// Long enough for the window manager's last word on the size, too short to be seen as a pause.
constexpr int kSettled = 2;

}  // namespace

ResizeDrag::ResizeDrag() {
  mTimer.setInterval(kBetweenLooks);
  connect(&mTimer, &QTimer::timeout, this, &ResizeDrag::look);
}

void ResizeDrag::sizeChanged(const QRectF &before) {
  mQuietLooks = 0;
  const PointerState pointer = pointerState();
  if (pointer.isButtonDown)
    mModifiers = pointer.modifiers;
  if (isOn() || !pointer.isButtonDown)
    return;
  mFrameBefore = before;
  mTimer.start();
}

void ResizeDrag::look() {
  const PointerState pointer = pointerState();
  if (pointer.isButtonDown) {
    mModifiers = pointer.modifiers;
    mQuietLooks = 0;
    emit goesOn();
    return;
  }
  if (mQuietLooks++ == 0)
    emit released();
  if (mQuietLooks > kSettled) {
    mTimer.stop();
    emit ended();
  }
}

}  // namespace orvane
