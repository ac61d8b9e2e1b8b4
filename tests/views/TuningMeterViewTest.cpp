#include "views/TuningMeterView.h"

#include <limits>
#include <utility>

#include <QApplication>
#include <QEvent>
#include <QImage>

#include <gtest/gtest.h>

#include "tests/views/PictureFolder.h"
#include "views/TuningMeterGeometry.h"

namespace orvane::test {
namespace {

const QSizeF kFace(405.0, 200.0);
const QSizeF kNeedle(21.0, 150.0);
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

QRectF needleAtNaturalSize(float cent) {
  return needleRect(cent, kFace, kFace, kNeedle);
}

TEST(TuningMeterGeometry, TheNeedleStandsOnTheCentreLineAndFourUnitsFurtherForEachCent) {
  EXPECT_EQ(needleAtNaturalSize(0.0F), QRectF(192.0, 3.0, 21.0, 150.0));
  EXPECT_EQ(needleAtNaturalSize(0.0F).center().x(), 202.5);
  EXPECT_EQ(needleAtNaturalSize(1.0F).center().x(), 206.5);
  EXPECT_EQ(needleAtNaturalSize(50.0F).center().x(), 402.5);
  EXPECT_EQ(needleAtNaturalSize(-50.0F).center().x(), 2.5);
}

TEST(TuningMeterGeometry, TheNeedleLeavesTheFaceBeyondFiftyCents) {
  EXPECT_EQ(needleAtNaturalSize(-100.0F).x(), -208.0);
  EXPECT_EQ(needleAtNaturalSize(1000.0F).x(), 4192.0);
}

TEST(TuningMeterGeometry, AViewTwiceTheFaceDoublesTheNeedleAndItsPlace) {
  EXPECT_EQ(needleRect(10.0F, QSizeF(810.0, 400.0), kFace, kNeedle),
            QRectF(464.0, 6.0, 42.0, 300.0));
}

TEST(TuningMeterGeometry, AViewOfOtherProportionsStretchesTheNeedleUnequally) {
  EXPECT_EQ(needleRect(10.0F, QSizeF(810.0, 100.0), kFace, kNeedle),
            QRectF(464.0, 1.5, 42.0, 75.0));
}

TEST(TuningMeterGeometry, ThePlaceIsRoundedToSinglePrecisionAndTheSizeIsNot) {
  const QRectF place = needleRect(0.1F, QSizeF(1000.0, 300.0), kFace, kNeedle);
  EXPECT_EQ(place.x(), 475.06170654296875);  // 192.4 · 1000/405 is 475.0617284
  EXPECT_EQ(place.y(), 4.5);
  EXPECT_EQ(place.width(), 51.85185098648071);  // 51.85185185
  EXPECT_EQ(place.height(), 225.0);
}

TEST(TuningMeterGeometry, LessThanThreeCentsIsInTune) {
  EXPECT_TRUE(isInTune(0.0F));
  EXPECT_TRUE(isInTune(2.99F));
  EXPECT_TRUE(isInTune(-2.99F));
  EXPECT_FALSE(isInTune(3.0F));
  EXPECT_FALSE(isInTune(-3.0F));
  EXPECT_FALSE(isInTune(kNaN));
}

// A white face, a red needle, a blue one for what is in tune, and a scale that is a black line
// along the view's upper edge.
class TuningMeterViewTest : public testing::Test {
 protected:
  TuningMeterViewTest() {
    mPictures.writePlain("tuningmeter", 405, 200, "#ffffff");
    mPictures.writePlain("tuningneedle", 21, 150, "#ff0000");
    mPictures.writePlain("intuneneedle", 7, 7, "#0000ff");
    mPictures.writeDrawing("tuningscale", 100, 100,
                           "<rect width='100' height='30' fill='#000000'/>");
  }

  static QImage picture(TuningMeterView &view, int width = 405, int height = 200) {
    view.resize(width, height);
    return view.grab().toImage();
  }

  const PictureFolder mPictures;
};

TEST_F(TuningMeterViewTest, StartsWithTheInTuneNeedleAtTheCentre) {
  TuningMeterView view;
  const QImage image = picture(view);
  // The needle reaches from 3 to 153 above the bottom, 192 to 213 from the left.
  EXPECT_EQ(image.pixelColor(192, 100), QColor(Qt::blue));
  EXPECT_EQ(image.pixelColor(212, 196), QColor(Qt::blue));
  EXPECT_EQ(image.pixelColor(191, 100), QColor(Qt::white));
  EXPECT_EQ(image.pixelColor(213, 100), QColor(Qt::white));
  EXPECT_EQ(image.pixelColor(200, 197), QColor(Qt::white));
}

TEST_F(TuningMeterViewTest, DrawsTheScaleOverTheNeedle) {
  TuningMeterView view;
  const QImage image = picture(view);
  EXPECT_EQ(image.pixelColor(200, 59), QColor(Qt::black));
  EXPECT_EQ(image.pixelColor(200, 60), QColor(Qt::blue));
  EXPECT_EQ(image.pixelColor(0, 59), QColor(Qt::black));
}

TEST_F(TuningMeterViewTest, ChoosesTheNeedleByTheDeviation) {
  TuningMeterView view;
  view.setCent(2.99F);
  EXPECT_EQ(picture(view).pixelColor(214, 100), QColor(Qt::blue));
  view.setCent(3.0F);
  EXPECT_EQ(picture(view).pixelColor(214, 100), QColor(Qt::red));
  view.setCent(-3.0F);
  EXPECT_EQ(picture(view).pixelColor(190, 100), QColor(Qt::red));
}

TEST_F(TuningMeterViewTest, StretchesWithTheView) {
  TuningMeterView view;
  view.setCent(10.0F);
  const QImage image = picture(view, 810, 100);
  EXPECT_EQ(image.pixelColor(464, 60), QColor(Qt::red));
  EXPECT_EQ(image.pixelColor(505, 60), QColor(Qt::red));
  EXPECT_EQ(image.pixelColor(463, 60), QColor(Qt::white));
  EXPECT_EQ(image.pixelColor(506, 60), QColor(Qt::white));
}

TEST_F(TuningMeterViewTest, CutsTheNeedleOffAtTheEdgeOfTheView) {
  TuningMeterView view;
  view.setCent(50.0F);
  EXPECT_EQ(picture(view).pixelColor(404, 100), QColor(Qt::red));
  view.setCent(1e9F);
  EXPECT_EQ(picture(view).pixelColor(404, 100), QColor(Qt::white));
  view.setCent(kNaN);
  EXPECT_EQ(picture(view).pixelColor(202, 100), QColor(Qt::white));
}

TEST(TuningMeterView, DrawsWhatPicturesThereAre) {
  const PictureFolder pictures;
  TuningMeterView bare;
  bare.resize(40, 20);
  const QImage empty = bare.grab().toImage();
  pictures.writePlain("tuningneedle", 21, 150, "#ff0000");
  pictures.writePlain("tuningscale", 10, 10, "#00ff00");
  TuningMeterView scale;
  scale.resize(40, 20);
  EXPECT_EQ(scale.grab().toImage().pixelColor(20, 10), QColor(Qt::green));
  EXPECT_NE(empty.pixelColor(20, 10), QColor(Qt::green));
}

class PaintCounter : public QObject {
 public:
  explicit PaintCounter(QWidget &widget) : mWidget(widget) {
    widget.show();
    count();
    widget.installEventFilter(this);
  }
  // Paintings since the last call.
  int count() {
    // What is posted while events are handled is handled in the next turn.
    for (int turn = 0; turn < 3; ++turn)
      QApplication::processEvents();
    return std::exchange(mCount, 0);
  }

 protected:
  bool eventFilter(QObject *watched, QEvent *event) override {
    mCount += watched == &mWidget && event->type() == QEvent::Paint ? 1 : 0;
    return false;
  }

 private:
  QWidget &mWidget;
  int mCount = 0;
};

TEST_F(TuningMeterViewTest, IsRedrawnOnlyWhenTheDeviationChanges) {
  TuningMeterView view;
  view.resize(405, 200);
  PaintCounter paintings(view);
  view.setCent(0.0F);
  EXPECT_EQ(paintings.count(), 0);
  view.setCent(12.5F);
  EXPECT_EQ(paintings.count(), 1);
  view.setCent(12.5F);
  EXPECT_EQ(paintings.count(), 0);
  view.setCent(kNaN);
  EXPECT_EQ(paintings.count(), 1);
  view.setCent(kNaN);
  EXPECT_EQ(paintings.count(), 1);
}

}  // namespace
}  // namespace orvane::test
