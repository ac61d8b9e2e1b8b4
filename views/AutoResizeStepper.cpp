#include "views/AutoResizeStepper.h"

#include <algorithm>
#include <cmath>

#include <QLineEdit>
#include <QStyleOptionButton>
#include <QStyleOptionSpinBox>

namespace orvane {

// The toolkit's spin box brings the stepping by mouse, with its repetition, by keys and by wheel.
AutoResizeStepper::AutoResizeStepper(QWidget *parent) : Zoomed(parent) {
  setFocusPolicy(Qt::StrongFocus);
  // The menu is the text's.
  setContextMenuPolicy(Qt::NoContextMenu);
  lineEdit()->setReadOnly(true);
  lineEdit()->hide();
}

void AutoResizeStepper::setFloatValue(float value) {
  const float clamped =
      std::fmin(std::fmax(value, static_cast<float>(mMinimum)), static_cast<float>(mMaximum));
  if (clamped == mValue)
    return;
  mValue = clamped;
  // Assistive programs read the text, too.
  lineEdit()->setText(QString::number(this->value(), 'g', 7));
  update();
}

void AutoResizeStepper::setMinimum(double minimum) {
  mMinimum = minimum;
  setFloatValue(mValue);
}

void AutoResizeStepper::setMaximum(double maximum) {
  mMaximum = maximum;
  setFloatValue(mValue);
}

void AutoResizeStepper::chooseValue(double value) {
  const float before = mValue;
  setFloatValue(static_cast<float>(value));
  if (mValue != before)
    emit action();
}

void AutoResizeStepper::stepBy(int steps) {
  chooseValue(value() + steps * mIncrement);
}

QAbstractSpinBox::StepEnabled AutoResizeStepper::stepEnabled() const {
  StepEnabled enabled = StepNone;
  if (mValue < static_cast<float>(mMaximum))
    enabled |= StepUpEnabled;
  if (mValue > static_cast<float>(mMinimum))
    enabled |= StepDownEnabled;
  return enabled;
}

// Each arrow takes half of the bounds.
QRect AutoResizeStepper::arrowRect(QStyle::SubControl arrow) const {
  QRect rect = bounds().toRect();
  const int middle = rect.height() / 2;
  if (arrow == QStyle::SC_SpinBoxUp)
    rect.setHeight(middle);
  else
    rect.setTop(middle);
  return rect;
}

// The style keeps room for a text beside its arrows, so the toolkit's code is told the middle of
// the style's arrow for a point in ours.
QPointF AutoResizeStepper::placeInBounds(const QPointF &point) const {
  const QPointF place = Zoomed::placeInBounds(point);
  QStyleOptionSpinBox option;
  initStyleOption(&option);
  for (const auto arrow : {QStyle::SC_SpinBoxUp, QStyle::SC_SpinBoxDown}) {
    if (QRectF(arrowRect(arrow)).contains(place))
      return style()->subControlRect(QStyle::CC_SpinBox, &option, arrow, this).center();
  }
  return place;
}

void AutoResizeStepper::initStyleOption(QStyleOptionSpinBox *option) const {
  QAbstractSpinBox::initStyleOption(option);
  useBounds(*option);
}

void AutoResizeStepper::paintEvent(QPaintEvent *) {
  QPainter painter(this);
  QStyleOptionSpinBox option;
  initStyleOption(&option);
  drawArrow(painter, option, QStyle::SC_SpinBoxUp);
  drawArrow(painter, option, QStyle::SC_SpinBoxDown);
}

void AutoResizeStepper::drawArrow(QPainter &painter, const QStyleOptionSpinBox &stepper,
                                  QStyle::SubControl arrow) const {
  const bool isUp = arrow == QStyle::SC_SpinBoxUp;
  QStyleOptionButton button;
  button.QStyleOption::operator=(stepper);
  button.rect = arrowRect(arrow);
  const bool isActive = stepper.activeSubControls.testFlag(arrow);
  button.state.setFlag(QStyle::State_MouseOver,
                       isActive && stepper.state.testFlag(QStyle::State_MouseOver));
  button.state.setFlag(QStyle::State_Sunken,
                       isActive && stepper.state.testFlag(QStyle::State_Sunken));
  button.state.setFlag(QStyle::State_Raised, !button.state.testFlag(QStyle::State_Sunken));
  style()->drawPrimitive(QStyle::PE_PanelButtonCommand, &button, &painter, this);

  const int side = std::min(button.rect.width(), button.rect.height());
  const QRect place(QPoint(), QSize(side, side) * 2 / 3);
  button.rect = place.translated(button.rect.center() - place.center());
  button.state.setFlag(QStyle::State_Enabled,
                       stepper.stepEnabled.testFlag(isUp ? StepUpEnabled : StepDownEnabled) &&
                           stepper.state.testFlag(QStyle::State_Enabled));
  style()->drawPrimitive(isUp ? QStyle::PE_IndicatorArrowUp : QStyle::PE_IndicatorArrowDown,
                         &button, &painter, this);
}

}  // namespace orvane
