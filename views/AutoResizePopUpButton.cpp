#include "views/AutoResizePopUpButton.h"

#include <algorithm>
#include <utility>

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QScreen>
#include <QSignalBlocker>
#include <QStandardItemModel>
#include <QStyleOptionComboBox>
#include <QToolTip>
#include <QWheelEvent>

#include "views/AccessibleControls.h"
#include "views/AccessibleSilence.h"

namespace orvane {

AutoResizePopUpButton::AutoResizePopUpButton(QWidget *parent) : Zoomed(parent) {
  installAccessibleControls();
  setFocusPolicy(Qt::StrongFocus);
  connect(this, &QComboBox::activated, this, &AutoResizePopUpButton::action);
  connect(model(), &QAbstractItemModel::rowsInserted, this,
          [this](const QModelIndex &, int first, int last) { makeDividers(first, last); });
}

void AutoResizePopUpButton::removeAllItems() {
  tellLater();
  const AccessibleSilence silence;
  clear();
}

// The title comes after the item, so that a program's "-" is a title like others.
void AutoResizePopUpButton::insertItemWithTitle(const QString &title, int index) {
  const int at = std::clamp(index, 0, count());
  tellLater();
  const AccessibleSilence silence;
  insertItem(at, QString());
  setItemText(at, title);
}

int AutoResizePopUpButton::indexOfItemWithTitle(const QString &title) const {
  return findText(title, Qt::MatchExactly | Qt::MatchCaseSensitive);
}

void AutoResizePopUpButton::selectItemAtIndex(int index) {
  tellLater();
  const AccessibleSilence silence;
  setCurrentIndex(index);
}

// A menu that is filled anew shows several titles on the way to the one it ends with.
void AutoResizePopUpButton::tellLater() {
  if (mToldTitle)
    return;
  mToldTitle = titleOfSelectedItem();
  QMetaObject::invokeMethod(this, &AutoResizePopUpButton::tell, Qt::QueuedConnection);
}

void AutoResizePopUpButton::tell() {
  const QString before = *std::exchange(mToldTitle, std::nullopt);
  if (titleOfSelectedItem() == before)
    return;
  QAccessibleValueChangeEvent event(this, titleOfSelectedItem());
  QAccessible::updateAccessibility(&event);
}

void AutoResizePopUpButton::setToolTipAtIndex(const QString &toolTip, int index) {
  setItemData(index, toolTip, Qt::ToolTipRole);
}

QString AutoResizePopUpButton::toolTipAtIndex(int index) const {
  return itemData(index, Qt::ToolTipRole).toString();
}

void AutoResizePopUpButton::makeDividers(int first, int last) {
  for (int index = first; mHasDividers && index <= last; ++index) {
    if (itemText(index) != QLatin1String("-"))
      continue;
    setItemText(index, QString());
    // By this the toolkit knows a divider.
    setItemData(index, QStringLiteral("separator"), Qt::AccessibleDescriptionRole);
    qobject_cast<QStandardItemModel *>(model())->item(index)->setFlags(Qt::NoItemFlags);
  }
}

void AutoResizePopUpButton::showPopup() {
  QFont listFont = font();
  listFont.setPixelSize(
      qRound(QFontInfo(listFont).pixelSize() * std::max(1.0, static_cast<double>(scale()))));
  {
    // The items' own font is the only one that every style's list minds. The button has not
    // changed.
    const QSignalBlocker blocker(model());
    for (int index = 0; index < count(); ++index)
      setItemData(index, listFont, Qt::FontRole);
  }
  view()->doItemsLayout();
  // The toolkit measures the titles in the button's font.
  const QFontMetrics metrics(listFont);
  QSize widest(0, metrics.height());
  for (int index = 0; index < count(); ++index)
    widest.setWidth(std::max(widest.width(), metrics.horizontalAdvance(itemText(index))));
  QStyleOptionComboBox option;
  initStyleOption(&option);
  const int width = style()->sizeFromContents(QStyle::CT_ComboBox, &option, widest, this).width();
  const QMargins frame = view()->parentWidget()->contentsMargins();
  view()->setMinimumWidth(
      std::min(width, screen()->availableSize().width() - frame.left() - frame.right()));
  view()->viewport()->installEventFilter(this);
  const QScopedValueRollback opening(mIsOpening, true);
  Zoomed::showPopup();
}

bool AutoResizePopUpButton::event(QEvent *event) {
  switch (event->type()) {
    // What the toolkit remembers of a press is a place on the screen, not one in the button.
    case QEvent::MouseButtonPress:
      return QComboBox::event(event);
    case QEvent::ToolTip: {
      QStyleOptionComboBox option;
      initStyleOption(&option);
      if (option.currentText == titleOfSelectedItem())
        return Zoomed::event(event);
      // As rich text, which is broken into lines.
      QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(),
                         QStringLiteral("<qt>%1</qt>").arg(titleOfSelectedItem().toHtmlEscaped()),
                         this);
      return true;
    }
    default:
      return Zoomed::event(event);
  }
}

// The toolkit's list takes a click on a divider for one on the item the pointer was over before.
bool AutoResizePopUpButton::eventFilter(QObject *object, QEvent *event) {
  if (object == view()->viewport() && event->type() == QEvent::MouseButtonRelease) {
    const QPoint place = static_cast<QMouseEvent *>(event)->position().toPoint();
    const QModelIndex item = view()->indexAt(place);
    if (item.isValid() && !(item.flags() & Qt::ItemIsEnabled))
      return true;
  }
  return Zoomed::eventFilter(object, event);
}

void AutoResizePopUpButton::wheelEvent(QWheelEvent *event) {
  event->ignore();
}

void AutoResizePopUpButton::initStyleOption(QStyleOptionComboBox *option) const {
  QComboBox::initStyleOption(option);
  useBounds(*option);
  const QRect title =
      style()->subControlRect(QStyle::CC_ComboBox, option, QStyle::SC_ComboBoxEditField, this);
  // Styles leave a unit on either side of the title.
  option->currentText =
      option->fontMetrics.elidedText(option->currentText, Qt::ElideRight, title.width() - 2);
  if (mIsOpening)
    option->rect = rect();
}

}  // namespace orvane
