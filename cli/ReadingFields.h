// What a reading holds, for the forms that programs read: the same fields with the same digits in
// the same order in each. Single-precision values are the shortest decimal that reads back to the
// same single-precision value.
#pragma once

#include <array>
#include <charconv>
#include <cmath>
#include <string>
#include <string_view>
#include <type_traits>

#include "cli/TerminalTuner.h"

namespace orvane {

// Appends the number, or nothing when it is not finite; returns whether it was.
template <typename Number>
bool appendNumber(std::string &line, Number value) {
  if constexpr (std::is_floating_point_v<Number>) {
    if (!std::isfinite(value))
      return false;
  }
  std::array<char, 32> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value);
  line.append(text.data(), end.ptr);
  return true;
}

// Calls addNumber(name, value), addFlag(name, value), addText(name, value) or addNothing(name) of
// fields for each field.
template <typename Fields>
void forEachField(const Reading &reading, Fields &fields) {
  const Display &display = reading.display;
  const NoteTexts &texts = display.texts;
  fields.addNumber("block", reading.block);
  fields.addNumber("time", reading.time);
  if (reading.detected)
    fields.addNumber("detected", *reading.detected);
  else
    fields.addNothing("detected");
  fields.addFlag("accepted", reading.accepted);
  fields.addNumber("rawPeak", reading.rawPeak);
  fields.addNumber("peak", reading.peak);
  fields.addNumber("peakHold", reading.peakHold);
  fields.addNumber("frequency", reading.frequency);
  fields.addText("note", texts.mNoteText);
  fields.addText("accidental", shownAccidental(texts));
  fields.addText("octave", texts.mOctaveText);
  fields.addNumber("cents", display.lamps.cents);
  fields.addNumber("deviation", display.deviation);
  fields.addNumber("idealFrequency", display.idealFrequency);
  fields.addNumber("difference", display.difference);
}

}  // namespace orvane
