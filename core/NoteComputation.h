// From a frequency to the nearest note of the twelve, its deviation and its ideal frequency under
// a temperament, tonic, transposition and reference pitch. Pure functions; any thread, not
// real-time safe (the texts allocate).
//
// Note numbers count semitones from C0: 12 × octave + pitch class, pitch class 0 = C to 11 = B. A4
// is 57 and sounds at the reference pitch. Only 9 (A0) to 96 (C8) are shown.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "core/TemperamentTables.h"

namespace orvane {

struct TuningSettings {
  float mReferencePitch = 440.0F;  // hertz of A4
  std::int64_t mTuning = 0;        // 0 equal temperament, k ≥ 1 row k − 1 of the tables
  std::int64_t mTonic = 0;         // pitch class, 0 to 11
  std::int64_t mTranspose = 0;     // semitones, −11 to +11
};

// The note as it is shown, after transposition.
struct NoteTexts {
  std::string mNoteText;        // one letter
  std::string mAccidentalText;  // "♯", "♭", or " " for a natural note
  std::string mOctaveText;      // a number, or "-" below octave 0
};

struct NoteReading {
  NoteTexts texts;
  std::int64_t noteNumber;  // of the sounding note, 9 to 96
  float deviation;          // semitones from the ideal frequency
  float cents;              // deviation × 100
  float idealFrequency;     // hertz
  float difference;         // hertz, frequency − ideal
};

// Nothing for a frequency whose nearest note is below A0 or above C8, or that is not a number.
// settings.mTuning must name a row of the tables or be 0; mTonic must lie in its range.
std::optional<NoteReading> noteReading(float frequency, const TuningSettings &settings,
                                       const TemperamentTables &temperaments);

// The shown note in words for speech: "ay flat 4". A natural note leaves its accidental a space.
std::string noteName(bool withOctave, const NoteTexts &texts);

}  // namespace orvane
