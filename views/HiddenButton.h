// A push button that draws nothing while it is hidden, whoever asks it to draw. Main thread.
#pragma once

#include <QPushButton>

#include "views/Zoomed.h"

namespace orvane {

class HiddenButton : public Zoomed<QPushButton> {
  Q_OBJECT
  Q_PROPERTY(int fontPixelSize READ fontPixelSize WRITE setFontPixelSize)

 public:
  explicit HiddenButton(QWidget *parent = nullptr);

 signals:
  // The user has clicked.
  void action();

 protected:
  void paintEvent(QPaintEvent *event) override;
  void initStyleOption(QStyleOptionButton *option) const override;
};

}  // namespace orvane
