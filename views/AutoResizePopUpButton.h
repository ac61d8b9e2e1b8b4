// A pop-up menu of titles, of which one is selected. A title too long for the button ends in "…"
// there, and the tool tip tells the whole. Main thread.
#pragma once

#include <optional>

#include <QComboBox>

#include "views/Zoomed.h"

namespace orvane {

class AutoResizePopUpButton : public Zoomed<QComboBox> {
  Q_OBJECT
  Q_PROPERTY(int fontPixelSize READ fontPixelSize WRITE setFontPixelSize)
  // Whether items titled "-" in the interface description are dividers: without a title, and not
  // for the user to choose.
  Q_PROPERTY(bool dividers READ hasDividers WRITE setHasDividers)

 public:
  explicit AutoResizePopUpButton(QWidget *parent = nullptr);

  bool hasDividers() const { return mHasDividers; }
  void setHasDividers(bool hasDividers) { mHasDividers = hasDividers; }

  // Items are counted from 0. None of these is an action.
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

  // The list opens over the button as it is seen, with a text at least as large.
  void showPopup() override;

 signals:
  // The user has chosen an item, the selected one included.
  void action();

 protected:
  bool event(QEvent *event) override;
  bool eventFilter(QObject *object, QEvent *event) override;
  void wheelEvent(QWheelEvent *event) override;
  void initStyleOption(QStyleOptionComboBox *option) const override;

 private:
  void makeDividers(int first, int last);
  // Of a change by the program, once it is done: see tell.
  void tellLater();
  // Tells assistive programs of the selected title, if it is another one.
  void tell();

  bool mHasDividers = false;
  bool mIsOpening = false;
  std::optional<QString> mToldTitle;  // while a change by the program has still to be told
};

}  // namespace orvane
