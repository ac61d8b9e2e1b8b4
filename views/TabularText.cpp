#include "views/TabularText.h"

#include <algorithm>
#include <vector>

#include <QFontMetricsF>
#include <QPainter>
#include <QRectF>
#include <QString>

namespace orvane {
namespace {

const QString kFigures = QStringLiteral("0123456789");
const QString kSigns = QStringLiteral("+-±");

double widest(const QFontMetricsF &metrics, const QString &characters) {
  double width = 0.0;
  for (const QChar character : characters)
    width = std::max(width, metrics.horizontalAdvance(character));
  return width;
}

}  // namespace

void drawTabularText(QPainter &painter, const QRectF &rect, Qt::Alignment alignment,
                     const QString &text) {
  const QFontMetricsF metrics(painter.font(), painter.device());
  const double figure = widest(metrics, kFigures);
  const double sign = widest(metrics, kSigns);
  std::vector<double> widths;
  double width = 0.0;
  for (const QChar character : text) {
    widths.push_back(kFigures.contains(character) ? figure
                     : kSigns.contains(character) ? sign
                                                  : metrics.horizontalAdvance(character));
    width += widths.back();
  }
  double left = rect.left();
  if (alignment & Qt::AlignRight)
    left = rect.right() - width;
  else if (alignment & Qt::AlignHCenter)
    left = rect.center().x() - 0.5 * width;
  const int flags =
      static_cast<int>(alignment & Qt::AlignVertical_Mask) | Qt::TextDontClip | Qt::TextSingleLine;
  for (qsizetype i = 0; i < text.size(); ++i) {
    const double cell = widths[static_cast<std::size_t>(i)];
    // A sign stands close to the number.
    const int side = kSigns.contains(text[i]) ? Qt::AlignRight : Qt::AlignHCenter;
    painter.drawText(QRectF(left, rect.top(), cell, rect.height()), flags | side, text.mid(i, 1));
    left += cell;
  }
}

}  // namespace orvane
