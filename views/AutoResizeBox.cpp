#include "views/AutoResizeBox.h"

#include <QStyle>
#include <QStyleOptionFrame>

namespace orvane {

AutoResizeBox::AutoResizeBox(QWidget *parent) : Zoomed(parent) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
}

void AutoResizeBox::initStyleOption(QStyleOptionFrame *option) const {
  QFrame::initStyleOption(option);
  useBounds(*option);
}

}  // namespace orvane
