#include "views/AutoResizeImageView.h"

#include "tests/views/PictureFolder.h"
#include "tests/views/ZoomRig.h"

namespace orvane::test {
namespace {

class AutoResizeImageViewTest : public testing::Test {
 protected:
  AutoResizeImageViewTest() {
    mPictures.writePlain("red", 16, 16, "#ff0000");
    // Its right half is blue.
    mPictures.writeDrawing("halves", 16, 16,
                           "<rect width='8' height='16' fill='#00ff00'/>"
                           "<rect x='8' width='8' height='16' fill='#0000ff'/>");
  }
  QColor colourAt(double x, double y) {
    return mView.view().grab().toImage().pixelColor(qRound(x), qRound(y));
  }

  PictureFolder mPictures;
  ZoomRig<AutoResizeImageView> mView{QRect(20, 40, 32, 16)};
};

TEST_F(AutoResizeImageViewTest, StretchesItsPictureOverItsFrameAtEveryZoom) {
  mView->setImage(Picture::imageNamed(QStringLiteral("halves")));
  for (const double zoom : kZooms) {
    SCOPED_TRACE(zoom);
    mView.zoomTo(zoom);
    const QColor nothing = colourAt(2.0, 2.0);
    const auto at = [&](double x, double y) { return colourAt(x * zoom, y * zoom); };
    // Two units inside each corner, beside the middle, and outside.
    EXPECT_EQ(at(22.0, 42.0), QColor(Qt::green));
    EXPECT_EQ(at(34.0, 54.0), QColor(Qt::green));
    EXPECT_EQ(at(38.0, 42.0), QColor(Qt::blue));
    EXPECT_EQ(at(50.0, 54.0), QColor(Qt::blue));
    EXPECT_EQ(at(18.0, 48.0), nothing);
    EXPECT_EQ(at(54.0, 48.0), nothing);
    EXPECT_EQ(at(36.0, 38.0), nothing);
    EXPECT_EQ(at(36.0, 58.0), nothing);
  }
}

TEST_F(AutoResizeImageViewTest, ShowsNothingWithoutAPicture) {
  const QColor nothing = colourAt(2.0, 2.0);
  EXPECT_EQ(colourAt(30.0, 48.0), nothing);
  mView->setImage(Picture::imageNamed(QStringLiteral("red")));
  EXPECT_EQ(colourAt(30.0, 48.0), QColor(Qt::red));
  mView->setImage(nullptr);
  EXPECT_EQ(mView->image(), nullptr);
  EXPECT_EQ(colourAt(30.0, 48.0), nothing);
}

TEST_F(AutoResizeImageViewTest, IsNotDrawnAgainForTheSamePicture) {
  const auto red = Picture::imageNamed(QStringLiteral("red"));
  mView->setImage(red);
  Repaints repaints(*mView);
  mView->setImage(red);
  EXPECT_EQ(repaints.count(), 0);
  mView->setImage(Picture::imageNamed(QStringLiteral("halves")));
  EXPECT_EQ(repaints.count(), 1);
  mView->setImage(red);
  EXPECT_EQ(repaints.count(), 2);
  EXPECT_EQ(mView->image(), red);
}

}  // namespace
}  // namespace orvane::test
