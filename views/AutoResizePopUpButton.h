// A pop-up menu of titles, of which one is selected. Main thread.
#pragma once

#include <QComboBox>

#include "views/Zoomed.h"

namespace orvane {

class AutoResizePopUpButton : public Zoomed<QComboBox> {
  Q_OBJECT
  Q_PROPERTY(int fontPixelSize READ fontPixelSize WRITE setFontPixelSize)

 public:
  explicit AutoResizePopUpButton(QWidget *parent = nullptr);

  // Items are counted from 0. None of these is an action. An item titled "-" is a divider: the user
  // cannot choose it.
  void removeAllItems();
  void addItemWithTitle(const QString &title) { insertItemWithTitle(title, numberOfItems()); }
  void insertItemWithTitle(const QString &title, int index);
  int numberOfItems() const { return count(); }
  // The first one with exactly that title, or -1.
  int indexOfItemWithTitle(const QString &title) const;
  QString itemTitleAtIndex(int index) const { return itemText(index); }
  QString titleOfSelectedItem() const { return currentText(); }
  void selectItemAtIndex(int index);
  // -1 when none is selected.
  int indexOfSelectedItem() const { return currentIndex(); }
  void setToolTipAtIndex(const QString &toolTip, int index);
  QString toolTipAtIndex(int index) const;

  void showPopup() override;

 signals:
  // The user has chosen an item, the selected one included.
  void action();

 protected:
  void wheelEvent(QWheelEvent *event) override;
  void initStyleOption(QStyleOptionComboBox *option) const override;

 private:
  bool mIsPlacingList = false;
};

}  // namespace orvane
