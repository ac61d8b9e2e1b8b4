// A frame or a line, for the eye only. Main thread.
#pragma once

#include <QFrame>

#include "views/Zoomed.h"

namespace orvane {

class AutoResizeBox : public Zoomed<QFrame> {
  Q_OBJECT

 public:
  explicit AutoResizeBox(QWidget *parent = nullptr);

 protected:
  void paintEvent(QPaintEvent *event) override;
  void initStyleOption(QStyleOptionFrame *option) const override;
};

}  // namespace orvane
