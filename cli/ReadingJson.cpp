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

// The fields of one object, in the order they are added.
class Fields {
 public:
  explicit Fields(std::string &line) : mLine(line) { mLine += '{'; }

  void addText(const char *name, std::string_view json) {
    mLine.append(mIsFirst ? "\"" : ",\"").append(name).append("\":").append(json);
    mIsFirst = false;
  }
  template <typename Number>
  void add(const char *name, Number value) {
    addText(name, {});
    appendNumber(mLine, value);
  }
  void end() { mLine += "}\n"; }

 private:
  std::string &mLine;
  bool mIsFirst = true;
};

}  // namespace

std::string jsonString(std::string_view text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

void appendJson(std::string &line, const Reading &reading, std::string_view file) {
  const Display &display = reading.display;
  const NoteTexts &texts = display.texts;
  Fields fields(line);
  if (!file.empty())
    fields.addText("file", jsonString(file));
  fields.add("block", reading.block);
  fields.add("time", reading.time);
  if (reading.detected)
    fields.add("detected", *reading.detected);
  else
    fields.addText("detected", "null");
  fields.addText("accepted", reading.accepted ? "true" : "false");
  fields.add("rawPeak", reading.rawPeak);
  fields.add("peak", reading.peak);
  fields.add("peakHold", reading.peakHold);
  fields.add("frequency", reading.frequency);
  fields.addText("note", '"' + texts.mNoteText + '"');
  fields.addText("accidental",
                 texts.mAccidentalText == " " ? "\"\"" : '"' + texts.mAccidentalText + '"');
  fields.addText("octave", '"' + texts.mOctaveText + '"');
  fields.add("cents", display.lamps.cents);
  fields.add("deviation", display.deviation);
  fields.add("idealFrequency", display.idealFrequency);
  fields.add("difference", display.difference);
  fields.end();
}

}  // namespace orvane
