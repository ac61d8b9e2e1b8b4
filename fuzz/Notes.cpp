// Notes, menus and number texts from any frequency, tuning and typed text.
#include <array>
#include <cmath>

#include "core/LampMeter.h"
#include "core/NumberText.h"
#include "core/SignedText.h"
#include "core/TuningControls.h"
#include "fuzz/FuzzInput.h"

namespace orvane::fuzz {
namespace {

constexpr std::size_t kDegrees = TemperamentTables::kDegreeCount;

// One row of the numbers, as a file would give it.
TemperamentTables tablesOf(const std::array<float, kDegrees> &entries) {
  std::u16string text = u"{a = (";
  for (const float entry : entries) {
    const std::string digits = floatText(entry);
    text.append(digits.begin(), digits.end()).append(u", ");
  }
  TemperamentTables tables;
  tables.loadText(text + u");}", "input", {});
  require(tables.rowCount() == 1, "twelve entries make a row");
  return tables;
}

// Whether every ratio of the row is one that music could use.
bool isSound(const float *row) {
  return std::all_of(row, row + kDegrees,
                     [](float ratio) { return ratio > 0.01F && ratio < 100.0F; });
}

void checkReading(float frequency, const TuningSettings &settings,
                  const TemperamentTables &tables) {
  const auto reading = noteReading(frequency, settings, tables);
  if (!reading)
    return;
  require(frequency > 0.0F || settings.mReferencePitch < 0.0F, "a note has a frequency");
  require(reading->noteNumber >= 9 && reading->noteNumber <= 96, "the note is on the piano");
  const NoteTexts &texts = reading->texts;
  require(texts.mNoteText.size() == 1 &&
              std::string_view("ABCDEFG").find(texts.mNoteText) != std::string_view::npos,
          "the note has a letter");
  require(texts.mAccidentalText == " " || texts.mAccidentalText == "\u266F" ||
              texts.mAccidentalText == "\u266D",
          "the accidental is one of three");
  require(texts.mOctaveText.size() == 1, "the octave is a digit or a dash");
  require(!noteName(true, texts).empty(), "the note has a name");
  const LampRow lamps = lampRow(reading->deviation);
  require(!(lamps.flat[0] && lamps.sharp[0]), "lamps light to one side");
  plusMinusFloatString(reading->difference);

  const bool isTempered = settings.mTuning != 0;
  if (acceptedReferencePitch(settings.mReferencePitch).beeps ||
      (isTempered && !isSound(tables.row(0))))
    return;
  require(std::isfinite(reading->deviation) && std::isfinite(reading->difference),
          "a sound tuning gives finite readings");
  require(isTempered || std::fabs(reading->deviation) <= 0.5F,
          "the nearest note of equal temperament is half a semitone away at most");
  // The other way round: from the ideal frequency, by the deviation, back to the one that was read.
  const double back = static_cast<double>(reading->idealFrequency) *
                      std::exp2(static_cast<double>(reading->deviation) / 12.0);
  require(std::fabs(back / static_cast<double>(frequency) - 1.0) < 1e-4,
          "ideal frequency and deviation give the frequency");
}

void checkMenus(const TuningSettings &settings, const TemperamentTables &tables) {
  for (int pitchClass = 0; pitchClass < 12; ++pitchClass) {
    const std::string title = tonicTitle(pitchClass, settings, tables);
    require(title.starts_with(pitchClassName(pitchClass)) && title.ends_with("Hz)"),
            "an item of the tonic menu has its name and its frequency");
  }
  require(transposeText(settings.mTranspose).empty() == (settings.mTranspose == 0),
          "a transposition is told");
}

void checkFloat(float value) {
  const ReferencePitchEntry entry = acceptedReferencePitch(value);
  require(entry.value >= 349.0F && entry.value < 499.91F, "the reference pitch is in its limits");
  if (!std::isfinite(value))
    return;
  require(floatValue(floatText(value)) == value, "a number survives being written");
  // The C library's own rounding of the same number, which is exact too.
  std::array<char, 400> digits;
  const int length =
      std::snprintf(digits.data(), digits.size(), "%.1fHz", static_cast<double>(value));
  require(hertzString(value) == std::string_view(digits.data(), static_cast<std::size_t>(length)),
          "hertz are written with one decimal");
}

// The C library reads the same numbers from texts without the words and forms that only it knows.
void checkText(const std::string &text) {
  boolValue(text);
  checkFloat(floatValue(text));
  if (text.find('\0') != std::string::npos)
    return;
  require(integerValue(text) == std::strtoll(text.c_str(), nullptr, 10),
          "a whole number is what the C library reads");
  if (text.find_first_not_of("0123456789+-.eE \t\n") == std::string::npos)
    require(floatValue(text) == std::strtof(text.c_str(), nullptr),
            "a number is what the C library reads");
}

}  // namespace
}  // namespace orvane::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  using namespace orvane;
  using namespace orvane::fuzz;
  FuzzInput input(bytes, size);
  const auto frequency = input.take<float>();
  const auto pitch = input.take<float>();
  const auto flags = input.take<std::uint8_t>();
  TuningSettings settings;
  settings.mReferencePitch = (flags & 2) != 0 ? pitch : acceptedReferencePitch(pitch).value;
  settings.mTuning = flags & 1;
  settings.mTonic = input.take<std::uint8_t>() % 12;
  settings.mTranspose = input.take<std::uint8_t>() % 23 - 11;
  const TemperamentTables tables = tablesOf(input.take<std::array<float, kDegrees>>());

  checkReading(frequency, settings, tables);
  checkMenus(settings, tables);
  checkFloat(frequency);
  checkFloat(pitch);
  wholeCents(pitch);
  checkText(std::string(input.takeRest()));
  return 0;
}
