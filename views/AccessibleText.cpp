#include "views/AccessibleText.h"

namespace orvane {

void *AccessibleText::interface_cast(QAccessible::InterfaceType type) {
  if (type == QAccessible::TextInterface)
    return static_cast<QAccessibleTextInterface *>(this);
  return QAccessibleWidget::interface_cast(type);
}

QString AccessibleText::text(int startOffset, int endOffset) const {
  return text(QAccessible::Value).mid(startOffset, endOffset - startOffset);
}

int AccessibleText::characterCount() const {
  return static_cast<int>(text(QAccessible::Value).size());
}

QRect AccessibleText::characterRect(int offset) const {
  return offset >= 0 && offset < characterCount() ? rect() : QRect();
}

int AccessibleText::offsetAtPoint(const QPoint &point) const {
  return rect().contains(point) && characterCount() > 0 ? 0 : -1;
}

void AccessibleText::selection(int /*index*/, int *startOffset, int *endOffset) const {
  *startOffset = *endOffset = 0;
}

QString AccessibleText::attributes(int /*offset*/, int *startOffset, int *endOffset) const {
  *startOffset = 0;
  *endOffset = characterCount();
  return {};
}

}  // namespace orvane
