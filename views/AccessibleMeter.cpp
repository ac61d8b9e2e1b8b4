#include "views/AccessibleMeter.h"

#include <algorithm>

#include <QAccessibleWidget>
#include <QVariant>
#include <QWidget>

namespace orvane {
namespace {

class MeterInterface : public QAccessibleWidget, public QAccessibleValueInterface {
 public:
  // Not as a progress bar, whose every change screen readers announce.
  MeterInterface(QWidget &widget, const AccessibleMeter &meter)
      : QAccessibleWidget(&widget, QAccessible::Indicator), mMeter(meter) {}

  void *interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::ValueInterface)
      return static_cast<QAccessibleValueInterface *>(this);
    return QAccessibleWidget::interface_cast(type);
  }
  QAccessible::State state() const override {
    QAccessible::State state = QAccessibleWidget::state();
    state.readOnly = true;
    return state;
  }

  QVariant currentValue() const override { return static_cast<double>(mMeter.value()); }
  void setCurrentValue(const QVariant & /*value*/) override {}
  QVariant minimumValue() const override { return mMeter.minimum(); }
  QVariant maximumValue() const override { return mMeter.maximum(); }
  QVariant minimumStepSize() const override { return 1.0; }

 private:
  const AccessibleMeter &mMeter;
};

QAccessibleInterface *accessibleInterface(const QString & /*name*/, QObject *object) {
  const auto *meter = dynamic_cast<AccessibleMeter *>(object);
  return meter != nullptr ? new MeterInterface(*static_cast<QWidget *>(object), *meter) : nullptr;
}

}  // namespace

AccessibleMeter::AccessibleMeter(QWidget &widget, double minimum, double maximum)
    : mWidget(widget), mMinimum(minimum), mMaximum(maximum) {
  // Installing it again changes nothing.
  QAccessible::installFactory(&accessibleInterface);
}

double AccessibleMeter::minimum() const {
  return std::min(mMinimum, static_cast<double>(mValue));
}

double AccessibleMeter::maximum() const {
  return std::max(mMaximum, static_cast<double>(mValue));
}

void AccessibleMeter::setValue(int value) {
  if (value == mValue)
    return;
  mValue = value;
  QAccessibleValueChangeEvent event(&mWidget, static_cast<double>(value));
  QAccessible::updateAccessibility(&event);
}

}  // namespace orvane
