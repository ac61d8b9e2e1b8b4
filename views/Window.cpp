#include "views/Window.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include <QCloseEvent>
#include <QGuiApplication>
#include <QMenuBar>
#include <QScreen>
#include <QStyle>
#include <QWindow>

#include "views/AspectHint.h"
#include "views/Coordinates.h"
#include "views/PointerState.h"
#include "views/WindowBackground.h"
#include "views/WindowGeometry.h"

namespace orvane {
namespace {

// Between the state, the size, the place and the decorations of a window that is maximised no
// longer; they come one by one, in any order.
constexpr std::chrono::milliseconds kSettled{60};

QRectF flippedOnScreen(const QRectF &rect) {
  return flipped(rect, QGuiApplication::primaryScreen()->geometry().height());
}

}  // namespace

Window::Window(QWidget *parent) : QMainWindow(parent) {
  mRestoreTimer.setSingleShot(true);
  mRestoreTimer.setInterval(kSettled);
  connect(&mRestoreTimer, &QTimer::timeout, this, &Window::tellRestored);
  connect(&mAnimation, &HeightAnimation::ended, this, &Window::placeContent);
  connect(&mDrag, &ResizeDrag::goesOn, this, &Window::keepProportions);
  connect(&mDrag, &ResizeDrag::released, this, &Window::letGoProportions);
  connect(&mDrag, &ResizeDrag::ended, this, &Window::endUserResize);
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

QRectF Window::frameAround(const QRect &geometry) const {
  return flippedOnScreen(QRectF(geometry.marginsAdded(frameMargins())));
}

QRectF Window::frame() const {
  QRect place = geometry();
  if (mAnimation.isOn())
    place.setHeight(mAnimation.target());
  return frameAround(place);
}

void Window::setFrame(const QRectF &frame, bool animate) {
  if (isSizedByDesktop()) {
    mSizeAtMissedFrame = size();
    return;
  }
  mAnimation.stop();
  const QRect geometry = flippedOnScreen(frame).toRect().marginsRemoved(frameMargins());
  const int duration = animate ? animationDuration() : 0;
  // A screen too small for the details makes the window narrower, too.
  const bool isOnlyHeight =
      geometry.topLeft() == this->geometry().topLeft() && geometry.width() == width();
  if (duration > 0 && isOnlyHeight && geometry.height() != height()) {
    mAnimation.start(geometry.height(), duration);
    placeContent();
    return;
  }
  // Where a window that was never shown or moved stands is for the desktop to say.
  if (!isVisible() && !testAttribute(Qt::WA_Moved) && frame.topLeft() == this->frame().topLeft())
    resize(geometry.size());
  else
    setGeometry(geometry);
  placeContent();
}

int Window::animationDuration() const {
  const bool isSeen =
      isVisible() && !isMinimized() && windowHandle() != nullptr && windowHandle()->isExposed();
  return isSeen && !QGuiApplication::platformName().startsWith(QLatin1String("wayland"))
             ? style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this)
             : 0;
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

void Window::setLayoutSize(const QSizeF &size) {
  mLayoutSize = size;
  if (isSizedByDesktop())
    placeContent();
}

QSizeF Window::minSize() const {
  return frameRectForContentRect(QRectF(QPointF(), layoutSize())).size();
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

void Window::showEvent(QShowEvent *event) {
  QMainWindow::showEvent(event);
  mAnimation.cutShort();
  setWindowBackground(*windowHandle(), palette().color(QPalette::Window));
}

void Window::hideEvent(QHideEvent *event) {
  QMainWindow::hideEvent(event);
  mAnimation.cutShort();
  // One that is minimised would be brought back by a new size.
  if (mAnimation.isOn() && !event->spontaneous())
    resize(width(), mAnimation.target());
  mDrag.cancel();
  letGoProportions();
  if (mIsClosing) {
    mIsClosing = false;
    emit closed();
  }
}

void Window::changeEvent(QEvent *event) {
  QMainWindow::changeEvent(event);
  if (event->type() == QEvent::PaletteChange && isVisible())
    setWindowBackground(*windowHandle(), palette().color(QPalette::Window));
  if (event->type() != QEvent::WindowStateChange)
    return;
  const bool was = static_cast<QWindowStateChangeEvent *>(event)->oldState() & Qt::WindowMinimized;
  if (isMinimized() && !was)
    emit miniaturized();
  else if (!isMinimized() && was)
    emit deminiaturized();
  if (mAnimation.isOn() && isSizedByDesktop()) {
    mAnimation.stop();
    mSizeAtMissedFrame = size();
  } else {
    mAnimation.cutShort();
  }
  placeContent();
  // What comes with it is the window manager's size, whatever the mouse does.
  mDrag.cancel();
  letGoProportions();
  if (hasMissedFrame())
    mRestoreTimer.start();
}

bool Window::isSizedByDesktop() const {
  return (windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen)) != 0;
}

QRect Window::contentPlace() const {
  QRect area = rect().adjusted(0, menuBarHeight(width()), 0, 0);
  if (mAnimation.isOn())
    area.setHeight(
        std::max(mContentSizeTold.height(), mAnimation.target() - menuBarHeight(width())));
  if (!isSizedByDesktop() || layoutSize().isEmpty())
    return area;
  const QSize size = largestLayoutSize(area.size(), layoutSize()).toSize();
  return {{(area.width() - size.width()) / 2, area.top()}, size};
}

void Window::placeContent() {
  if (centralWidget())
    centralWidget()->setGeometry(contentPlace());
}

bool Window::event(QEvent *event) {
  if (event->type() == QEvent::Polish && centralWidget())
    centralWidget()->installEventFilter(this);
  return QMainWindow::event(event);
}

// The toolkit gives the content the whole area; corrected here, before the content lays itself out
// for it. While the window's height is animated nothing is left to be laid out then.
bool Window::eventFilter(QObject *watched, QEvent *event) {
  const QWidget *content = centralWidget();
  const bool isResize = event->type() == QEvent::Resize;
  if (watched != content || (!isResize && event->type() != QEvent::Move))
    return QMainWindow::eventFilter(watched, event);
  if ((isSizedByDesktop() || mAnimation.isOn()) && content->geometry() != contentPlace()) {
    placeContent();
    return true;
  }
  if (!isResize)
    return false;
  const QSize told = std::exchange(mContentSizeTold, content->size());
  return static_cast<QResizeEvent *>(event)->size() != content->size() ||
         (mAnimation.isOn() && told == content->size());
}

bool Window::hasMissedFrame() const {
  return mSizeAtMissedFrame && !isSizedByDesktop() && !isMinimized() &&
         size() != *mSizeAtMissedFrame;
}

void Window::tellRestored() {
  if (!hasMissedFrame())
    return;
  mSizeAtMissedFrame.reset();
  emit restored();
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

void Window::moveEvent(QMoveEvent *event) {
  QMainWindow::moveEvent(event);
  if (mAnimation.isOn() && event->spontaneous() && pointerState().isButtonDown)
    mAnimation.cutShort();
}

void Window::resizeEvent(QResizeEvent *event) {
  QMainWindow::resizeEvent(event);
  if (mAnimation.isOn() && event->spontaneous()) {
    if (mAnimation.hasAskedFor(event->size()))
      return;
    // Another program's size, or a hand's.
    mAnimation.stop();
    placeContent();
  }
  if (mSizeAtMissedFrame && isSizedByDesktop())
    mSizeAtMissedFrame = size();
  if (hasMissedFrame())
    mRestoreTimer.start();
  // Spontaneous: not from setFrame.
  if (!event->spontaneous() || !windowWillResize || !event->oldSize().isValid())
    return;
  // The position is not yet the new one.
  const QRectF before = frameAround(QRect(geometry().topLeft(), event->oldSize()));
  if (!mDrag.isOn()) {
    const QRectF pointer = flippedOnScreen(QRectF(QCursor::pos(), QSizeF()));
    mIsSideDragged = isSideDragged(before, frame().size(), pointer.topLeft());
  }
  mDrag.sizeChanged(before);
}

bool Window::isPlainDrag() const {
  return (resizeModifiers() & (Qt::ShiftModifier | Qt::AltModifier)) == 0;
}

QRectF Window::draggedFrame() const {
  const QRectF now = frame();
  const QRectF before = mDrag.frameBefore();
  if (!mIsSideDragged || !isPlainDrag())
    return now;
  const bool isLeftDragged =
      std::abs(now.left() - before.left()) > std::abs(now.right() - before.right());
  QRectF dragged(before.topLeft(), QSizeF(now.width(), before.height()));
  if (isLeftDragged)
    dragged.moveRight(before.right());
  return dragged;
}

QSizeF Window::sizeForDrag(const QSizeF &dragged) {
  return windowWillResize(
      *this, isPlainDrag() ? proportionalProposal(mDrag.frameBefore().size(), dragged, minSize())
                           : dragged);
}

void Window::keepProportions() {
  if (!mIsSideDragged || isSizedByDesktop() || !isPlainDrag()) {
    letGoProportions();
    return;
  }
  const QSizeF size = sizeForDrag(draggedFrame().size()).shrunkBy(frameMargins());
  // The decorations do not zoom, so that the proportions change a little with the size.
  const double height = size.width() * mAspectHint.height() / mAspectHint.width();
  if (!mAspectHint.isEmpty() && std::abs(height - size.height()) < 1.0)
    return;
  mAspectHint = size.toSize();
  setAspectHint(*windowHandle(), mAspectHint);
}

void Window::letGoProportions() {
  if (mAspectHint.isEmpty())
    return;
  mAspectHint = {};
  setAspectHint(*windowHandle(), mAspectHint);
}

void Window::endUserResize() {
  if (isSizedByDesktop() || isMinimized())
    return;
  const QRectF after = draggedFrame();
  const QSizeF size = usableFrameSize(sizeForDrag(after.size()), minSize());
  if (size != frame().size())
    setFrame(resizedFrame(mDrag.frameBefore(), after, size));
}

}  // namespace orvane
