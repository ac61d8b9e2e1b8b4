#include "views/ContentView.h"

#include <QChildEvent>

#include "views/AccessibleControls.h"
#include "views/AutoResize.h"

namespace orvane {

ContentView::ContentView(QWidget *parent) : QWidget(parent) {
  installAccessibleControls();
}

// The toolkit tells a hidden view of its size only once it is shown, when the size has changed, and
// does not say then what it was.
void ContentView::childEvent(QChildEvent *event) {
  QWidget::childEvent(event);
  if (event->added() && !mIsLaidOut)
    mSize = size();
}

void ContentView::resizeEvent(QResizeEvent *event) {
  QWidget::resizeEvent(event);
  for (QObject *child : children()) {
    if (auto *control = dynamic_cast<AutoResize *>(child))
      control->resizeWithOldSuperviewSize(mSize);
  }
  mSize = size();
  mIsLaidOut = true;
}

}  // namespace orvane
