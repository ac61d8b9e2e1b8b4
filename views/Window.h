// A window that is measured as a frame (with its decorations) around a content (the central widget;
// the menu bar belongs to the frame), can be fixed to proportions, and asks before it takes the
// size the user gave it.
//
// Rectangles are in screen units with the origin at the bottom left of the primary screen, y
// upwards. The decorations are unknown until the window is shown; until then they count as nothing,
// so set the content's rectangle then.
//
// The window manager resizes, and a program cannot answer it in the middle of a drag: a size forced
// meanwhile flickers away from the pointer. So a drag is free, and once the mouse button is up the
// window takes, once, the size that windowWillResize returns for the one the user left, keeping the
// edges that were not dragged. While the left or the right edge is dragged with no key held, the
// window manager is told the proportions and keeps them itself; not at a corner or at the other
// edges, where it goes by the width although the user may mean the height. Only what happens with a
// mouse button down counts as the user's: tiling and the like do not, nor does anything where the
// pointer of the whole screen cannot be asked (not X11).
//
// A height set with animation is taken gradually, in the style's time for animations. The content
// is laid out once, for the higher one of both, and the window's lower edge moves over it. All that
// asks for the frame meanwhile is told the one that is being taken. The user and the desktop come
// first: a size of theirs ends it.
//
// Maximised or full screen, the window has the size that the window manager gives it, and the
// content as much of it as has the layout's proportions.
//
// Main thread.
#pragma once

#include <functional>
#include <optional>

#include <QMainWindow>
#include <QRectF>
#include <QSizeF>
#include <QTimer>

#include "views/HeightAnimation.h"
#include "views/ResizeDrag.h"

namespace orvane {

class Window : public QMainWindow {
  Q_OBJECT
  // A size of the content. The program's own value: the user can make the window smaller.
  Q_PROPERTY(QSizeF contentMinSize READ contentMinSize WRITE setContentMinSize)

 public:
  explicit Window(QWidget *parent = nullptr);

  QRectF frame() const;
  // With animate, the height gradually and the rest at once, unless the window is not to be seen or
  // the desktop does not let programs place windows. Rounds to whole units. A maximised window
  // stays as it is and tells with restored that it has missed one.
  void setFrame(const QRectF &frame, bool animate = false);
  QRectF contentRectForFrameRect(const QRectF &frame) const;
  QRectF frameRectForContentRect(const QRectF &content) const;
  QSizeF contentSize() const { return contentRectForFrameRect(frame()).size(); }

  QSizeF contentMinSize() const { return mContentMinSize; }
  void setContentMinSize(const QSizeF &size) { mContentMinSize = size; }
  // Of the content in the layout it is in, before any zoom; contentMinSize until it is set.
  QSizeF layoutSize() const { return mLayoutSize.isEmpty() ? mContentMinSize : mLayoutSize; }
  void setLayoutSize(const QSizeF &size);
  // Of the frame around that.
  QSizeF minSize() const;

  // The proportions of the content in the layout it is in; empty when there are none.
  QSizeF contentAspectRatio() const { return mContentAspectRatio; }
  void setContentAspectRatio(const QSizeF &ratio) { mContentAspectRatio = ratio; }

  // What panels and docks leave of the window's screen.
  QRectF visibleFrame() const;

  void makeKeyAndOrderFront();
  // Leaves the keyboard to the window that has it.
  void orderFront();
  // On its screen.
  void center();
  // Gives the keyboard to a widget of this window, or to the window itself when it is null.
  void makeFirstResponder(QWidget *widget);

  // Returns the frame size the window takes, given the one the user left it with: with neither
  // Shift nor Alt that is one of minSize's proportions when a single edge was dragged.
  std::function<QSizeF(Window &window, QSizeF proposed)> windowWillResize;
  // Of Shift and Alt, what the user holds, or held at the end, while resizing.
  Qt::KeyboardModifiers resizeModifiers() const { return mDrag.modifiers(); }

 signals:
  // The user or the program has closed the window; it is no longer visible.
  void closed();
  void miniaturized();
  void deminiaturized();
  // The window is maximised no longer, and has missed a setFrame meanwhile.
  void restored();

 protected:
  bool event(QEvent *event) override;
  bool eventFilter(QObject *watched, QEvent *event) override;
  void closeEvent(QCloseEvent *event) override;
  void showEvent(QShowEvent *event) override;
  void hideEvent(QHideEvent *event) override;
  void changeEvent(QEvent *event) override;
  // Passes over what the window is too small to show.
  bool focusNextPrevChild(bool next) override;
  void moveEvent(QMoveEvent *event) override;
  void resizeEvent(QResizeEvent *event) override;

 private:
  QMargins frameMargins() const;
  QRectF frameAround(const QRect &geometry) const;
  int menuBarHeight(int width) const;
  // Milliseconds; 0 for at once.
  int animationDuration() const;
  void orderFrontWith(bool keyboard);
  // Maximised or full screen.
  bool isSizedByDesktop() const;
  QRect contentPlace() const;
  void placeContent();
  bool hasMissedFrame() const;
  void tellRestored();
  bool isPlainDrag() const;
  // What the user has made of the frame. When a side is dragged that is the width alone, whatever
  // the window manager does to keep the proportions.
  QRectF draggedFrame() const;
  QSizeF sizeForDrag(const QSizeF &dragged);
  void keepProportions();
  void letGoProportions();
  void endUserResize();

  QSizeF mContentMinSize;
  QSizeF mLayoutSize;
  QSizeF mContentAspectRatio;
  bool mIsClosing = false;
  HeightAnimation mAnimation{*this};
  QSize mContentSizeTold;  // that it was laid out for
  std::optional<QSize> mSizeAtMissedFrame;
  QTimer mRestoreTimer;
  ResizeDrag mDrag;
  bool mIsSideDragged = false;
  QSize mAspectHint;  // while a side is dragged
};

}  // namespace orvane
