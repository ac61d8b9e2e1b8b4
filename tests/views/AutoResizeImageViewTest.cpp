#include "views/AutoResizeImageView.h"

#include <gtest/gtest.h>

#include "tests/views/PictureFolder.h"
#include "tests/views/ZoomRig.h"

namespace orvane::test {
namespace {

TEST(AutoResizeImageView, IsNotDrawnAgainForThePictureItShows) {
  const PictureFolder pictures;
  pictures.writePlain("red", 24, 24, "#ff0000");
  pictures.writePlain("green", 24, 24, "#00ff00");
  const auto red = Picture::imageNamed(QStringLiteral("red"));
  const auto green = Picture::imageNamed(QStringLiteral("green"));
  ZoomRig<AutoResizeImageView> rig(QSize(24, 24));
  rig.control->setImage(red);
  EXPECT_EQ(rig.control->image(), red);
  rig.settle();
  rig.control->setImage(red);
  QApplication::processEvents();
  EXPECT_EQ(rig.paints, 0);
  rig.control->setImage(green);
  QApplication::processEvents();
  EXPECT_EQ(rig.paints, 1);
  EXPECT_EQ(rig.drawn().pixelColor(12, 12), QColor(Qt::green));
}

TEST(AutoResizeImageView, FillsItsBoundsAtEveryZoom) {
  const PictureFolder pictures;
  pictures.writePlain("red", 24, 24, "#ff0000");
  for (const double zoom : kZooms) {
    ZoomRig<AutoResizeImageView> rig(QSize(24, 24));
    rig.control->setImage(Picture::imageNamed(QStringLiteral("red")));
    rig.zoom(zoom);
    const QImage image = rig.drawn();
    EXPECT_EQ(image.size(), QSizeF(24.0 * zoom, 24.0 * zoom).toSize());
    EXPECT_EQ(image.pixelColor(0, 0), QColor(Qt::red)) << zoom;
    EXPECT_EQ(image.pixelColor(image.width() - 1, image.height() - 1), QColor(Qt::red)) << zoom;
  }
}

}  // namespace
}  // namespace orvane::test
