// What assistive programs find of a content view and its controls: a pop-up button by its label
// with the selected title as its text, a text nobody edits by its name with its text, and nothing
// that is for the eye only or that the view is too small to show. Main thread.
#pragma once

namespace orvane {

// Called by each class of such controls. Installing it again changes nothing.
void installAccessibleControls();

}  // namespace orvane
