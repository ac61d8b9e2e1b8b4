// What the lamps and the needles tell without their colours: to everyone who sees colours
// differently, and on a grey screen. Luminance is relative, 0 black to 1 white; contrast is that of
// the Web Content Accessibility Guidelines 2.1, (lighter + 0.05) : (darker + 0.05).
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include "views/Picture.h"

namespace orvane::test {
namespace {

using Matrix = std::array<std::array<double, 3>, 3>;

// On linear red, green and blue. The three of a missing kind of cone: G. M. Machado, M. M.
// Oliveira, L. A. F. Fernandes, "A Physiologically-based Model for Simulation of Color Vision
// Deficiency", IEEE Transactions on Visualization and Computer Graphics 15 (6), 2009, severity 1.0.
struct Sight {
  const char *name;
  Matrix matrix;
};
constexpr std::array kSights{
    Sight{"normal", {{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}}},
    Sight{"grey", {{{0.2126, 0.7152, 0.0722}, {0.2126, 0.7152, 0.0722}, {0.2126, 0.7152, 0.0722}}}},
    Sight{"protanopia",
          {{{0.152286, 1.052583, -0.204868},
            {0.114503, 0.786281, 0.099216},
            {-0.003882, -0.048116, 1.051998}}}},
    Sight{"deuteranopia",
          {{{0.367322, 0.860646, -0.227968},
            {0.280085, 0.672501, 0.047413},
            {-0.011820, 0.042940, 0.968881}}}},
    Sight{"tritanopia",
          {{{1.255528, -0.076749, -0.178779},
            {-0.078411, 0.930809, 0.147602},
            {0.004733, 0.691367, 0.303900}}}},
};

double linear(double component) {
  return component <= 0.04045 ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
}

double luminance(const QColor &colour, const Sight &sight) {
  const std::array<double, 3> light{linear(static_cast<double>(colour.redF())),
                                    linear(static_cast<double>(colour.greenF())),
                                    linear(static_cast<double>(colour.blueF()))};
  std::array<double, 3> seen{};
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column)
      seen[row] += sight.matrix[row][column] * light[column];
    seen[row] = std::clamp(seen[row], 0.0, 1.0);
  }
  return 0.2126 * seen[0] + 0.7152 * seen[1] + 0.0722 * seen[2];
}

// As large as it is drawn in a window of the original size, upon a plain ground.
QImage drawn(const Picture &picture, const QColor &ground) {
  QImage image(picture.size().toSize(), QImage::Format_ARGB32_Premultiplied);
  image.fill(ground);
  QPainter painter(&image);
  picture.drawInRect(painter, image.rect());
  painter.end();
  return image;
}

// One of the program's pictures.
class Shown {
 public:
  explicit Shown(const char *name) : mPicture(Picture::imageNamed(QString::fromLatin1(name))) {
    if (mPicture)
      mShape = drawn(*mPicture, Qt::transparent);
  }

  bool exists() const { return mPicture != nullptr; }

  // Of the pixels that the picture covers for the most part.
  double meanLuminance(const QColor &ground, const Sight &sight) const {
    const QImage image = drawn(*mPicture, ground);
    double sum = 0.0;
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x) {
        if (mShape.pixelColor(x, y).alpha() < 128)
          continue;
        sum += luminance(image.pixelColor(x, y), sight);
        ++count;
      }
    return sum / count;
  }

  // In pixels.
  double coveredArea() const {
    double sum = 0.0;
    for (int y = 0; y < mShape.height(); ++y)
      for (int x = 0; x < mShape.width(); ++x)
        sum += static_cast<double>(mShape.pixelColor(x, y).alphaF());
    return sum;
  }

 private:
  std::shared_ptr<const Picture> mPicture;
  QImage mShape;
};

double contrast(double one, double other) {
  return (std::max(one, other) + 0.05) / (std::min(one, other) + 0.05);
}

struct Pair {
  const char *one;
  const char *other;
};

// The smallest over all kinds of sight, on a light ground and on a dark one.
double smallestContrast(const Pair &pair) {
  const Shown one(pair.one);
  const Shown other(pair.other);
  if (!one.exists() || !other.exists())
    return 0.0;
  double smallest = 21.0;
  for (const Sight &sight : kSights)
    for (const QColor &ground : {QColor(Qt::white), QColor(Qt::black)})
      smallest = std::min(
          smallest, contrast(one.meanLuminance(ground, sight), other.meanLuminance(ground, sight)));
  return smallest;
}

// How much less the smaller one covers, of what the larger one does.
double shapeDifference(const Pair &pair) {
  const double one = Shown(pair.one).coveredArea();
  const double other = Shown(pair.other).coveredArea();
  return std::abs(one - other) / std::max(one, other);
}

bool areToldApart(const Pair &pair) {
  return smallestContrast(pair) >= 1.5 || shapeDifference(pair) >= 0.2;
}

TEST(LampColours, ALitLampIsFarBrighterThanAnUnlitOne) {
  for (const Pair &pair : {Pair{"green16x16", "gray16x16"}, Pair{"yellow16x16", "gray16x16"},
                           Pair{"red16x16", "gray16x16"}, Pair{"red24x24", "gray24x24"},
                           Pair{"green28x28", "gray28x28"}, Pair{"blue28x28", "gray28x28"}})
    EXPECT_GE(smallestContrast(pair), 3.0) << pair.one;
}

TEST(LampColours, TheCentreLampInTuneIsToldFromItsOtherStates) {
  for (const Pair &pair : {Pair{"green28x28", "blue28x28"}, Pair{"green28x28", "gray28x28"},
                           Pair{"blue28x28", "gray28x28"}})
    EXPECT_TRUE(areToldApart(pair)) << pair.one << " and " << pair.other;
}

TEST(LampColours, TheNeedleInTuneIsToldFromTheOrdinaryOne) {
  EXPECT_TRUE(areToldApart({"intuneneedle", "tuningneedle"}));
}

}  // namespace
}  // namespace orvane::test
