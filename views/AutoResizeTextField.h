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

 public:
  explicit AutoResizeTextField(QWidget *parent = nullptr);

  bool isEditable() const { return !isReadOnly(); }
  void setEditable(bool editable);

  QString stringValue() const { return text(); }
  // The text it already shows is not drawn again.
  void setStringValue(const QString &value);
  // The number that the text begins with after white space, else 0. A float is rounded once; a
  // number that is too large reads as the largest.
  float floatValue() const;
  int intValue() const;
  // The shortest decimal text that reads back as the same number.
  void setFloatValue(float value);
  void setIntValue(int value) { setStringValue(QString::number(value)); }

  QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

 signals:
  // The user has ended editing, with Return or by leaving the field.
  void action();

 protected:
  bool event(QEvent *event) override;
  void paintEvent(QPaintEvent *event) override;
  void initStyleOption(QStyleOptionFrame *option) const override;
  void relayoutEnded() override;
};

}  // namespace orvane
