// The control that shows and hides the details: a triangle with two states, pressed with the mouse,
// with Space or Return, or by an assistive program. Main thread.
#pragma once

#include "views/DisclosureButtonCell.h"
#include "views/Zoomed.h"

namespace orvane {

class DisclosureButton : public Zoomed<QWidget> {
  Q_OBJECT

 public:
  explicit DisclosureButton(QWidget *parent = nullptr);

  // 0: the details are hidden, 1: they are shown.
  int state() const { return mCell.state(); }
  // Never an action.
  void setState(int state) { mCell.setState(state, *this); }
  // As if the user had clicked.
  void performClick();

  // Whether to show that the keyboard acts on it.
  bool showsFirstResponder() const { return hasFocus() && isActiveWindow(); }

 signals:
  // The user has changed the state.
  void action();

 protected:
  void paintEvent(QPaintEvent *event) override;
  void mousePressEvent(QMouseEvent *event) override;
  void mouseMoveEvent(QMouseEvent *event) override;
  void mouseReleaseEvent(QMouseEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;
  void hideEvent(QHideEvent *event) override;
  void changeEvent(QEvent *event) override;

 private:
  DisclosureButtonCell mCell;
  bool mIsTracking = false;
};

}  // namespace orvane
