// The window as a whole at other sizes: what is drawn is what was drawn before, only finer.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include <QImage>

#include "tests/WindowLayouts.h"
#include "tests/app/ControllerRig.h"

namespace orvane::test {
namespace {

// What the content shows when it is as many times as wide as at first.
QImage contentAt(Controller &tuner, double zoom) {
  const QRectF content(QPointF(0, 0), QSizeF(kFullLayout) * zoom);
  tuner.mWindow->setFrame(tuner.mWindow->frameRectForContentRect(content));
  QApplication::processEvents();
  return tuner.mContentView->grab().toImage().convertToFormat(QImage::Format_RGB32);
}

// The mean over all colour channels, of 255, of squares of four by four original units: small
// enough to find a shifted control, large enough not to see how an edge falls upon the pixels.
double meanDifference(const QImage &one, const QImage &other) {
  const QSize squares = kFullLayout / 4;
  const auto coarse = [&squares](const QImage &image) {
    return image.scaled(squares, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  };
  const QImage first = coarse(one);
  const QImage second = coarse(other);
  double sum = 0.0;
  for (int y = 0; y < squares.height(); ++y) {
    for (int x = 0; x < squares.width(); ++x) {
      const QColor a = first.pixelColor(x, y);
      const QColor b = second.pixelColor(x, y);
      sum += std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) +
             std::abs(a.blue() - b.blue());
    }
  }
  return sum / (3.0 * squares.width() * squares.height());
}

// Over all pixels and colour channels, of 255.
int largestDifference(const QImage &one, const QImage &other) {
  int largest = 0;
  for (int y = 0; y < one.height(); ++y) {
    for (int x = 0; x < one.width(); ++x) {
      const QColor a = one.pixelColor(x, y);
      const QColor b = other.pixelColor(x, y);
      largest = std::max({largest, std::abs(a.red() - b.red()), std::abs(a.green() - b.green()),
                          std::abs(a.blue() - b.blue())});
    }
  }
  return largest;
}

TEST(ControllerZoomTest, AnotherZoomDiffersOnlyByTheFinerDrawing) {
  ControllerRig rig;
  Controller &tuner = rig.launch();
  // A change of size takes the focus, and its ring, from the control that has it.
  contentAt(tuner, 2.0);
  const QImage original = contentAt(tuner, 1.0);
  ASSERT_EQ(original.size(), kFullLayout);
  // Measured at most 0.95; the whole picture a single unit aside gives more than 3.3.
  constexpr double kFinerDrawing = 1.5;
  for (const double zoom : {1.5, 2.0, 3.0}) {
    SCOPED_TRACE(zoom);
    const QImage zoomed = contentAt(tuner, zoom);
    ASSERT_EQ(zoomed.size(), (QSizeF(kFullLayout) * zoom).toSize());
    EXPECT_LT(meanDifference(zoomed, original), kFinerDrawing);
  }
  EXPECT_GT(
      meanDifference(original.copy(1, 0, kFullLayout.width(), kFullLayout.height()), original),
      kFinerDrawing);
  EXPECT_GT(
      meanDifference(original.copy(0, 1, kFullLayout.width(), kFullLayout.height()), original),
      kFinerDrawing);
  // The toolkit smooths the edges of letters a little differently from time to time.
  const QImage again = contentAt(tuner, 1.0);
  ASSERT_EQ(again.size(), original.size());
  EXPECT_LE(largestDifference(again, original), 4);
}

}  // namespace
}  // namespace orvane::test
