// The panel of one recording in a drawing of cents over time: axes, names of notes, marks. Plain
// functions; any thread.
#pragma once

#include <string>

#include "cli/PitchCurve.h"

namespace orvane {

inline constexpr int kPanelWidth = 1200;
inline constexpr int kPanelHeight = 430;

// Elements whose origin is the panel's top left. Their colours are those of light paper; the
// classes ink, faint, grid, zero, band, tune, near, far, range, line and guide stand for others.
std::string plotPanel(const PitchCurve &curve);

// The legend of the curve's marks, one line that ends at the given place of the panel.
std::string plotLegend(const PitchCurve &curve, int right, int baseline);

}  // namespace orvane
