#include "views/Picture.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>
#include <QTransform>

namespace orvane {
namespace {

// Of a picture that moves, one for each of its places between two pixels.
constexpr std::size_t kRasters = 8;
// Nobody sees less, and a needle that trembles by less costs nothing.
constexpr double kStepsOfPixel = 8.0;
constexpr double kFarthestPixel = 1e6;
// Larger rasters are not worth their memory.
constexpr double kLargestRaster = 16e6;  // pixels

bool isShowable(const QRectF &rect) {
  const auto isNear = [](double edge) { return std::abs(edge) <= kFarthestPixel; };
  return isNear(rect.left()) && isNear(rect.top()) && isNear(rect.right()) &&
         isNear(rect.bottom()) && !rect.isEmpty();
}

double snapped(double pixels) {
  return std::round(pixels * kStepsOfPixel) / kStepsOfPixel;
}

}  // namespace

std::shared_ptr<const Picture> Picture::imageNamed(const QString &name) {
  QFile file(QStringLiteral("resources:%1.svg").arg(name));
  if (!file.open(QIODevice::ReadOnly))
    return nullptr;
  // Left to itself, the renderer asks a file that the disk does not give for more, for ever.
  auto renderer = std::make_unique<QSvgRenderer>(file.readAll());
  if (!renderer->isValid() || renderer->defaultSize().isEmpty())
    return nullptr;
  return std::make_shared<const Picture>(std::move(renderer));
}

Picture::Picture(std::unique_ptr<QSvgRenderer> renderer) : mRenderer(std::move(renderer)) {}

Picture::~Picture() = default;

QSizeF Picture::size() const {
  return mRenderer->defaultSize();
}

void Picture::drawInRect(QPainter &painter, const QRectF &target) const {
  const QTransform device = painter.deviceTransform();
  QRectF pixels = device.mapRect(target);
  if (!isShowable(target) || !isShowable(pixels))
    return;
  const bool isUpright =
      device.type() <= QTransform::TxScale && device.m11() > 0.0 && device.m22() > 0.0;
  if (!isUpright || pixels.width() * pixels.height() > kLargestRaster) {
    mRenderer->render(&painter, target);
    return;
  }
  pixels.moveTo(snapped(pixels.left()), snapped(pixels.top()));
  const QRect whole = pixels.toAlignedRect();
  const QImage image = raster(pixels.translated(-QPointF(whole.topLeft())), whole.size());
  // Undoes the device transform, so that each pixel of the raster is one of the device.
  const QTransform world = painter.worldTransform();
  painter.setWorldTransform(device.inverted() * world);
  painter.drawImage(whole.topLeft(), image);
  painter.setWorldTransform(world);
}

QImage Picture::raster(const QRectF &target, const QSize &size) const {
  const auto found = std::find_if(mRasters.begin(), mRasters.end(), [&](const Raster &raster) {
    return raster.target == target && raster.image.size() == size;
  });
  if (found != mRasters.end()) {
    std::rotate(found, found + 1, mRasters.end());
    return mRasters.back().image;
  }
  QImage image(size, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  mRenderer->render(&painter, target);
  painter.end();
  // What a window no longer shows, lest a drag leaves megabytes behind.
  std::erase_if(mRasters,
                [&](const Raster &raster) { return raster.target.size() != target.size(); });
  if (mRasters.size() == kRasters)
    mRasters.erase(mRasters.begin());
  mRasters.push_back({target, image});
  return image;
}

}  // namespace orvane
