// The rectangles of a window with two layouts, a full one and a shorter one, that zooms with its
// width. Screen units, origin at the bottom left, y upwards; the precisions of the arithmetic
// decide between neighbouring pixels and are kept. Plain functions, any thread.
#pragma once

#include <QRectF>
#include <QSizeF>
#include <Qt>

namespace orvane {

// The content rectangle after a change of layout: its height is layoutHeight (of the layout to
// show, unzoomed) at the zoom of content, whose width unzoomed is originalWidth. The top edge
// stays. The size of the result is also the aspect ratio to keep from then on.
QRectF disclosedContentRect(const QRectF &content, double originalWidth, double layoutHeight);

// Cuts a frame that is higher than the screen's visible area to its height, and narrows it in
// proportion; the top edge and the left one stay.
QRectF frameFittedToScreen(const QRectF &frame, double visibleHeight);

// The content rectangle of a window that starts with the layout of original's size: content at that
// layout's height, rounded outwards to whole units. The lower left corner stays.
QRectF collapsedStartContentRect(const QRectF &content, const QSizeF &original);

// The smallest rectangle of whole units around rect; nothing around an empty one.
QRectF integralRect(const QRectF &rect);

// The frame size a window may take when the user proposes one: with Alt a whole multiple of minimum
// by the height, else with Shift the proposed one, else the largest with minimum's proportions.
QSizeF resizedFrameSize(const QSizeF &proposed, const QSizeF &minimum,
                        Qt::KeyboardModifiers modifiers);

// What the user who dragged a frame of the size before to the size after proposes, when the
// proportions are to stay minimum's: a single dragged edge brings the other dimension along.
QSizeF proportionalProposal(const QSizeF &before, const QSizeF &after, const QSizeF &minimum);

// A frame that the user can get hold of again: minimum in place of nothing, which is what a
// multiple below one half comes to, and no less than a quarter of it.
QSizeF usableFrameSize(const QSizeF &size, const QSizeF &minimum);

// A frame of another size in the place of after, which the user has dragged there from before: an
// edge that was not dragged stays where it is, else the top and the left one do.
QRectF resizedFrame(const QRectF &before, const QRectF &after, const QSizeF &size);

// Whether the user who made a frame of the size before one of the size after drags its left or its
// right edge: a corner and the other two edges are no more than 32 units from the pointer.
bool isSideDragged(const QRectF &before, const QSizeF &after, const QPointF &pointer);

// The largest size of whole units within area that has layout's proportions.
QSizeF largestLayoutSize(const QSizeF &area, const QSizeF &layout);

}  // namespace orvane
