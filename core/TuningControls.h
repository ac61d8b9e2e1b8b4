// The arithmetic behind the controls of the tuning settings: limits of the reference pitch, titles
// of the tonic menu, the transposition's label, and which menu item stands for which value.
// Frequencies are hertz. settings.mTuning must be 0 or name a row of the tables, mTonic lie from 0
// to 11, mTranspose from −11 to +11. Pure functions; any thread, not real-time safe (texts
// allocate).
#pragma once

#include <cstdint>
#include <string>

#include "core/NoteComputation.h"
#include "core/TemperamentTables.h"

namespace orvane {

inline constexpr const char *kEqualTemperament = "Equal temperament";

inline constexpr float kLowestReferencePitch = 349.0F;
// In double precision, so that a typed 499.9, which is less in single precision, is accepted.
inline constexpr double kHighestReferencePitch = 499.9;

struct ReferencePitchEntry {
  float value;  // within the limits
  bool beeps;   // typed lay outside them
};
ReferencePitchEntry acceptedReferencePitch(float typed);

// Plain ASCII: "A#/Bb". pitchClass: 0 (C) to 11 (B).
const char *pitchClassName(int pitchClass);

// Where a pitch class lies in octave 4 (C4 to B4), without the transposition.
float tonicFrequency(int pitchClass, const TuningSettings &settings,
                     const TemperamentTables &temperaments);

// An item of the tonic menu: "A (440.0Hz)".
std::string tonicTitle(int pitchClass, const TuningSettings &settings,
                       const TemperamentTables &temperaments);

// What a written C sounds as: "C = A#/Bb (-2)"; empty for 0.
std::string transposeText(std::int64_t transpose);

// Menu items and what they stand for. Tuning: item 0 equal temperament, item 1 a divider, which
// stands for the same, from item 2 the rows of the tables. Transposition: −11 to +11 in order.
// index: 0 or more.
std::int64_t tuningOfItem(std::int64_t index);
std::int64_t itemOfTuning(std::int64_t tuning);
std::int64_t transposeOfItem(std::int64_t index);
std::int64_t itemOfTranspose(std::int64_t transpose);

}  // namespace orvane
