// What the display shows, as one line of text for people.
#pragma once

#include <string>

#include "cli/TerminalTuner.h"

namespace orvane {

// "C♯4", "A4".
std::string noteText(const NoteTexts &texts);

// Seconds to the millisecond, aligned: "   1.091 s".
std::string timeText(double seconds);

// A plain line without level and lamps: "A4    +3 cents   440.8Hz, ideal  440.0Hz, +0.8Hz".
std::string changeLine(const Display &display);

// The live line: note, signed cents, the eleven lamps, measured and ideal frequency with their
// difference, the level with its hold. What does not fit the columns (at least 2) is left out,
// frequencies first. coloured: with the lamps' colours as terminal escapes.
std::string liveLine(const Display &display, bool coloured, std::size_t columns);

}  // namespace orvane
