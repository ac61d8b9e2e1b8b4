#include "tests/desktop/Screen.h"

#include <QDir>
#include <cstring>
#include <memory>
// After the others, whose names its macros would replace.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace orvane::test {

QRect Screen::bounds() const {
  ::Display *display = mConnection.get();
  const int screen = DefaultScreen(display);
  return {0, 0, DisplayWidth(display, screen), DisplayHeight(display, screen)};
}

QImage Screen::image(const QRect &rect) const {
  const QRect part = rect.intersected(bounds());
  if (part.isEmpty())
    return {};
  ::Display *display = mConnection.get();
  const auto destroy = [](XImage *image) { XDestroyImage(image); };
  const std::unique_ptr<XImage, decltype(destroy)> pixels(
      XGetImage(display, DefaultRootWindow(display), part.x(), part.y(),
                static_cast<unsigned>(part.width()), static_cast<unsigned>(part.height()),
                AllPlanes, ZPixmap),
      destroy);
  if (!pixels || pixels->bits_per_pixel != 32)
    return {};
  QImage image(part.size(), QImage::Format_RGB32);
  for (int y = 0; y < part.height(); ++y)
    std::memcpy(image.scanLine(y), pixels->data + y * pixels->bytes_per_line,
                static_cast<std::size_t>(part.width()) * sizeof(QRgb));
  return image;
}

QColor Screen::pixel(const QPoint &place) const {
  return meanColor({place, QSize(1, 1)});
}

QColor Screen::meanColor(const QRect &rect) const {
  const QImage part = image(rect);
  if (part.isNull())
    return {};
  qint64 red = 0;
  qint64 green = 0;
  qint64 blue = 0;
  for (int y = 0; y < part.height(); ++y) {
    for (int x = 0; x < part.width(); ++x) {
      const QRgb color = part.pixel(x, y);
      red += qRed(color);
      green += qGreen(color);
      blue += qBlue(color);
    }
  }
  const qint64 count = qint64{part.width()} * part.height();
  return {static_cast<int>(red / count), static_cast<int>(green / count),
          static_cast<int>(blue / count)};
}

bool Screen::save(const std::string &name, const QRect &rect) const {
  const QString folder =
      qEnvironmentVariable("ORVANE_SCREENSHOTS", QStringLiteral(ORVANE_SCREENSHOTS_DIR));
  return QDir().mkpath(folder) && image(rect.isNull() ? bounds() : rect)
                                      .save(folder + QLatin1Char('/') +
                                            QString::fromStdString(name) + QStringLiteral(".png"));
}

}  // namespace orvane::test
