// A window that is measured as a frame (with its decorations) around a content (the central widget;
// the menu bar belongs to the frame), can be fixed to proportions, and asks before it takes the
// size the user gave it.
//
// Rectangles are in screen units with the origin at the bottom left of the primary screen, y
// upwards. The decorations are unknown until the window is shown; until then they count as nothing,
// so set the content's rectangle then.
//
// The window manager resizes, and a program cannot answer it in the middle of a drag: an aspect
// hint cannot be let go while a key is held, and a size forced meanwhile flickers away from the
// pointer. So a drag is free, and when the mouse button is up the window takes, once, the size that
// windowWillResize returns for the one the user left, keeping the edges that were not dragged. Only
// what happens with a mouse button down counts as the user's: maximising, tiling and the like do
// not, nor does anything where the pointer of the whole screen cannot be asked (not X11).
//
// Main thread.
#pragma once

#include <functional>
#include <optional>

#include <QMainWindow>
#include <QRectF>
#include <QSizeF>
#include <QTimer>

namespace orvane {

class Window : public QMainWindow {
  Q_OBJECT
  // A size of the content. The program's own value: the user can make the window smaller.
  Q_PROPERTY(QSizeF contentMinSize READ contentMinSize WRITE setContentMinSize)

 public:
  explicit Window(QWidget *parent = nullptr);

  QRectF frame() const;
  // At once, whatever animate says. Rounds to whole units.
  void setFrame(const QRectF &frame, bool animate = false);
  QRectF contentRectForFrameRect(const QRectF &frame) const;
  QRectF frameRectForContentRect(const QRectF &content) const;
  QSizeF contentSize() const { return contentRectForFrameRect(frame()).size(); }

  QSizeF contentMinSize() const { return mContentMinSize; }
  void setContentMinSize(const QSizeF &size) { mContentMinSize = size; }
  // Of the frame around the smallest content.
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

  // Returns the frame size the window takes, given the one the user left it with.
  std::function<QSizeF(Window &window, QSizeF proposed)> windowWillResize;

 signals:
  // The user or the program has closed the window; it is no longer visible.
  void closed();
  void miniaturized();
  void deminiaturized();

 protected:
  void closeEvent(QCloseEvent *event) override;
  void hideEvent(QHideEvent *event) override;
  void changeEvent(QEvent *event) override;
  // Passes over what the window is too small to show.
  bool focusNextPrevChild(bool next) override;
  void resizeEvent(QResizeEvent *event) override;

 private:
  QMargins frameMargins() const;
  int menuBarHeight(int width) const;
  void orderFrontWith(bool keyboard);
  void endUserResize();

  QSizeF mContentMinSize;
  QSizeF mContentAspectRatio;
  bool mIsClosing = false;
  QTimer mResizeTimer;
  std::optional<QRectF> mFrameBeforeResize;  // while the user resizes
};

}  // namespace orvane
