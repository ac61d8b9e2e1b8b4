#include "views/HiddenButton.h"

#include <QStyle>
#include <QStyleOptionButton>

namespace orvane {

HiddenButton::HiddenButton(QWidget *parent) : Zoomed(parent) {
  connect(this, &QAbstractButton::clicked, this, &HiddenButton::action);
}

void HiddenButton::paintEvent(QPaintEvent *event) {
  if (!isHidden())
    Zoomed::paintEvent(event);
}

void HiddenButton::initStyleOption(QStyleOptionButton *option) const {
  QPushButton::initStyleOption(option);
  useBounds(*option);
}

}  // namespace orvane
