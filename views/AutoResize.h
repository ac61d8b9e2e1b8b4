// The layout that the proportional controls share: a control zooms with the width of the view that
// encloses it and goes on drawing in its original coordinates, text and pictures included.
//
// Rectangles have the origin at the bottom left and double precision; the toolkit's widget occupies
// the frame rounded outwards to whole units. Main thread.
#pragma once

#include <QRectF>
#include <QSizeF>
#include <QTransform>

class QWidget;

namespace orvane {

class AutoResize {
 public:
  AutoResize(const AutoResize &) = delete;
  AutoResize &operator=(const AutoResize &) = delete;
  virtual ~AutoResize() = default;

  // Takes the frame that follows from the size of the enclosing view (0 by 0 without one) and from
  // the original: the frame and enclosing size (oldSize) of the first call, which is never
  // replaced, so that errors do not add up.
  void resizeWithOldSuperviewSize(const QSizeF &oldSize);

  QRectF frame() const;
  // (0, 0) and the original size, at every zoom.
  QRectF bounds() const;
  // 1 before the first relayout.
  float scale() const { return mScale; }

  // The size of the font before zooming, 0 when it was never set. Without hinting, so that the
  // text's width follows the zoom.
  int fontPixelSize() const { return mFontPixelSize; }
  void setFontPixelSize(int size);

 protected:
  // control must be the same object, and outlive this part of it.
  explicit AutoResize(QWidget &control) : mControl(control) {}

  // The end of each relayout.
  virtual void relayoutEnded() {}

  // From original coordinates, top left origin, to the widget's.
  QTransform zoom() const;

 private:
  QRectF mOriginalFrame;
  QSizeF mOriginalSuperviewSize;
  bool mIsOriginalSet = false;

  QWidget &mControl;
  QRectF mFrame;  // once the original is set
  float mScale = 1.0F;
  int mFontPixelSize = 0;
};

}  // namespace orvane
