// The controller's window layouts: the full one and the collapsed one, and what the user may make
// of their size.
#include "app/Controller.h"
#include "views/WindowGeometry.h"

namespace orvane {

void Controller::disclosureButton() {
  disclose();
}

void Controller::disclose() {
  disclosed = mDisclosureButton->state() != 0;
  if (disclosed) {
    updateTunerUI();
    setLevelMeter();
  } else {
    mWindow->makeFirstResponder(nullptr);
  }
  takeLayout();
  if (disclosed)
    mWindow->makeFirstResponder(mReferencePitchText);
}

void Controller::takeLayout() {
  const QSizeF collapsed = mUndisclosedSizeBox->bounds().size();
  const double layoutHeight = disclosed ? mWindow->contentMinSize().height() : collapsed.height();
  mWindow->setLayoutSize({collapsed.width(), layoutHeight});
  const QRectF content = mWindow->contentRectForFrameRect(mWindow->frame());
  const QRectF disclosedContent = disclosedContentRect(content, collapsed.width(), layoutHeight);
  mWindow->setFrame(frameFittedToScreen(mWindow->frameRectForContentRect(disclosedContent),
                                        mWindow->visibleFrame().height()),
                    true);
  mWindow->setContentAspectRatio(disclosedContent.size());
}

// How high the menu bar is depends on the desktop, so the window's size in the description is only
// near the one that its content asks for.
void Controller::takeOriginalSize() {
  const QSizeF size = mContentView->size();
  mWindow->setContentMinSize(size);
  mWindow->setLayoutSize(size);
  connect(mWindow, &Window::restored, this, &Controller::takeLayout);
  // Where the window stands is for the desktop to say.
  mWindow->resize(mWindow->frameRectForContentRect({QPointF(), size}).size().toSize());
}

void Controller::shrinkToCollapsedLayout() {
  const QSizeF collapsed = mUndisclosedSizeBox->bounds().size();
  mWindow->setLayoutSize(collapsed);
  const QRectF content = mWindow->contentRectForFrameRect(mWindow->frame());
  mWindow->setFrame(
      mWindow->frameRectForContentRect(collapsedStartContentRect(content, collapsed)));
}

QSizeF Controller::windowWillResize(Window &window, QSizeF toSize) const {
  return resizedFrameSize(toSize, window.minSize(), window.resizeModifiers());
}

}  // namespace orvane
