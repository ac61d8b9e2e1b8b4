// A text: a plain label, or, when editable, a field to type in. Main thread.
#pragma once

#include <QLineEdit>
#include <QString>

#include "views/Zoomed.h"

namespace orvane {

class AutoResizeTextField : public Zoomed<QLineEdit> {
  Q_OBJECT
  Q_PROPERTY(bool editable READ isEditable WRITE setEditable)
  Q_PROPERTY(int fontPixelSize READ fontPixelSize WRITE setFontPixelSize)
  Q_PROPERTY(QString buddy READ buddy WRITE setBuddy)
  // Its figures are all as wide as the widest.
  Q_PROPERTY(bool tabular READ isTabular WRITE setTabular)
  // Assistive programs do not find it, because another control tells them what it shows.
  Q_PROPERTY(bool decoration READ isDecoration WRITE setDecoration)

 public:
  explicit AutoResizeTextField(QWidget *parent = nullptr);

  bool isEditable() const { return !isReadOnly(); }
  void setEditable(bool editable);

  // The name of the control in the same view that this is the label of. Alt with the letter behind
  // the "&" of the text, which it must have by then, gives that control the keyboard if it can be
  // seen.
  QString buddy() const { return mBuddy; }
  void setBuddy(const QString &name);
  // Null when there is none.
  QWidget *buddyControl() const;

  bool isDecoration() const { return mIsDecoration; }
  void setDecoration(bool isDecoration) { mIsDecoration = isDecoration; }

  bool isTabular() const { return mIsTabular; }
  void setTabular(bool isTabular) { mIsTabular = isTabular; }

  // What assistive programs read: the text without its "&", unless it is given one of their own.
  QString accessibleText() const;
  void setAccessibleText(const QString &text);

  QString stringValue() const { return text(); }
  // The text it already shows is not drawn again. Assistive programs are told of a change of what
  // they read, once.
  void setStringValue(const QString &value);
  // The number that the text begins with after white space, else 0. A float is rounded once; a
  // number that is too large reads as infinity, a whole one as the largest.
  float floatValue() const;
  int intValue() const;
  // The shortest decimal text that reads back as the same number.
  void setFloatValue(float value);
  void setIntValue(int value) { setStringValue(QString::number(value)); }

  void setVisible(bool visible) override;
  QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

 signals:
  // The user has ended editing, with Return or by leaving the field.
  void action();

 protected:
  bool event(QEvent *event) override;
  bool eventFilter(QObject *watched, QEvent *event) override;
  void focusInEvent(QFocusEvent *event) override;
  void focusOutEvent(QFocusEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;
  void paintEvent(QPaintEvent *event) override;
  void initStyleOption(QStyleOptionFrame *option) const override;
  void relayoutEnded() override;

 private:
  void focusBuddy() const;
  void endEditing();
  void tellChangeFrom(const QString &before);

  QString mBuddy;
  QString mAccessibleText;
  bool mIsDecoration = false;
  bool mIsTabular = false;
  bool mHasKeyOfItsOwn = false;  // pressed since it got the keyboard
  bool mIsEdited = false;        // by the user, since editing last ended
};

}  // namespace orvane
