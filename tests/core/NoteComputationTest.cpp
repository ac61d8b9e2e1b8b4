#include "core/NoteComputation.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace orvane::test {
namespace {

const TemperamentTables kNoTables;

NoteReading read(float frequency, const TuningSettings &settings = {},
                 const TemperamentTables &tables = kNoTables) {
  const auto reading = noteReading(frequency, settings, tables);
  EXPECT_TRUE(reading.has_value()) << frequency;
  return reading.value_or(NoteReading{});
}

std::string name(const NoteReading &reading) {
  return reading.texts.mNoteText + reading.texts.mAccidentalText + reading.texts.mOctaveText;
}

TuningSettings transposed(std::int64_t semitones) {
  TuningSettings settings;
  settings.mTranspose = semitones;
  return settings;
}

// The single temperament "Pythagorean" of the built-in table.
const TemperamentTables &pythagorean() {
  static const TemperamentTables tables = [] {
    TemperamentTables loaded;
    loaded.load("/no/such/file", [](const std::string &) {});
    return loaded;
  }();
  return tables;
}

TuningSettings pythagoreanOn(std::int64_t tonic) {
  TuningSettings settings;
  settings.mTuning = 1;
  settings.mTonic = tonic;
  return settings;
}

TEST(NoteComputation, TheReferencePitchIsA4WithoutDeviation) {
  const NoteReading a4 = read(440.0F);
  EXPECT_EQ(name(a4), "A 4");
  EXPECT_EQ(a4.noteNumber, 57);
  // None to the rounding of the steps: 57.5 / 12 lies at 10048853 and a third units of 2^-21, so
  // the remainder times 12 falls 4 units short of 9.5.
  EXPECT_EQ(a4.deviation, -0x1p-19F);
  EXPECT_EQ(a4.cents, -0x1p-19F * 100.0F);
  EXPECT_EQ(a4.idealFrequency, 440.0F);
  EXPECT_EQ(a4.difference, 0.0F);
}

TEST(NoteComputation, BelowTheOctavesThatHaveANumberADashStandsForIt) {
  // A0 lies at 9.5; less 30 it is 8.5 below an octave of its own, which from above is the E.
  EXPECT_EQ(name(read(27.5F, transposed(30))), "E -");
  // No menu goes that far: with eleven it is octave 0 still.
  EXPECT_EQ(name(read(27.5F, transposed(11))), "B 0");
}

TEST(NoteComputation, TheTwelveNotesCarrySharpsOnThreeAndFlatsOnTwo) {
  // Equal-tempered frequencies of octave 4, to a hundredth, as tables of musical pitch print them.
  const struct {
    float frequency;
    const char *name;
  } rows[] = {{261.63F, "C 4"}, {277.18F, "C♯4"}, {293.66F, "D 4"}, {311.13F, "E♭4"},
              {329.63F, "E 4"}, {349.23F, "F 4"}, {369.99F, "F♯4"}, {392.00F, "G 4"},
              {415.30F, "G♯4"}, {440.00F, "A 4"}, {466.16F, "B♭4"}, {493.88F, "B 4"}};
  for (const auto &row : rows) {
    const NoteReading reading = read(row.frequency);
    EXPECT_EQ(name(reading), row.name);
    EXPECT_NEAR(reading.idealFrequency, row.frequency, 0.006F);
    EXPECT_NEAR(reading.cents, 0.0F, 0.05F);
  }
}

TEST(NoteComputation, OneCentAtA4IsAQuarterOfAHertz) {
  // 440 · 2^(1/1200) = 440.254…, 440 · 2^(−30/1200) = 432.4410…
  EXPECT_NEAR(read(440.2542F).cents, 1.0F, 0.01F);
  EXPECT_NEAR(read(432.4411F).cents, -30.0F, 0.01F);
}

TEST(NoteComputation, HalfWayBetweenTwoNotesBelongsToTheUpperOne) {
  // Half-way between A4 and B♭4: 440 · 2^(1/24) = 452.8929841…
  const float halfWay = 452.89298F;
  const NoteReading below = read(halfWay - 0.005F);
  EXPECT_EQ(name(below), "A 4");
  EXPECT_NEAR(below.deviation, 0.5F, 0.001F);
  const NoteReading above = read(halfWay + 0.005F);
  EXPECT_EQ(name(above), "B♭4");
  EXPECT_NEAR(above.deviation, -0.5F, 0.001F);
}

TEST(NoteComputation, OnlyTheEightyEightKeysOfAPianoAreShown) {
  const NoteReading a0 = read(27.5F);
  EXPECT_EQ(a0.noteNumber, 9);
  EXPECT_EQ(name(a0), "A 0");
  EXPECT_EQ(name(read(4186.009F)), "C 8");
  EXPECT_FALSE(noteReading(25.9565F, {}, kNoTables)) << "G♯0";
  EXPECT_FALSE(noteReading(4434.92F, {}, kNoTables)) << "C♯8";
}

TEST(NoteComputation, WhatIsNoFrequencyIsNotShown) {
  for (const float frequency : {0.0F, -440.0F, std::numeric_limits<float>::quiet_NaN(),
                                std::numeric_limits<float>::infinity()})
    EXPECT_FALSE(noteReading(frequency, {}, kNoTables)) << frequency;
}

TEST(NoteComputation, ATranspositionShowsALowerNameForAPositiveNumber) {
  EXPECT_EQ(name(read(440.0F, transposed(2))), "G 4");
  EXPECT_EQ(name(read(440.0F, transposed(-3))), "C 5");
  EXPECT_EQ(read(440.0F, transposed(2)).idealFrequency, 440.0F);
}

TEST(NoteComputation, TranspositionCrossesOctaves) {
  EXPECT_EQ(name(read(261.63F, transposed(11))), "C♯3");
  EXPECT_EQ(name(read(261.63F, transposed(1))), "B 3");
  EXPECT_EQ(name(read(493.88F, transposed(-1))), "C 5");
}

TEST(NoteComputation, AShownPositionBelowOctaveZeroPrintsOctaveZero) {
  // A0 (number 9) less eleven semitones: position −1.5, pitch class 11 of the octave cut to 0.
  EXPECT_EQ(name(read(27.5F, transposed(11))), "B 0");
  EXPECT_EQ(name(read(27.5F, transposed(9))), "C 0");
}

TEST(NoteComputation, UnderATemperamentA4KeepsTheReferencePitchWhateverTheTonic) {
  for (std::int64_t tonic = 0; tonic < 12; ++tonic) {
    SCOPED_TRACE(tonic);
    for (const float pitch : {440.0F, 415.0F, 466.5F}) {
      TuningSettings settings = pythagoreanOn(tonic);
      settings.mReferencePitch = pitch;
      const NoteReading a4 = read(pitch, settings, pythagorean());
      EXPECT_EQ(name(a4), "A 4");
      EXPECT_NEAR(a4.idealFrequency, pitch, pitch * 2e-7F);
      EXPECT_NEAR(a4.deviation, 0.0F, 5e-6F);
    }
  }
}

TEST(NoteComputation, UnderATemperamentEveryNoteStandsInItsRatioToA) {
  // Pythagorean on C: A is 27/16 of C, so C4 = 440·16/27 = 260.7407…, E4 = C4·81/64 = 330,
  // B4 = C4·243/128 = 495, and an octave up or down doubles or halves.
  EXPECT_NEAR(read(261.0F, pythagoreanOn(0), pythagorean()).idealFrequency, 260.7407F, 1e-4F);
  EXPECT_NEAR(read(330.0F, pythagoreanOn(0), pythagorean()).idealFrequency, 330.0F, 1e-4F);
  EXPECT_NEAR(read(495.0F, pythagoreanOn(0), pythagorean()).idealFrequency, 495.0F, 1e-4F);
  EXPECT_NEAR(read(522.0F, pythagoreanOn(0), pythagorean()).idealFrequency, 521.4815F, 2e-4F);
  EXPECT_NEAR(read(130.0F, pythagoreanOn(0), pythagorean()).idealFrequency, 130.3704F, 1e-4F);
  // 330 against equal-tempered E4 329.6276 is 1.955 cents; against 81/64 it is none.
  EXPECT_NEAR(read(330.0F, pythagoreanOn(0), pythagorean()).cents, 0.0F, 1e-3F);
  EXPECT_NEAR(read(330.0F).cents, 1.955F, 1e-2F);
}

TEST(NoteComputation, NotesBelowALowTonicComeFromTheScaleOfTheOctaveBelow) {
  // Pythagorean on D: A is the fifth 3/2 of D, so D4 = 293.3333; C is the minor seventh 16/9 of the
  // D below it: 293.3333·16/9/2 = 260.7407.
  EXPECT_NEAR(read(293.0F, pythagoreanOn(2), pythagorean()).idealFrequency, 293.33333F, 1e-4F);
  EXPECT_NEAR(read(261.0F, pythagoreanOn(2), pythagorean()).idealFrequency, 260.74075F, 1e-4F);
  EXPECT_NEAR(read(522.0F, pythagoreanOn(2), pythagorean()).idealFrequency, 521.48149F, 2e-4F);
}

TEST(NoteComputation, NotesFromAHighTonicUpwardComeFromTheScaleOfTheirOwnOctave) {
  // Pythagorean on B: A is the minor seventh 16/9 of the B below, so B3 = 440·9/16 = 247.5 and
  // B4 = 495. On B♭: A is the major seventh 243/128 of the B♭ below, so B♭4 = 2·440·128/243.
  EXPECT_NEAR(read(494.0F, pythagoreanOn(11), pythagorean()).idealFrequency, 495.0F, 1e-4F);
  EXPECT_NEAR(read(247.0F, pythagoreanOn(11), pythagorean()).idealFrequency, 247.5F, 1e-4F);
  EXPECT_NEAR(read(466.0F, pythagoreanOn(10), pythagorean()).idealFrequency, 463.53909F, 1e-4F);
  // B is the minor second of B♭: 256/243 as the table has it, 1.067871094.
  EXPECT_NEAR(read(495.0F, pythagoreanOn(10), pythagorean()).idealFrequency,
              463.53909F * 1.067871094F, 2e-4F);
}

TEST(NoteComputation, UnderATemperamentADeviationMayPassHalfASemitone) {
  // Just below half-way up to B♭4 the note is still A4, and A4's ideal lies at 440 only on paper:
  // G♯4 on C is 1.601806641·440/1.6875 = 417.66, ten cents above equal, so a G♯ 45 cents flat of
  // equal (404.65) reads close to −54.8.
  const NoteReading flat = read(404.65F, pythagoreanOn(0), pythagorean());
  EXPECT_EQ(name(flat), "G♯4");
  EXPECT_NEAR(flat.cents, -54.75F, 0.1F);
}

TEST(NoteComputation, UnderATemperamentEveryStepIsRoundedToSinglePrecision) {
  // Computed with exact fractions and logarithms of 70 digits, rounded after each step.
  const struct {
    float frequency;
    float referencePitch;
    std::int64_t tonic;
    const char *name;
    float ideal;
    float deviation;
    float cents;
    float difference;
  } rows[] = {
      {404.65F, 440.0F, 0, "G♯4", 0x1.a1a802p+8F, -0x1.186beap-1F, -0x1.b6289ep+5F,
       -0x1.a03380p+3F},
      {452.0F, 440.0F, 10, "A 4", 0x1.b8p+8F, 0x1.dd02aep-2F, 0x1.74aa18p+5F, 0x1.8p+3F},
      {100.3F, 442.3F, 2, "G 2", 0x1.8927d4p+6F, 0x1.67125cp-2F, 0x1.188658p+5F, 0x1.016cp+1F},
      {1234.5F, 415.0F, 7, "E 6", 0x1.374p+10F, -0x1.2c4aeep-3F, -0x1.d53514p+3F, -0x1.5p+3F},
      {27.8F, 440.0F, 11, "A 0", 0x1.b8p+4F, 0x1.80b1bap-3F, 0x1.2c8adap+4F, 0x1.3333p-2F},
      {4150.0F, 440.0F, 4, "C 8", 0x1.084c5p+12F, -0x1.4d54dcp-2F, -0x1.046a4cp+5F, -0x1.3b14p+6F},
  };
  for (const auto &row : rows) {
    TuningSettings settings = pythagoreanOn(row.tonic);
    settings.mReferencePitch = row.referencePitch;
    const NoteReading reading = read(row.frequency, settings, pythagorean());
    EXPECT_EQ(name(reading), row.name);
    EXPECT_EQ(reading.idealFrequency, row.ideal) << row.name;
    EXPECT_EQ(reading.deviation, row.deviation) << row.name;
    EXPECT_EQ(reading.cents, row.cents) << row.name;
    EXPECT_EQ(reading.difference, row.difference) << row.name;
  }
}

TEST(NoteComputation, NoReadingIsTooFarAwayToBeLeftOut) {
  // The widest quotients there are, and one that overflows.
  constexpr float kLargest = std::numeric_limits<float>::max();
  constexpr float kSmallest = std::numeric_limits<float>::denorm_min();
  for (const float frequency : {kLargest, kSmallest, 1e30F, 1e-30F}) {
    for (const float reference : {440.0F, kLargest, kSmallest}) {
      if (frequency == reference)
        continue;
      TuningSettings settings;
      settings.mReferencePitch = reference;
      EXPECT_FALSE(noteReading(frequency, settings, kNoTables)) << frequency << " " << reference;
    }
  }
}

TEST(NoteComputation, TheSpokenNameFollowsWhatIsShown) {
  EXPECT_EQ(noteName(true, {"A", " ", "4"}), "ay   4");
  EXPECT_EQ(noteName(false, {"A", " ", "4"}), "ay  ");
  EXPECT_EQ(noteName(true, {"E", "♭", "3"}), "E flat 3");
  EXPECT_EQ(noteName(true, {"C", "♯", "5"}), "C sharp 5");
  EXPECT_EQ(noteName(false, {"B", "♭", "2"}), "B flat");
  EXPECT_EQ(noteName(false, {"Bb", " ", "2"}), "B  ") << "only the first letter";
}

TEST(NoteComputation, TheSpokenNameLeavesOutAnOctaveThatIsADash) {
  EXPECT_EQ(noteName(true, {"B", "♭", "-"}), "B flat");
}

}  // namespace
}  // namespace orvane::test
