#include "views/AutoResizeTextField.h"

#include <array>
#include <charconv>
#include <locale>
#include <sstream>

#include <QRegularExpression>
#include <QStyleOptionFrame>

namespace orvane {
namespace {

// The part of the text that reads as a number, read as the type wants it, in every locale the same.
// Too large a number becomes the largest.
template <typename Number>
Number leadingNumber(const QString &text, const char *pattern) {
  const QRegularExpression number{QLatin1String(pattern)};
  std::istringstream stream(number.match(text).captured(1).toStdString());
  stream.imbue(std::locale::classic());
  Number value{};
  stream >> value;
  return value;
}

}  // namespace

AutoResizeTextField::AutoResizeTextField(QWidget *parent) : Zoomed(parent) {
  setEditable(false);
  connect(this, &QLineEdit::editingFinished, this, &AutoResizeTextField::action);
}

void AutoResizeTextField::setEditable(bool editable) {
  setReadOnly(!editable);
  setFrame(editable);
  setFocusPolicy(editable ? Qt::StrongFocus : Qt::NoFocus);
  setAcceptDrops(editable);
  setAttribute(Qt::WA_InputMethodEnabled, editable);
  update();
}

void AutoResizeTextField::setStringValue(const QString &value) {
  if (value != text())
    setText(value);
}

float AutoResizeTextField::floatValue() const {
  return leadingNumber<float>(text(), "^\\s*([+-]?(?:\\d+\\.?\\d*|\\.\\d+)(?:[eE][+-]?\\d+)?)");
}

int AutoResizeTextField::intValue() const {
  return leadingNumber<int>(text(), "^\\s*([+-]?\\d+)");
}

void AutoResizeTextField::setFloatValue(float value) {
  std::array<char, 64> digits;
  const auto result =
      std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed);
  setStringValue(QString::fromLatin1(digits.data(), result.ptr - digits.data()));
}

void AutoResizeTextField::initStyleOption(QStyleOptionFrame *option) const {
  QLineEdit::initStyleOption(option);
  useBounds(*option);
}

bool AutoResizeTextField::event(QEvent *event) {
  switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::ContextMenu:
      // The text of a label cannot be selected; but the pointer shows its tool tip.
      if (!isEditable()) {
        event->ignore();
        return true;
      }
      break;
    default:
      break;
  }
  return Zoomed::event(event);
}

// A label's frame is made for the usual text and must not cut an unusual one, as the toolkit's
// field would.
void AutoResizeTextField::paintEvent(QPaintEvent *event) {
  if (isEditable()) {
    Zoomed::paintEvent(event);
    return;
  }
  QPainter painter(this);
  painter.setPen(palette().color(QPalette::WindowText));
  Qt::Alignment place = alignment();
  if (!(place & Qt::AlignVertical_Mask))
    place |= Qt::AlignVCenter;
  painter.drawText(bounds(), static_cast<int>(place) | Qt::TextDontClip | Qt::TextSingleLine,
                   text());
}

QVariant AutoResizeTextField::inputMethodQuery(Qt::InputMethodQuery query) const {
  const QVariant answer = QLineEdit::inputMethodQuery(query);
  if (query == Qt::ImCursorRectangle || query == Qt::ImAnchorRectangle)
    return zoom().mapRect(answer.toRectF());
  return answer;
}

void AutoResizeTextField::relayoutEnded() {
  if (!isEditable())
    return;
  if (QWidget *focused = window()->focusWidget())
    focused->clearFocus();
}

}  // namespace orvane
