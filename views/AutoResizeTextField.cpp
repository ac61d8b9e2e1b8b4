#include "views/AutoResizeTextField.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <locale>
#include <optional>
#include <sstream>

#include <QAccessible>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QRegularExpression>
#include <QShortcut>
#include <QStyleOptionFrame>

#include "views/AccessibleControls.h"
#include "views/AccessibleSilence.h"
#include "views/TabularText.h"

namespace orvane {
namespace {

// The part of the text that reads as a number, read as the type wants it, in every locale the same.
// Too large a number becomes infinite or, if there is no such, the largest.
template <typename Number>
Number leadingNumber(const QString &text, const char *pattern) {
  const QRegularExpression number{QLatin1String(pattern)};
  std::istringstream stream(number.match(text).captured(1).toStdString());
  stream.imbue(std::locale::classic());
  Number value{};
  stream >> value;
  if constexpr (std::numeric_limits<Number>::has_infinity) {
    if (stream.fail() && value != Number{})
      value = std::copysign(std::numeric_limits<Number>::infinity(), value);
  }
  return value;
}

}  // namespace

AutoResizeTextField::AutoResizeTextField(QWidget *parent) : Zoomed(parent) {
  installAccessibleControls();
  setEditable(false);
  connect(this, &QLineEdit::textEdited, this, [this] { mIsEdited = true; });
  connect(this, &QLineEdit::returnPressed, this, &AutoResizeTextField::endEditing);
  for (QObject *part : children())
    part->installEventFilter(this);
}

void AutoResizeTextField::setEditable(bool editable) {
  setReadOnly(!editable);
  // The toolkit keeps accessible interfaces, and may have one of the other kind of field.
  QAccessible::deleteAccessibleInterface(
      QAccessible::uniqueId(QAccessible::queryAccessibleInterface(this)));
  setFrame(editable);
  setFocusPolicy(editable ? Qt::StrongFocus : Qt::NoFocus);
  setAcceptDrops(editable);
  setAttribute(Qt::WA_InputMethodEnabled, editable);
  update();
}

void AutoResizeTextField::setBuddy(const QString &name) {
  mBuddy = name;
  const QKeySequence mnemonic = QKeySequence::mnemonic(text());
  if (!mnemonic.isEmpty())
    connect(new QShortcut(mnemonic, this), &QShortcut::activated, this,
            &AutoResizeTextField::focusBuddy);
}

QWidget *AutoResizeTextField::buddyControl() const {
  return mBuddy.isEmpty() || parentWidget() == nullptr
             ? nullptr
             : parentWidget()->findChild<QWidget *>(mBuddy, Qt::FindDirectChildrenOnly);
}

void AutoResizeTextField::focusBuddy() const {
  QWidget *control = buddyControl();
  if (control != nullptr && control->isEnabled() && !control->visibleRegion().isEmpty())
    control->setFocus(Qt::ShortcutFocusReason);
}

QString AutoResizeTextField::accessibleText() const {
  if (!mAccessibleText.isEmpty())
    return mAccessibleText;
  return mBuddy.isEmpty() ? text() : text().remove(QLatin1Char('&'));
}

void AutoResizeTextField::setAccessibleText(const QString &text) {
  const QString before = accessibleText();
  mAccessibleText = text;
  tellChangeFrom(before);
}

void AutoResizeTextField::setStringValue(const QString &value) {
  if (value == text())
    return;
  if (isEditable()) {
    setText(value);
    return;
  }
  const QString before = accessibleText();
  {
    // The toolkit would tell of a cursor, which a label has not, and of signs that are read in
    // words.
    const AccessibleSilence silence;
    setText(value);
  }
  tellChangeFrom(before);
}

void AutoResizeTextField::setVisible(bool visible) {
  std::optional<AccessibleSilence> silence;
  if (mIsDecoration)
    silence.emplace();
  Zoomed::setVisible(visible);
}

void AutoResizeTextField::tellChangeFrom(const QString &before) {
  if (mIsDecoration || accessibleText() == before)
    return;
  QAccessibleTextUpdateEvent event(this, 0, before, accessibleText());
  QAccessible::updateAccessibility(&event);
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

void AutoResizeTextField::focusInEvent(QFocusEvent *event) {
  mHasKeyOfItsOwn = false;
  Zoomed::focusInEvent(event);
}

// The key that was held down when the field got the keyboard was meant for something else.
void AutoResizeTextField::keyPressEvent(QKeyEvent *event) {
  if (event->isAutoRepeat() && !mHasKeyOfItsOwn)
    return;
  mHasKeyOfItsOwn = true;
  Zoomed::keyPressEvent(event);
}

// Another window, a menu or a list takes the keyboard for a while only: the typing goes on
// afterwards. The toolkit's own signal would not come again then.
void AutoResizeTextField::focusOutEvent(QFocusEvent *event) {
  Zoomed::focusOutEvent(event);
  const bool isPause = event->reason() == Qt::ActiveWindowFocusReason ||
                       event->reason() == Qt::MenuBarFocusReason ||
                       event->reason() == Qt::PopupFocusReason;
  if (mIsEdited && !isPause)
    endEditing();
}

void AutoResizeTextField::endEditing() {
  mIsEdited = false;
  emit action();
}

void AutoResizeTextField::initStyleOption(QStyleOptionFrame *option) const {
  QLineEdit::initStyleOption(option);
  useBounds(*option);
}

// The toolkit's part that makes the text cursor blink updates it where it would be without a zoom.
bool AutoResizeTextField::eventFilter(QObject *watched, QEvent *event) {
  if (event->type() == QEvent::Timer)
    update();
  return Zoomed::eventFilter(watched, event);
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
  if (mIsTabular) {
    drawTabularText(painter, bounds(), place, text());
    return;
  }
  int flags = static_cast<int>(place) | Qt::TextDontClip | Qt::TextSingleLine;
  if (!mBuddy.isEmpty())
    flags |= Qt::TextShowMnemonic;
  painter.drawText(bounds(), flags, text());
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
