#include "views/Picture.h"

#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <limits>

#include <QColor>
#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include "tests/Sanitized.h"
#include "tests/views/PictureFolder.h"

namespace orvane::test {
namespace {

constexpr auto kLeftRedRightBlue =
    "<rect x='0' y='0' width='12' height='24' fill='#ff0000'/>"
    "<rect x='12' y='0' width='12' height='24' fill='#0000ff'/>";

QImage white(int width, int height) {
  QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::white);
  return image;
}

// One row of pixels as letters: R, B, W(hite) or ? for any mixture.
std::string row(const QImage &image, int y) {
  std::string text;
  for (int x = 0; x < image.width(); ++x) {
    const QColor colour = image.pixelColor(x, y);
    text += colour == QColor(Qt::red)     ? 'R'
            : colour == QColor(Qt::blue)  ? 'B'
            : colour == QColor(Qt::white) ? 'W'
                                          : '?';
  }
  return text;
}

std::string letters(int count, char letter) {
  return std::string(static_cast<std::size_t>(count), letter);
}

TEST(Picture, IsNullWhenThereIsNoneOrItIsDamaged) {
  const PictureFolder folder;
  folder.write("damaged", "<svg xmlns='http://www.w3.org/2000/svg' width='10' height='10'><re");
  folder.write("text", "no drawing at all");
  folder.write("empty", "");
  EXPECT_EQ(Picture::imageNamed("absent"), nullptr);
  EXPECT_EQ(Picture::imageNamed("damaged"), nullptr);
  EXPECT_EQ(Picture::imageNamed("text"), nullptr);
  EXPECT_EQ(Picture::imageNamed("empty"), nullptr);
}

TEST(Picture, IsNullWhenItsFileCannotBeRead) {
  const PictureFolder folder;
  folder.writeUnreadable("unreadable");
  EXPECT_EQ(Picture::imageNamed("unreadable"), nullptr);
}

TEST(Picture, HasTheSizeOfItsDrawing) {
  const PictureFolder folder;
  folder.writePlain("needle", 21, 150, "red");
  ASSERT_NE(Picture::imageNamed("needle"), nullptr);
  EXPECT_EQ(Picture::imageNamed("needle")->size(), QSizeF(21.0, 150.0));
}

TEST(Picture, IsStretchedOverTheWholeTarget) {
  const PictureFolder folder;
  folder.writeDrawing("halves", 24, 24, kLeftRedRightBlue);
  QImage image = white(12, 40);
  QPainter painter(&image);
  Picture::imageNamed("halves")->drawInRect(painter, QRectF(2.0, 5.0, 8.0, 30.0));
  painter.end();
  EXPECT_EQ(row(image, 4), "WWWWWWWWWWWW");
  EXPECT_EQ(row(image, 5), "WWRRRRBBBBWW");
  EXPECT_EQ(row(image, 34), "WWRRRRBBBBWW");
  EXPECT_EQ(row(image, 35), "WWWWWWWWWWWW");
}

TEST(Picture, IsSharpWhenDrawnThreeTimesItsSize) {
  const PictureFolder folder;
  folder.writeDrawing("halves", 24, 24, kLeftRedRightBlue);
  QImage image = white(72, 72);
  QPainter painter(&image);
  Picture::imageNamed("halves")->drawInRect(painter, QRectF(0.0, 0.0, 72.0, 72.0));
  painter.end();
  EXPECT_EQ(row(image, 0), letters(36, 'R') + letters(36, 'B'));
  EXPECT_EQ(row(image, 71), letters(36, 'R') + letters(36, 'B'));
}

TEST(Picture, IsSharpInAZoomedPainter) {
  const PictureFolder folder;
  folder.writeDrawing("halves", 24, 24, kLeftRedRightBlue);
  QImage image = white(74, 74);
  QPainter painter(&image);
  painter.translate(1.0, 1.0);
  painter.scale(3.0, 3.0);
  Picture::imageNamed("halves")->drawInRect(painter, QRectF(0.0, 0.0, 24.0, 24.0));
  EXPECT_EQ(painter.worldTransform(), QTransform(3.0, 0.0, 0.0, 3.0, 1.0, 1.0));
  painter.end();
  EXPECT_EQ(row(image, 1), "W" + letters(36, 'R') + letters(36, 'B') + "W");
  EXPECT_EQ(row(image, 72), row(image, 1));
}

TEST(Picture, IsSharpOnADenseScreen) {
  const PictureFolder folder;
  folder.writeDrawing("halves", 24, 24, kLeftRedRightBlue);
  QImage image = white(52, 52);
  image.setDevicePixelRatio(2.0);
  QPainter painter(&image);
  Picture::imageNamed("halves")->drawInRect(painter, QRectF(0.5, 0.0, 25.0, 24.0));
  painter.end();
  EXPECT_EQ(row(image, 0), "W" + letters(25, 'R') + letters(25, 'B') + "W");
  EXPECT_EQ(row(image, 47), row(image, 0));
  EXPECT_EQ(row(image, 48), letters(52, 'W'));
}

TEST(Picture, StandsAtFractionsOfAPixel) {
  const PictureFolder folder;
  folder.writePlain("red", 4, 4, "#ff0000");
  QImage image = white(6, 4);
  QPainter painter(&image);
  Picture::imageNamed("red")->drawInRect(painter, QRectF(0.5, 0.0, 4.0, 4.0));
  painter.end();
  EXPECT_EQ(row(image, 2), "?RRR?W");
  // Half covered: the other half lets the white through.
  EXPECT_NEAR(image.pixelColor(0, 2).green(), 127, 2);
  EXPECT_NEAR(image.pixelColor(4, 2).green(), 127, 2);
}

TEST(Picture, StandsAtTheNearestEighthOfAPixel) {
  const PictureFolder folder;
  folder.writePlain("red", 4, 4, "#ff0000");
  const auto picture = Picture::imageNamed("red");
  // How much of the white is seen through the first column is how far to the right it begins.
  const auto seenThrough = [&](double left) {
    QImage image = white(6, 4);
    QPainter painter(&image);
    picture->drawInRect(painter, QRectF(left, 0.0, 4.0, 4.0));
    painter.end();
    return image.pixelColor(0, 2).green();
  };
  EXPECT_NEAR(seenThrough(0.45), 127, 2);
  EXPECT_NEAR(seenThrough(0.55), 127, 2);
  EXPECT_NEAR(seenThrough(0.57), 159, 2);
  EXPECT_NEAR(seenThrough(0.05), 0, 2);
}

TEST(Picture, IsDrawnTheSameAgainAndAgainAtAnyOrderOfSizes) {
  const PictureFolder folder;
  folder.writeDrawing("halves", 24, 24, kLeftRedRightBlue);
  const auto picture = Picture::imageNamed("halves");
  for (const int size : {10, 20, 30, 40, 50, 10, 50, 40, 40, 20, 10}) {
    QImage image = white(50, 1);
    QPainter painter(&image);
    picture->drawInRect(painter, QRectF(0.0, 0.0, size, 1.0));
    painter.end();
    EXPECT_EQ(row(image, 0),
              letters(size / 2, 'R') + letters(size / 2, 'B') + letters(50 - size, 'W'));
  }
}

// In bytes; what has been mapped for pictures is given back with them.
std::int64_t residentMemory() {
  std::ifstream statm("/proc/self/statm");
  std::int64_t whole = 0;
  std::int64_t resident = 0;
  statm >> whole >> resident;
  return resident * sysconf(_SC_PAGESIZE);
}

TEST(Picture, KeepsNothingOfSizesThatItIsNoLongerDrawnIn) {
  if (kIsSanitized)
    GTEST_SKIP() << "a sanitizer keeps what is freed for a while";
  const PictureFolder folder;
  folder.writeDrawing("halves", 24, 24, kLeftRedRightBlue);
  const auto picture = Picture::imageNamed("halves");
  const auto drawAt = [&](int size) {
    QImage image = white(1, 1);
    QPainter painter(&image);
    picture->drawInRect(painter, QRectF(0.0, 0.0, size, size));
  };
  drawAt(24);
  const std::int64_t before = residentMemory();
  for (int size = 2000; size < 2008; ++size)
    drawAt(size);  // 16 MB each
  const std::int64_t during = residentMemory();
  drawAt(24);
  EXPECT_GT(during - before, 10'000'000);
  EXPECT_LT(during - before, 40'000'000);
  EXPECT_LT(residentMemory() - before, 10'000'000);
}

TEST(Picture, DrawsNothingWhereThereIsNoPlace) {
  const PictureFolder folder;
  folder.writePlain("red", 4, 4, "#ff0000");
  const auto picture = Picture::imageNamed("red");
  QImage image = white(4, 4);
  QPainter painter(&image);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  for (const QRectF &target :
       {QRectF(nan, 0.0, 4.0, 4.0), QRectF(0.0, infinity, 4.0, 4.0), QRectF(-1e30, 0.0, 4.0, 4.0),
        QRectF(0.0, 0.0, infinity, 4.0), QRectF(0.0, 0.0, 0.0, 4.0), QRectF(2.0, 2.0, -2.0, 2.0)})
    picture->drawInRect(painter, target);
  painter.end();
  EXPECT_EQ(image, white(4, 4));
}

}  // namespace
}  // namespace orvane::test
