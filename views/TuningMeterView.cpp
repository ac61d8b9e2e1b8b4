#include "views/TuningMeterView.h"

#include <QPainter>

#include "views/Coordinates.h"
#include "views/TuningMeterGeometry.h"

namespace orvane {
namespace {

constexpr double kScaleEnd = 50.0;  // cents

}  // namespace

TuningMeterView::TuningMeterView(QWidget *parent)
    : QWidget(parent),
      AccessibleMeter(static_cast<QWidget &>(*this), -kScaleEnd, kScaleEnd),
      tuningmeterImage(Picture::imageNamed(QStringLiteral("tuningmeter"))),
      tuningscaleImage(Picture::imageNamed(QStringLiteral("tuningscale"))),
      tuningneedleImage(Picture::imageNamed(QStringLiteral("tuningneedle"))),
      intuneneedleImage(Picture::imageNamed(QStringLiteral("intuneneedle"))),
      tuningneedleSize(tuningneedleImage ? tuningneedleImage->size() : QSizeF(0.0, 0.0)) {}

void TuningMeterView::setCent(float cent) {
  if (cent == mCent)
    return;
  mCent = cent;
  update();
}

void TuningMeterView::paintEvent(QPaintEvent *) {
  QPainter painter(this);
  const QRectF bounds(rect());
  if (tuningmeterImage)
    tuningmeterImage->drawInRect(painter, bounds);
  const auto &needle = isInTune(mCent) ? intuneneedleImage : tuningneedleImage;
  // Without a face there is nothing to measure the needle's place by.
  if (needle && tuningmeterImage) {
    const QRectF place =
        needleRect(mCent, bounds.size(), tuningmeterImage->size(), tuningneedleSize);
    needle->drawInRect(painter, flipped(place, bounds.height()));
  }
  if (tuningscaleImage)
    tuningscaleImage->drawInRect(painter, bounds);
}

}  // namespace orvane
