#include "views/AutoResize.h"

#include <QWidget>

#include "views/AutoResizeGeometry.h"
#include "views/Coordinates.h"

namespace orvane {
namespace {

QSizeF superviewSize(const QWidget &control) {
  const QWidget *superview = control.parentWidget();
  return superview ? QSizeF(superview->size()) : QSizeF(0.0, 0.0);
}

}  // namespace

void AutoResize::resizeWithOldSuperviewSize(const QSizeF &oldSize) {
  if (!mIsOriginalSet) {
    mIsOriginalSet = true;
    mOriginalSuperviewSize = oldSize;
    // The view has its new size already, the control's place is still one in the old.
    mOriginalFrame = flipped(QRectF(mControl.geometry()), oldSize.height());
  }
  const QSizeF size = superviewSize(mControl);
  mScale = relayoutScale(mOriginalSuperviewSize, size);
  mFrame = relayoutFrame(mOriginalFrame, mOriginalSuperviewSize, size);
  mControl.setGeometry(flipped(mFrame, size.height()).toAlignedRect());
  // A zoom that ends in the same whole units draws differently all the same.
  mControl.update();
  relayoutEnded();
}

QRectF AutoResize::frame() const {
  return mIsOriginalSet ? mFrame
                        : flipped(QRectF(mControl.geometry()), superviewSize(mControl).height());
}

QRectF AutoResize::bounds() const {
  return {QPointF(), mIsOriginalSet ? mOriginalFrame.size() : QSizeF(mControl.geometry().size())};
}

void AutoResize::setFontPixelSize(int size) {
  mFontPixelSize = size;
  if (size <= 0)
    return;
  QFont font = mControl.font();
  font.setPixelSize(size);
  font.setHintingPreference(QFont::PreferNoHinting);
  mControl.setFont(font);
}

QTransform AutoResize::zoom() const {
  if (!mIsOriginalSet)
    return {};
  const QRectF place = flipped(mFrame, superviewSize(mControl).height());
  const QPointF lost = place.topLeft() - QPointF(mControl.pos());
  const double scale = static_cast<double>(mScale);
  return QTransform(scale, 0.0, 0.0, scale, lost.x(), lost.y());
}

}  // namespace orvane
