#include "views/AutoResizePopUpButton.h"

#include <algorithm>

#include <QScopedValueRollback>
#include <QSignalBlocker>
#include <QStandardItemModel>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QWheelEvent>

namespace orvane {
namespace {

constexpr const char *kDivider = "-";

}  // namespace

AutoResizePopUpButton::AutoResizePopUpButton(QWidget *parent) : Zoomed(parent) {
  setFocusPolicy(Qt::StrongFocus);
  connect(this, &QComboBox::activated, this, &AutoResizePopUpButton::action);
  connect(this, &QComboBox::currentTextChanged, this, [this] { update(); });
  // Also for the items that a description brings.
  connect(model(), &QAbstractItemModel::rowsInserted, this,
          [this](const QModelIndex &, int first, int last) {
            for (int index = first; index <= last; ++index) {
              if (itemText(index) != QLatin1String(kDivider))
                continue;
              // By this the toolkit knows a divider.
              setItemData(index, QStringLiteral("separator"), Qt::AccessibleDescriptionRole);
              if (auto *items = qobject_cast<QStandardItemModel *>(model()))
                items->item(index)->setFlags(Qt::NoItemFlags);
              setItemText(index, QString());
            }
          });
}

void AutoResizePopUpButton::removeAllItems() {
  const QSignalBlocker blocker(this);
  clear();
  update();
}

void AutoResizePopUpButton::insertItemWithTitle(const QString &title, int index) {
  const QSignalBlocker blocker(this);
  insertItem(index, title);
  update();
}

int AutoResizePopUpButton::indexOfItemWithTitle(const QString &title) const {
  return findText(title, Qt::MatchExactly | Qt::MatchCaseSensitive);
}

void AutoResizePopUpButton::selectItemAtIndex(int index) {
  const QSignalBlocker blocker(this);
  setCurrentIndex(index);
  update();
}

void AutoResizePopUpButton::setToolTipAtIndex(const QString &toolTip, int index) {
  setItemData(index, toolTip, Qt::ToolTipRole);
}

QString AutoResizePopUpButton::toolTipAtIndex(int index) const {
  return itemData(index, Qt::ToolTipRole).toString();
}

void AutoResizePopUpButton::initStyleOption(QStyleOptionComboBox *option) const {
  QComboBox::initStyleOption(option);
  if (!mIsPlacingList)
    useBounds(*option);
}

void AutoResizePopUpButton::showPopup() {
  QFont font = this->font();
  font.setPixelSize(
      qRound(QFontInfo(font).pixelSize() * std::max(1.0, static_cast<double>(scale()))));
  for (int index = 0; index < count(); ++index)
    setItemData(index, font, Qt::FontRole);
  // The list opens where the button is seen, so now its frame on the screen counts.
  const QScopedValueRollback placing(mIsPlacingList, true);
  Zoomed::showPopup();
}

void AutoResizePopUpButton::wheelEvent(QWheelEvent *event) {
  event->ignore();
}

}  // namespace orvane
