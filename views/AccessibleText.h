// The accessible interface of a view that shows a text nobody edits: what text(QAccessible::Value)
// gives can be read by assistive programs, character by character. Main thread.
#pragma once

#include <QAccessibleWidget>

namespace orvane {

class AccessibleText : public QAccessibleWidget, public QAccessibleTextInterface {
 public:
  using QAccessibleWidget::QAccessibleWidget;

  using QAccessibleWidget::text;
  void *interface_cast(QAccessible::InterfaceType type) override;

  QString text(int startOffset, int endOffset) const override;
  int characterCount() const override;
  // Of the whole view.
  QRect characterRect(int offset) const override;
  int offsetAtPoint(const QPoint &point) const override;
  // None of these changes anything: there is no cursor and no selection.
  int cursorPosition() const override { return 0; }
  void setCursorPosition(int /*position*/) override {}
  int selectionCount() const override { return 0; }
  void selection(int index, int *startOffset, int *endOffset) const override;
  void addSelection(int /*startOffset*/, int /*endOffset*/) override {}
  void removeSelection(int /*index*/) override {}
  void setSelection(int /*index*/, int /*startOffset*/, int /*endOffset*/) override {}
  void scrollToSubstring(int /*startIndex*/, int /*endIndex*/) override {}
  QString attributes(int offset, int *startOffset, int *endOffset) const override;
};

}  // namespace orvane
