// A user's hands, as the events that the toolkit makes of them. Places are in the control's own
// coordinates.
#pragma once

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QStringList>

namespace orvane::test {

inline void pressKey(QWidget &control, int key, const QString &text = {}) {
  control.setFocus();
  QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
  QApplication::sendEvent(&control, &press);
  QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
  QApplication::sendEvent(&control, &release);
}

// In place of what the field holds, without ending the editing.
inline void type(QLineEdit &field, const QString &text) {
  field.setFocus();
  field.selectAll();
  pressKey(field, Qt::Key_Delete);
  for (const QChar character : text)
    pressKey(field, Qt::Key_unknown, character);
}

inline void sendMouse(QWidget &control, QEvent::Type type, const QPointF &place) {
  const bool isMove = type == QEvent::MouseMove;
  const bool isUp = type == QEvent::MouseButtonRelease;
  QMouseEvent event(type, place, control.mapToGlobal(place), isMove ? Qt::NoButton : Qt::LeftButton,
                    isUp ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&control, &event);
}

inline void click(QWidget &control, const QPointF &place) {
  sendMouse(control, QEvent::MouseButtonPress, place);
  sendMouse(control, QEvent::MouseButtonRelease, place);
}

// Opens the menu and clicks on an item.
inline void choose(QComboBox &menu, int index) {
  click(menu, QRectF(menu.rect()).center());
  const QModelIndex item = menu.model()->index(index, menu.modelColumn());
  menu.view()->scrollTo(item);
  const QPointF place = QRectF(menu.view()->visualRect(item)).center();
  QWidget &list = *menu.view()->viewport();
  sendMouse(list, QEvent::MouseMove, place);
  click(list, place);
  menu.hidePopup();
}

}  // namespace orvane::test
