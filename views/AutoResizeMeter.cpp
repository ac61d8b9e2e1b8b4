#include "views/AutoResizeMeter.h"

namespace orvane {

AutoResizeMeter::AutoResizeMeter(QWidget *parent)
    : Zoomed(parent), AccessibleMeter(static_cast<QWidget &>(*this), 0.0, 100.0) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
}

void AutoResizeMeter::setState(const QString &state) {
  // Even the same one would be announced as a change.
  if (state != accessibleDescription())
    setAccessibleDescription(state);
}

}  // namespace orvane
