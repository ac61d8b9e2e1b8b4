#include "views/AutoResizePopUpButton.h"

#include <algorithm>

#include <QAbstractItemView>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QScreen>
#include <QSignalBlocker>
#include <QStandardItemModel>
#include <QStyleOptionComboBox>
#include <QWheelEvent>

#include "views/AccessibleControls.h"

namespace orvane {

AutoResizePopUpButton::AutoResizePopUpButton(QWidget *parent) : Zoomed(parent) {
  installAccessibleControls();
  setFocusPolicy(Qt::StrongFocus);
  connect(this, &QComboBox::activated, this, &AutoResizePopUpButton::action);
  connect(model(), &QAbstractItemModel::rowsInserted, this,
          [this](const QModelIndex &, int first, int last) { makeDividers(first, last); });
}

void AutoResizePopUpButton::removeAllItems() {
  clear();
}

// The title comes after the item, so that a program's "-" is a title like others.
void AutoResizePopUpButton::insertItemWithTitle(const QString &title, int index) {
  const int at = std::clamp(index, 0, count());
  insertItem(at, QString());
  setItemText(at, title);
}

int AutoResizePopUpButton::indexOfItemWithTitle(const QString &title) const {
  return findText(title, Qt::MatchExactly | Qt::MatchCaseSensitive);
}

void AutoResizePopUpButton::selectItemAtIndex(int index) {
  setCurrentIndex(index);
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
  view()->setMinimumWidth(std::min(width, screen()->availableSize().width()));
  view()->viewport()->installEventFilter(this);
  const QScopedValueRollback opening(mIsOpening, true);
  Zoomed::showPopup();
}

// What the toolkit remembers of a press is a place on the screen, not one in the button.
bool AutoResizePopUpButton::event(QEvent *event) {
  return event->type() == QEvent::MouseButtonPress ? QComboBox::event(event) : Zoomed::event(event);
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
  if (mIsOpening)
    option->rect = rect();
}

}  // namespace orvane
