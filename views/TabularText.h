// Text whose figures are all as wide as the widest of them, whatever the font has, so that a
// changing number stays where it is. So are its signs. Main thread.
#pragma once

#include <Qt>

class QPainter;
class QRectF;
class QString;

namespace orvane {

// One line, placed in rect as alignment tells, which it may leave. In the painter's font and pen.
void drawTabularText(QPainter &painter, const QRectF &rect, Qt::Alignment alignment,
                     const QString &text);

}  // namespace orvane
