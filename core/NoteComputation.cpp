#include "core/NoteComputation.h"

#include <array>
#include <cmath>

namespace orvane {
namespace {

constexpr std::int64_t kLowestNote = 9;    // A0
constexpr std::int64_t kHighestNote = 96;  // C8
constexpr std::int64_t kA4 = 57;

constexpr const char *kSharp = "\u266F";
constexpr const char *kFlat = "\u266D";
constexpr const char *kNatural = " ";
constexpr std::string_view kLetters = "CCDEEFFGGABB";
constexpr std::array<const char *, 12> kAccidentals = {kNatural, kSharp,   kNatural, kFlat,
                                                       kNatural, kNatural, kSharp,   kNatural,
                                                       kSharp,   kNatural, kFlat,    kNatural};

NoteTexts transposedTexts(float position, std::int64_t transpose) {
  const float shown = position - static_cast<float>(transpose);
  const float octaves = shown / 12.0F;
  const float whole = std::trunc(octaves);
  const auto octave = static_cast<std::int64_t>(whole);
  auto pitchClass = static_cast<std::int64_t>(static_cast<double>(octaves - whole) * 12.0);
  if (pitchClass < 0)
    pitchClass += 12;
  const auto index = static_cast<std::size_t>(pitchClass);
  return {std::string(1, kLetters[index]), kAccidentals[index],
          octave < 0 ? "-" : std::to_string(octave)};
}

// The scale is anchored on the tonic at or below A4: octave 4 for C to A, octave 3 for B♭ and B.
int octaveCorrection(std::int64_t tonic, std::int64_t pitchClass) {
  if (tonic < 10)
    return tonic > pitchClass ? -1 : 0;
  return tonic <= pitchClass ? 1 : 0;
}

}  // namespace

std::optional<NoteReading> noteReading(float frequency, const TuningSettings &settings,
                                       const TemperamentTables &temperaments) {
  const float ratio = frequency / settings.mReferencePitch;
  const auto position = static_cast<float>(12.0 * std::log2(static_cast<double>(ratio)) + 57.5);
  // Keeps the conversions below defined: what is finite lies within some 1800 semitones of 0.
  if (!std::isfinite(position))
    return std::nullopt;
  const float octaves = position / 12.0F;
  const float whole = std::trunc(octaves);
  const auto octave = static_cast<std::int64_t>(whole);
  const float semitones = (octaves - whole) * 12.0F;
  const auto pitchClass = static_cast<std::int64_t>(semitones);
  const double within = static_cast<double>(semitones - std::trunc(semitones));
  const std::int64_t note = 12 * octave + pitchClass;
  if (note < kLowestNote || note > kHighestNote)
    return std::nullopt;

  NoteReading reading;
  reading.texts = transposedTexts(position, settings.mTranspose);
  reading.noteNumber = note;
  if (settings.mTuning == 0) {
    reading.deviation = static_cast<float>(within - 0.5);
    reading.idealFrequency = static_cast<float>(static_cast<double>(settings.mReferencePitch) *
                                                std::exp2(static_cast<double>(note - kA4) / 12.0));
  } else {
    const float *row = temperaments.row(static_cast<std::size_t>(settings.mTuning - 1));
    const std::int64_t tonic = settings.mTonic;
    const std::int64_t degreeOfA = (21 - tonic) % 12;
    const std::int64_t degree = (pitchClass + 12 - tonic) % 12;
    const float inOctaveFour = settings.mReferencePitch / row[degreeOfA] * row[degree];
    const int power = static_cast<int>(octave) + octaveCorrection(tonic, pitchClass) - 4;
    reading.idealFrequency =
        static_cast<float>(std::ldexp(static_cast<double>(inOctaveFour), power));
    const float toIdeal = frequency / reading.idealFrequency;
    reading.deviation = static_cast<float>(12.0 * std::log2(static_cast<double>(toIdeal)));
  }
  reading.cents = reading.deviation * 100.0F;
  reading.difference = frequency - reading.idealFrequency;
  return reading;
}

std::string noteName(bool withOctave, const NoteTexts &texts) {
  std::string name = texts.mNoteText.substr(0, 1);
  if (name == "A")
    name = "ay";
  name += ' ';
  if (texts.mAccidentalText == kNatural)
    name += kNatural;
  else
    name += texts.mAccidentalText == kFlat ? "flat" : "sharp";
  if (withOctave && texts.mOctaveText != "-")
    name += ' ' + texts.mOctaveText;
  return name;
}

}  // namespace orvane
