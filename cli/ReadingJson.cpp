#include "cli/ReadingJson.h"

#include <array>
#include <charconv>
#include <cmath>

#include <nlohmann/json.hpp>

namespace orvane {
namespace {

template <typename Number>
void appendNumber(std::string &line, Number value) {
  if constexpr (std::is_floating_point_v<Number>) {
    if (!std::isfinite(value)) {
      line += "null";
      return;
    }
  }
  std::array<char, 32> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value);
  line.append(text.data(), end.ptr);
}

}  // namespace

std::string jsonString(std::string_view text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

void appendJson(std::string &line, const Reading &reading, std::string_view file) {
  const Display &display = reading.display;
  line += '{';
  if (!file.empty())
    line += "\"file\":" + jsonString(file) + ',';
  line += "\"block\":";
  appendNumber(line, reading.block);
  line += ",\"time\":";
  appendNumber(line, reading.time);
  line += ",\"detected\":";
  if (reading.detected)
    appendNumber(line, *reading.detected);
  else
    line += "null";
  line += ",\"accepted\":";
  line += reading.accepted ? "true" : "false";
  line += ",\"rawPeak\":";
  appendNumber(line, reading.rawPeak);
  line += ",\"peak\":";
  appendNumber(line, reading.peak);
  line += ",\"peakHold\":";
  appendNumber(line, reading.peakHold);
  line += ",\"frequency\":";
  appendNumber(line, reading.frequency);
  line += ",\"note\":\"" + display.texts.mNoteText + "\",\"accidental\":\"";
  if (display.texts.mAccidentalText != " ")
    line += display.texts.mAccidentalText;
  line += "\",\"octave\":\"" + display.texts.mOctaveText + "\",\"cents\":";
  appendNumber(line, display.lamps.cents);
  line += ",\"deviation\":";
  appendNumber(line, display.deviation);
  line += ",\"idealFrequency\":";
  appendNumber(line, display.idealFrequency);
  line += ",\"difference\":";
  appendNumber(line, display.difference);
  line += "}\n";
}

}  // namespace orvane
