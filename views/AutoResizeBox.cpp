#include "views/AutoResizeBox.h"

#include <QStyle>
#include <QStyleOptionFrame>

namespace orvane {

AutoResizeBox::AutoResizeBox(QWidget *parent) : Zoomed(parent) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
}

// The toolkit fills the units beside the lines it draws. Zoomed it would draw around these lines,
// and leave out what is thinner than a unit of the screen.
void AutoResizeBox::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  if (scale() != 1.0F) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(0.5, 0.5);
  }
  drawFrame(&painter);
}

void AutoResizeBox::initStyleOption(QStyleOptionFrame *option) const {
  QFrame::initStyleOption(option);
  useBounds(*option);
}

}  // namespace orvane
