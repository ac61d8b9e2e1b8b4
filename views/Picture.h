// A picture of the program's resources: a drawing without pixels of its own, which is made into
// pixels at the painter's resolution, so that it is sharp at every size. Lengths are the drawing's
// own units. Main thread.
#pragma once

#include <memory>
#include <vector>

#include <QImage>
#include <QRectF>
#include <QSizeF>
#include <QString>

class QPainter;
class QSvgRenderer;

namespace orvane {

class Picture {
 public:
  // Loads "resources:NAME.svg". Null when there is no such file or it is no drawing.
  static std::shared_ptr<const Picture> imageNamed(const QString &name);

  // Takes ownership of a renderer that holds a drawing with a size.
  explicit Picture(std::unique_ptr<QSvgRenderer> renderer);
  Picture(const Picture &) = delete;
  Picture &operator=(const Picture &) = delete;
  ~Picture();

  // The width and height the drawing gives itself.
  QSizeF size() const;
  // Stretches the whole picture into target, which is in the painter's coordinates. It
  // begins at the nearest eighth of a pixel. An empty target, or one that no screen could show (not
  // finite, further out than a million pixels), draws nothing.
  void drawInRect(QPainter &painter, const QRectF &target) const;

 private:
  struct Raster {
    QRectF target;  // device pixels, relative to the image's top left corner
    QImage image;
  };
  QImage raster(const QRectF &target, const QSize &size) const;

  std::unique_ptr<QSvgRenderer> mRenderer;
  mutable std::vector<Raster> mRasters;  // the last one used stands last
};

}  // namespace orvane
