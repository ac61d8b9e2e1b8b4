#include "views/Window.h"

#include <chrono>

#include <QCloseEvent>
#include <QGuiApplication>
#include <QMenuBar>
#include <QScreen>
#include <QWindow>

#include "views/Coordinates.h"
#include "views/PointerState.h"
#include "views/WindowGeometry.h"

namespace orvane {
namespace {

// Long enough for the window manager's last word on the size, too short to be seen as a pause.
constexpr std::chrono::milliseconds kSettled{60};

QRectF flippedOnScreen(const QRectF &rect) {
  return flipped(rect, QGuiApplication::primaryScreen()->geometry().height());
}

}  // namespace

Window::Window(QWidget *parent) : QMainWindow(parent) {
  mResizeTimer.setSingleShot(true);
  mResizeTimer.setInterval(kSettled);
  connect(&mResizeTimer, &QTimer::timeout, this, &Window::endUserResize);
}

QMargins Window::frameMargins() const {
  return windowHandle() ? windowHandle()->frameMargins() : QMargins();
}

int Window::menuBarHeight(int width) const {
  const QWidget *bar = menuWidget();
  if (!bar || bar->isHidden())
    return 0;
  const int height = bar->heightForWidth(width);
  return height >= 0 ? height : bar->sizeHint().height();
}

QRectF Window::frame() const {
  return flippedOnScreen(QRectF(geometry().marginsAdded(frameMargins())));
}

void Window::setFrame(const QRectF &frame, bool) {
  const QRect geometry = flippedOnScreen(frame).toRect().marginsRemoved(frameMargins());
  // Where a window that was never shown or moved stands is for the desktop to say.
  if (!isVisible() && !testAttribute(Qt::WA_Moved) && frame.topLeft() == this->frame().topLeft())
    resize(geometry.size());
  else
    setGeometry(geometry);
}

// In these two the margins stand upside down, as the rectangles do.
QRectF Window::contentRectForFrameRect(const QRectF &frame) const {
  const QMargins margins = frameMargins();
  const double width = frame.width() - margins.left() - margins.right();
  const int top = margins.top() + menuBarHeight(qRound(width));
  return frame.adjusted(margins.left(), margins.bottom(), -margins.right(), -top);
}

QRectF Window::frameRectForContentRect(const QRectF &content) const {
  const QMargins margins = frameMargins();
  const int top = margins.top() + menuBarHeight(qRound(content.width()));
  return content.adjusted(-margins.left(), -margins.bottom(), margins.right(), top);
}

QSizeF Window::minSize() const {
  return frameRectForContentRect(QRectF(QPointF(), mContentMinSize)).size();
}

QRectF Window::visibleFrame() const {
  return screen() ? flippedOnScreen(screen()->availableGeometry()) : QRectF();
}

void Window::makeKeyAndOrderFront() {
  orderFrontWith(true);
  activateWindow();
}

void Window::orderFront() {
  orderFrontWith(false);
}

void Window::orderFrontWith(bool keyboard) {
  setAttribute(Qt::WA_ShowWithoutActivating, !keyboard);
  setWindowState(windowState() & ~Qt::WindowMinimized);
  show();
  raise();
}

void Window::center() {
  QRectF centred = frame();
  centred.moveCenter(visibleFrame().center());
  setFrame(centred);
}

void Window::makeFirstResponder(QWidget *widget) {
  QWidget *responder = widget ? widget : this;
  responder->setFocus(Qt::OtherFocusReason);
}

void Window::closeEvent(QCloseEvent *event) {
  QMainWindow::closeEvent(event);
  mIsClosing = event->isAccepted() && isVisible();
}

void Window::hideEvent(QHideEvent *event) {
  QMainWindow::hideEvent(event);
  mResizeTimer.stop();
  mFrameBeforeResize.reset();
  if (mIsClosing) {
    mIsClosing = false;
    emit closed();
  }
}

void Window::changeEvent(QEvent *event) {
  QMainWindow::changeEvent(event);
  if (event->type() != QEvent::WindowStateChange)
    return;
  const bool was = static_cast<QWindowStateChangeEvent *>(event)->oldState() & Qt::WindowMinimized;
  if (isMinimized() && !was)
    emit miniaturized();
  else if (!isMinimized() && was)
    emit deminiaturized();
}

bool Window::focusNextPrevChild(bool next) {
  QWidget *start = focusWidget() != nullptr ? focusWidget() : this;
  const auto neighbour = [next](const QWidget &widget) {
    return next ? widget.nextInFocusChain() : widget.previousInFocusChain();
  };
  for (QWidget *widget = neighbour(*start); widget != start; widget = neighbour(*widget)) {
    const bool takesTab = (widget->focusPolicy() & Qt::TabFocus) == Qt::TabFocus;
    if (takesTab && widget->window() == this && widget->isEnabled() &&
        widget->focusProxy() == nullptr && !widget->visibleRegion().isEmpty()) {
      widget->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
      return true;
    }
  }
  return false;
}

void Window::resizeEvent(QResizeEvent *event) {
  QMainWindow::resizeEvent(event);
  // Spontaneous: not from setFrame.
  if (!event->spontaneous() || !windowWillResize || !event->oldSize().isValid())
    return;
  if (!mFrameBeforeResize && isMouseButtonDown()) {
    // The position is not yet the new one.
    const QRect before(geometry().topLeft(), event->oldSize());
    mFrameBeforeResize = flippedOnScreen(QRectF(before.marginsAdded(frameMargins())));
  }
  if (mFrameBeforeResize)
    mResizeTimer.start();
}

void Window::endUserResize() {
  if (isMouseButtonDown()) {
    mResizeTimer.start();
    return;
  }
  const QRectF before = *mFrameBeforeResize;
  mFrameBeforeResize.reset();
  if (windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen | Qt::WindowMinimized))
    return;
  const QRectF after = frame();
  const QSizeF size = windowWillResize(*this, after.size());
  if (!size.isEmpty() && size != after.size())
    setFrame(resizedFrame(before, after, size));
}

}  // namespace orvane
