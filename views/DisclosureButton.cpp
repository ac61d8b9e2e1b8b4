#include "views/DisclosureButton.h"

#include <QAccessibleWidget>
#include <QMouseEvent>

namespace orvane {
namespace {

class AccessibleDisclosureButton : public QAccessibleWidget {
 public:
  explicit AccessibleDisclosureButton(DisclosureButton &button)
      : QAccessibleWidget(&button, QAccessible::CheckBox), mButton(button) {}

  QAccessible::State state() const override {
    QAccessible::State state = QAccessibleWidget::state();
    state.checkable = true;
    state.checked = mButton.state() != 0;
    return state;
  }
  QStringList actionNames() const override {
    return QStringList(toggleAction()) + QAccessibleWidget::actionNames();
  }
  void doAction(const QString &name) override {
    if (name == toggleAction() && mButton.isEnabled())
      mButton.performClick();
    else
      QAccessibleWidget::doAction(name);
  }

 private:
  DisclosureButton &mButton;
};

QAccessibleInterface *accessibleInterface(const QString & /*name*/, QObject *object) {
  auto *button = qobject_cast<DisclosureButton *>(object);
  return button != nullptr ? new AccessibleDisclosureButton(*button) : nullptr;
}

}  // namespace

DisclosureButton::DisclosureButton(QWidget *parent) : Zoomed(parent) {
  // Installing it again changes nothing.
  QAccessible::installFactory(&accessibleInterface);
  setFocusPolicy(Qt::StrongFocus);
}

void DisclosureButton::performClick() {
  mCell.toggle(*this);
  mCell.sendAction(*this);
}

void DisclosureButton::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  mCell.drawWithFrame(painter, bounds(), *this);
}

void DisclosureButton::mousePressEvent(QMouseEvent *event) {
  if (event->button() != Qt::LeftButton)
    return;
  mIsTracking = true;
  event->setAccepted(mCell.trackMouse(*event, bounds(), *this, true));
}

void DisclosureButton::mouseMoveEvent(QMouseEvent *event) {
  if (mIsTracking)
    event->setAccepted(mCell.trackMouse(*event, bounds(), *this, true));
}

void DisclosureButton::mouseReleaseEvent(QMouseEvent *event) {
  if (!mIsTracking || event->button() != Qt::LeftButton)
    return;
  mIsTracking = false;
  event->setAccepted(mCell.trackMouse(*event, bounds(), *this, true));
}

void DisclosureButton::keyPressEvent(QKeyEvent *event) {
  const int key = event->key();
  const bool isPress = key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter;
  if (isPress && !event->isAutoRepeat())
    performClick();
  else if (!isPress)
    Zoomed::keyPressEvent(event);
}

void DisclosureButton::hideEvent(QHideEvent *event) {
  Zoomed::hideEvent(event);
  // The release of the button will not come.
  mIsTracking = false;
  mCell.cancelTracking(*this);
}

void DisclosureButton::changeEvent(QEvent *event) {
  Zoomed::changeEvent(event);
  if (event->type() == QEvent::ActivationChange)
    update();
}

}  // namespace orvane
