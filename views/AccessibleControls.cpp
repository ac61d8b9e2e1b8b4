#include "views/AccessibleControls.h"

#include <utility>

#include <QAbstractItemView>
#include <QEvent>

#include "views/AccessibleText.h"
#include "views/AutoResizeBox.h"
#include "views/AutoResizeImageView.h"
#include "views/AutoResizePopUpButton.h"
#include "views/AutoResizeTextField.h"
#include "views/ContentView.h"

namespace orvane {
namespace {

using Relations = QVector<QPair<QAccessibleInterface *, QAccessible::Relation>>;

bool isDecoration(QObject *object) {
  const auto *field = qobject_cast<AutoResizeTextField *>(object);
  return qobject_cast<AutoResizeBox *>(object) || qobject_cast<AutoResizeImageView *>(object) ||
         (field != nullptr && field->isDecoration());
}

// By the view, which is too small to show it; a window may still be growing to the view's size.
bool isCutOff(const QWidget &control) {
  return control.isVisible() && !control.parentWidget()->rect().intersects(control.geometry());
}

QObjectList shownControls(const QWidget &view) {
  QObjectList controls;
  for (QObject *child : view.children()) {
    if (child->isWidgetType() && !isDecoration(child) && !isCutOff(*static_cast<QWidget *>(child)))
      controls.append(child);
  }
  return controls;
}

// Tells of the controls that come and go with the size of a view.
class ControlWatch : public QObject {
 public:
  explicit ControlWatch(QWidget &view) : mView(view), mShown(shownControls(view)) {
    view.installEventFilter(this);
  }

 protected:
  bool eventFilter(QObject * /*watched*/, QEvent *event) override {
    // The controls are not laid out yet.
    if (event->type() == QEvent::Resize || event->type() == QEvent::Show)
      QMetaObject::invokeMethod(this, &ControlWatch::tell, Qt::QueuedConnection);
    return false;
  }

 private:
  void tell() {
    const QObjectList before = std::exchange(mShown, shownControls(mView));
    for (QObject *child : mView.children()) {
      if (before.contains(child) == mShown.contains(child))
        continue;
      QAccessibleEvent event(child, mShown.contains(child) ? QAccessible::ObjectCreated
                                                           : QAccessible::ObjectDestroyed);
      QAccessible::updateAccessibility(&event);
    }
  }

  QWidget &mView;
  QObjectList mShown;
};

class AccessibleContentView : public QAccessibleWidget {
 public:
  explicit AccessibleContentView(ContentView &view) : QAccessibleWidget(&view), mWatch(view) {}

  int childCount() const override { return static_cast<int>(controls().size()); }
  QAccessibleInterface *child(int index) const override {
    return QAccessible::queryAccessibleInterface(controls().value(index));
  }
  int indexOfChild(const QAccessibleInterface *child) const override {
    return child != nullptr ? static_cast<int>(controls().indexOf(child->object())) : -1;
  }

 private:
  QObjectList controls() const { return shownControls(*widget()); }

  ControlWatch mWatch;
};

class AccessibleTextField : public AccessibleText {
 public:
  using AccessibleText::text;

  explicit AccessibleTextField(AutoResizeTextField &field)
      : AccessibleText(&field, QAccessible::EditableText), mField(field) {}

  QAccessible::Role role() const override {
    return mField.buddyControl() != nullptr ? QAccessible::StaticText : QAccessible::EditableText;
  }
  QAccessible::State state() const override {
    QAccessible::State state = AccessibleText::state();
    state.readOnly = true;
    return state;
  }
  QString text(QAccessible::Text kind) const override {
    const bool isName = kind == QAccessible::Name && mField.buddyControl() != nullptr;
    return isName || kind == QAccessible::Value ? mField.accessibleText()
                                                : AccessibleText::text(kind);
  }
  Relations relations(QAccessible::Relation match) const override {
    Relations relations = AccessibleText::relations(match);
    QWidget *control = mField.buddyControl();
    if (control != nullptr && match & QAccessible::Labelled)
      relations.append({QAccessible::queryAccessibleInterface(control), QAccessible::Labelled});
    return relations;
  }

 private:
  const AutoResizeTextField &mField;
};

// The toolkit's own one is named by the selected title.
class AccessiblePopUpButton : public AccessibleText {
 public:
  using AccessibleText::text;

  explicit AccessiblePopUpButton(AutoResizePopUpButton &button)
      : AccessibleText(&button, QAccessible::ComboBox), mButton(button) {}

  int childCount() const override { return 1; }
  QAccessibleInterface *child(int index) const override {
    return index == 0 ? QAccessible::queryAccessibleInterface(mButton.view()) : nullptr;
  }
  int indexOfChild(const QAccessibleInterface *child) const override {
    return child != nullptr && child->object() == mButton.view() ? 0 : -1;
  }

  QString text(QAccessible::Text kind) const override {
    return kind == QAccessible::Value ? mButton.titleOfSelectedItem() : AccessibleText::text(kind);
  }
  QAccessible::State state() const override {
    QAccessible::State state = AccessibleText::state();
    state.expandable = true;
    state.expanded = mButton.view()->isVisible();
    return state;
  }

  QStringList actionNames() const override {
    return QStringList(showMenuAction()) + AccessibleText::actionNames();
  }
  void doAction(const QString &name) override {
    if (name != showMenuAction())
      AccessibleText::doAction(name);
    else if (mButton.view()->isVisible())
      mButton.hidePopup();
    else if (mButton.isEnabled())
      mButton.showPopup();
  }

 private:
  AutoResizePopUpButton &mButton;
};

QAccessibleInterface *accessibleInterface(const QString & /*name*/, QObject *object) {
  if (auto *view = qobject_cast<ContentView *>(object))
    return new AccessibleContentView(*view);
  if (auto *button = qobject_cast<AutoResizePopUpButton *>(object))
    return new AccessiblePopUpButton(*button);
  auto *field = qobject_cast<AutoResizeTextField *>(object);
  return field != nullptr && !field->isEditable() ? new AccessibleTextField(*field) : nullptr;
}

}  // namespace

void installAccessibleControls() {
  QAccessible::installFactory(&accessibleInterface);
}

}  // namespace orvane
