#include "core/TuningControls.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "core/NumberText.h"
#include "tests/core/LoadedTemperaments.h"

namespace orvane::test {
namespace {

using Names = std::vector<std::string>;

const Names kNames = {"C",     "C#/Db", "D",     "D#/Eb", "E",     "F",
                      "F#/Gb", "G",     "G#/Ab", "A",     "A#/Bb", "B"};

Names titles(const TuningSettings &settings, const TemperamentTables &tables) {
  Names all;
  for (int k = 0; k < 12; ++k)
    all.push_back(tonicTitle(k, settings, tables));
  return all;
}

// From the twelve numbers of hertz, C to B.
Names titlesOf(const std::string &frequencies) {
  std::istringstream stream(frequencies);
  Names all;
  std::string frequency;
  for (const std::string &name : kNames) {
    stream >> frequency;
    all.push_back(name + " (" + frequency + "Hz)");
  }
  return all;
}

TEST(TuningControls, AReferencePitchWithinTheLimitsIsTakenSilently) {
  for (const float typed : {349.0F, 440.0F, 442.3F, 499.9F}) {
    const ReferencePitchEntry entry = acceptedReferencePitch(typed);
    EXPECT_EQ(entry.value, typed);
    EXPECT_FALSE(entry.beeps) << typed;
  }
}

TEST(TuningControls, TooLowAReferencePitchBeepsAndBecomesTheLowest) {
  for (const float typed :
       {348.9F, 0.0F, -440.0F, std::nextafter(349.0F, 0.0F),
        -std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
    const ReferencePitchEntry entry = acceptedReferencePitch(typed);
    EXPECT_EQ(entry.value, 349.0F);
    EXPECT_TRUE(entry.beeps) << typed;
  }
}

TEST(TuningControls, TooHighAReferencePitchBeepsAndBecomesTheHighest) {
  for (const float typed :
       {500.0F, std::nextafter(499.9F, 500.0F), std::numeric_limits<float>::infinity()}) {
    const ReferencePitchEntry entry = acceptedReferencePitch(typed);
    EXPECT_EQ(static_cast<double>(entry.value), 499.899993896484375);
    EXPECT_TRUE(entry.beeps) << typed;
  }
}

TEST(TuningControls, TheHighestReferencePitchMayBeTyped) {
  EXPECT_FALSE(acceptedReferencePitch(floatValue("499.9")).beeps);
  EXPECT_TRUE(acceptedReferencePitch(floatValue("499.90003")).beeps);
}

TEST(TuningControls, EqualTemperamentStandsOnTheReferencePitch) {
  const TemperamentTables tables;
  EXPECT_EQ(titles({440.0F, 0, 0, 0}, tables),
            (Names{"C (261.6Hz)", "C#/Db (277.2Hz)", "D (293.7Hz)", "D#/Eb (311.1Hz)",
                   "E (329.6Hz)", "F (349.2Hz)", "F#/Gb (370.0Hz)", "G (392.0Hz)",
                   "G#/Ab (415.3Hz)", "A (440.0Hz)", "A#/Bb (466.2Hz)", "B (493.9Hz)"}));
  EXPECT_EQ(titles({499.9F, 0, 0, 0}, tables),
            titlesOf("297.2 314.9 333.6 353.5 374.5 396.8 420.4 445.4 471.8 499.9 529.6 561.1"));
  EXPECT_EQ(titles({349.0F, 0, 0, 0}, tables),
            titlesOf("207.5 219.9 232.9 246.8 261.5 277.0 293.5 310.9 329.4 349.0 369.8 391.7"));
}

TEST(TuningControls, EqualTemperamentKnowsNeitherTonicNorTransposition) {
  const TemperamentTables tables;
  const Names plain = titles({440.0F, 0, 0, 0}, tables);
  for (std::int64_t tonic = 0; tonic < 12; ++tonic)
    EXPECT_EQ(titles({440.0F, 0, tonic, 7}, tables), plain);
}

TEST(TuningControls, EqualTemperamentIsRoundedToSinglePrecisionOnce) {
  const TemperamentTables tables;
  const Row expected = {0x1.05a026p+8F, 0x1.152ecp+8F,  0x1.25aa2ep+8F, 0x1.372082p+8F,
                        0x1.49a0a8p+8F, 0x1.5d3a6ep+8F, 0x1.71fe92p+8F, 0x1.87fed4p+8F,
                        0x1.9f4ep+8F,   0x1.b8p+8F,     0x1.d229ecp+8F, 0x1.ede22p+8F};
  for (int k = 0; k < 12; ++k)
    EXPECT_EQ(tonicFrequency(k, {440.0F, 0, 0, 0}, tables), expected[static_cast<std::size_t>(k)])
        << k;
}

// Every one of the shipped temperaments, some under several tonics; computed with 60 decimal
// digits, rounded to single precision after each step, or from their definitions where nothing is
// near a rounding.
TEST(TuningControls, TheShippedTemperamentsGiveTheTitlesOfOctaveFour) {
  const struct {
    const char *name;
    std::int64_t tonic;
    const char *frequencies;
  } rows[] = {
      {"1/3-comma meantone (Salinas, 1577)", 6,
       "254.6 273.9 284.1 305.6 328.6 340.9 366.7 380.4 409.1 440.0 456.4 490.9"},
      {"1/4-comma meantone (Aaron, 1523)", 0,
       "263.2 275.0 294.2 314.8 329.0 352.0 367.8 393.5 411.2 440.0 470.8 491.9"},
      {"1/4-comma meantone (Aaron, 1523)", 8,
       "263.2 281.6 294.2 314.8 329.0 352.0 376.6 393.5 421.1 440.0 470.8 503.7"},
      {"1/4-comma meantone (Aaron, 1523)", 10,
       "263.2 281.6 294.2 314.8 329.0 352.0 367.8 393.5 421.1 440.0 470.8 491.9"},
      {"1/5-comma meantone (Verheijen, c. 1600)", 1,
       "262.7 280.2 294.1 313.7 334.6 351.1 374.5 393.1 419.3 440.0 469.3 500.6"},
      {"1/5-comma meantone (Verheijen, c. 1600)", 9,
       "262.7 275.7 294.1 308.6 329.2 345.5 368.5 393.1 412.5 440.0 461.8 492.5"},
      {"1/5-comma meantone (Verheijen, c. 1600)", 11,
       "258.5 275.7 294.1 308.6 329.2 345.5 368.5 386.7 412.5 440.0 461.8 492.5"},
      {"1/6-comma meantone (syntonic comma)", 0,
       "262.4 276.1 293.9 312.9 329.3 350.5 369.0 392.7 413.4 440.0 468.4 493.0"},
      {"1/6-comma meantone (syntonic comma)", 6,
       "259.4 276.1 290.6 309.4 329.3 346.6 369.0 388.3 413.4 440.0 463.1 493.0"},
      {"1/6-comma meantone (syntonic comma)", 10,
       "262.4 279.3 293.9 312.9 329.3 350.5 369.0 392.7 418.0 440.0 468.4 493.0"},
      {"2/7-comma meantone (Zarlino, 1558)", 10,
       "263.5 282.6 294.4 315.7 328.8 352.6 367.3 393.9 422.4 440.0 471.8 491.5"},
      {"2/9-comma meantone (Rossi, 1666)", 3,
       "262.9 280.8 294.1 314.2 329.1 351.5 375.5 393.3 420.1 440.0 470.0 492.3"},
      {"Barnes (1979)", 9,
       "261.3 275.9 294.0 309.7 329.3 348.4 368.7 392.0 413.9 440.0 464.6 492.8"},
      {"Bendeler I (c. 1690)", 2,
       "261.9 277.2 294.7 310.4 328.5 349.2 369.6 392.9 413.9 440.0 465.6 492.8"},
      {"Bendeler II (c. 1690)", 7,
       "261.9 277.2 293.3 310.4 328.5 349.2 369.6 392.9 413.9 440.0 465.6 492.8"},
      {"Bendeler III (c. 1690)", 11,
       "261.6 276.6 293.3 311.1 330.0 348.8 370.0 392.4 414.8 440.0 465.1 495.0"},
      {"d'Alembert (1752)", 4,
       "259.9 275.9 293.0 309.0 330.4 346.9 369.2 390.2 412.5 440.0 463.0 493.9"},
      {"Grammateus (1518)", 10,
       "260.7 276.6 293.3 309.0 327.8 347.7 368.7 391.1 414.8 440.0 463.5 491.7"},
      {"Just intonation (Ellis duodene)", 0,
       "264.0 281.6 297.0 316.8 330.0 352.0 371.2 396.0 422.4 440.0 475.2 495.0"},
      {"Just intonation (Ellis duodene)", 10,
       "264.0 281.6 293.3 312.9 330.0 352.0 375.5 391.1 422.4 440.0 469.3 500.6"},
      {"Kellner (1977)", 5,
       "262.9 277.7 294.1 312.4 330.0 351.4 370.2 393.2 416.5 440.0 468.6 493.7"},
      {"Kellner (1977)", 9,
       "260.7 275.4 293.3 309.0 329.1 347.7 368.2 391.1 413.2 440.0 463.5 492.3"},
      {"Kellner (1977)", 11,
       "260.7 276.9 293.3 309.9 330.0 347.7 370.2 391.1 414.3 440.0 464.8 495.0"},
      {"Kirnberger I (1766)", 2,
       "260.7 275.0 293.3 309.0 330.0 347.7 366.7 391.1 412.5 440.0 463.5 488.9"},
      {"Kirnberger II (1771)", 5,
       "264.0 278.1 295.2 312.9 330.0 352.0 370.8 396.0 417.2 440.0 469.3 495.0"},
      {"Kirnberger III (1779)", 0,
       "263.2 277.3 294.2 311.9 329.0 350.9 370.1 393.5 415.9 440.0 467.9 493.5"},
      {"Kirnberger III (1779)", 10,
       "262.4 278.1 293.3 312.9 330.0 350.9 370.8 392.3 417.2 440.0 469.3 494.4"},
      {"Lambert (1774)", 4,
       "260.7 276.3 293.3 309.6 329.4 347.7 369.1 391.1 413.6 440.0 463.5 493.1"},
      {"Lehman (2005)", 3,
       "261.3 277.5 293.3 311.8 330.0 349.2 370.4 391.1 416.7 440.0 466.7 494.4"},
      {"Lehman (2005)", 9,
       "261.3 275.9 294.0 310.4 329.3 348.8 368.7 391.6 413.9 440.0 465.6 492.8"},
      {"Lehman (2005)", 11,
       "261.6 276.9 293.7 310.1 330.4 348.8 370.0 392.0 414.4 440.0 465.1 494.4"},
      {"Neidhardt Big City (1724)", 9,
       "261.3 276.2 293.3 310.4 329.3 348.4 368.7 391.6 414.4 440.0 465.1 492.8"},
      {"Neidhardt Big City (1724)", 11,
       "261.3 276.9 293.7 310.4 329.6 348.8 370.0 391.6 414.4 440.0 465.6 494.4"},
      {"Neidhardt II (1724)", 6,
       "261.3 277.2 293.3 310.4 330.0 348.8 370.4 391.6 414.8 440.0 465.1 494.4"},
      {"Neidhardt Small Town (1732)", 0,
       "262.5 277.2 294.0 311.5 329.3 350.0 369.6 392.9 415.8 440.0 466.7 493.3"},
      {"Neidhardt Small Town (1732)", 4,
       "261.3 276.6 293.3 310.1 330.0 348.4 369.6 391.6 413.9 440.0 464.6 493.9"},
      {"Neidhardt Small Town (1732)", 10,
       "262.2 277.8 293.7 312.2 329.6 350.4 370.8 392.4 416.2 440.0 468.3 494.4"},
      {"Neidhardt Village (1732)", 4,
       "261.0 276.6 293.7 310.1 330.0 348.4 370.0 391.6 413.4 440.0 464.6 494.4"},
      {"Pythagorean", 9, "260.7 278.4 293.3 313.2 330.0 352.4 371.2 391.1 417.7 440.0 469.9 495.0"},
      {"Pythagorean", 11,
       "264.3 278.4 293.3 313.2 330.0 352.4 371.2 396.4 417.7 440.0 469.9 495.0"},
      {"Pythagorean (Arnaut, c. 1440)", 5,
       "260.7 274.7 293.3 309.0 330.0 347.7 366.3 391.1 412.0 440.0 463.5 488.3"},
      {"Rameau (1726)", 7,
       "263.2 275.9 294.2 310.3 329.0 352.0 367.8 393.5 413.8 440.0 467.4 491.9"},
      {"Silbermann (1/6 Pythagorean comma)", 0,
       "262.5 275.9 294.0 313.2 329.3 350.8 368.7 392.9 413.0 440.0 468.8 492.8"},
      {"Sorge (1758)", 5,
       "262.2 277.8 293.7 311.8 330.0 350.4 370.4 392.4 416.2 440.0 467.2 494.4"},
      {"Vallotti", 0, "262.5 277.2 294.0 311.8 329.3 350.8 369.6 392.9 415.8 440.0 467.7 492.8"},
      {"Vallotti", 2, "261.9 275.9 294.0 310.4 329.3 349.2 368.7 392.9 413.9 440.0 465.6 492.8"},
      {"Vallotti", 10, "262.5 278.4 294.0 313.2 330.0 350.8 371.3 392.9 417.7 440.0 468.8 495.0"},
      {"Werckmeister III (1691)", 7,
       "262.5 276.6 294.3 311.1 328.9 350.0 370.0 393.8 414.8 440.0 466.7 493.3"},
      {"Werckmeister III (1691)", 9,
       "260.7 275.6 293.3 309.0 328.9 347.7 367.5 391.1 413.4 440.0 463.5 491.7"},
      {"Werckmeister III (1691)", 11,
       "260.7 276.6 293.3 310.1 330.0 347.7 370.0 391.1 413.4 440.0 465.1 495.0"},
      {"Werckmeister IV (1691)", 8,
       "263.1 279.7 294.7 313.2 330.0 350.8 374.6 392.9 419.5 440.0 469.9 497.2"},
      {"Werckmeister V (1691)", 1,
       "262.5 278.4 294.3 313.2 331.1 350.0 372.5 393.8 417.7 440.0 468.3 496.7"},
      {"Werckmeister VI, D 175 (1691)", 7,
       "261.9 277.0 293.9 310.5 329.1 350.0 370.2 392.9 414.0 440.0 466.7 493.6"},
      {"Werckmeister VI, D 176 (1691)", 0,
       "262.7 276.8 292.5 312.0 330.0 350.2 370.4 393.0 415.2 440.0 468.0 495.0"},
      {"Young I (1800)", 6,
       "260.7 277.2 293.3 310.4 330.0 348.0 370.5 391.1 414.8 440.0 464.5 494.5"},
      {"Young II (1800)", 0,
       "262.5 276.6 294.0 311.1 329.3 350.0 368.7 392.9 414.8 440.0 466.7 492.8"},
      {"Young II (1800)", 10,
       "262.5 277.8 294.0 312.5 329.3 350.8 370.4 392.9 416.7 440.0 468.8 493.9"},
  };
  Loaded loaded;
  loaded.load(std::filesystem::path(ORVANE_RESOURCES_DIR) / "Temperaments.txt");
  const Names names = loaded.names();
  Names seen;
  for (const auto &row : rows) {
    const auto found = std::find(names.begin(), names.end(), row.name);
    ASSERT_NE(found, names.end()) << row.name;
    const TuningSettings settings = {440.0F, found - names.begin() + 1, row.tonic, -2};
    EXPECT_EQ(titles(settings, loaded.tables), titlesOf(row.frequencies))
        << row.name << " on " << row.tonic;
    if (seen.empty() || seen.back() != row.name)
      seen.push_back(row.name);
  }
  EXPECT_EQ(seen, names);
}

TEST(TuningControls, EveryTonicOfATemperamentKeepsAAtTheReferencePitchAndStaysInOctaveFour) {
  Loaded loaded;
  loaded.load(std::filesystem::path(ORVANE_RESOURCES_DIR) / "Temperaments.txt");
  for (std::size_t row = 0; row < loaded.tables.rowCount(); ++row) {
    for (std::int64_t tonic = 0; tonic < 12; ++tonic) {
      const TuningSettings settings = {440.0F, static_cast<std::int64_t>(row) + 1, tonic, 0};
      EXPECT_EQ(tonicTitle(9, settings, loaded.tables), "A (440.0Hz)");
      float previous = 254.0F;  // half a semitone below C4
      for (int k = 0; k < 12; ++k) {
        const float frequency = tonicFrequency(k, settings, loaded.tables);
        EXPECT_GT(frequency, previous) << loaded.tables.name(row) << " on " << tonic << ": " << k;
        previous = frequency;
      }
      // 53 cents above B4: a wolf of 1/3-comma meantone brings it that far.
      EXPECT_LT(previous, 509.2F) << loaded.tables.name(row) << " on " << tonic;
    }
  }
}

// In six of these the last bit would be another one if the division came first.
TEST(TuningControls, ATemperamentIsMultipliedThenDividedInSinglePrecision) {
  const std::vector<std::pair<std::int64_t, Row>> rows = {
      {0,
       {0x1.061a8cp+8F, 0x1.17e498p+8F, 0x1.26dddep+8F, 0x1.36a434p+8F, 0x1.4bb99ap+8F,
        0x1.5d78bcp+8F, 0x1.7530ccp+8F, 0x1.8927dp+8F, 0x1.a3d6e6p+8F, 0x1.ba4cccp+8F,
        0x1.d1f64ep+8F, 0x1.f19666p+8F}},
      {4,
       {0x1.09adfcp+8F, 0x1.17e498p+8F, 0x1.26dddcp+8F, 0x1.3ae12cp+8F, 0x1.4bb998p+8F,
        0x1.623d5p+8F, 0x1.7530ccp+8F, 0x1.8927d2p+8F, 0x1.a3d6e6p+8F, 0x1.ba4cccp+8F,
        0x1.d851c2p+8F, 0x1.f19664p+8F}},
      {10,
       {0x1.061a8cp+8F, 0x1.14202ep+8F, 0x1.26dddep+8F, 0x1.36a434p+8F, 0x1.4bb998p+8F,
        0x1.5d78bap+8F, 0x1.7530ccp+8F, 0x1.8927d2p+8F, 0x1.9e3046p+8F, 0x1.ba4cccp+8F,
        0x1.d1f64ep+8F, 0x1.f19666p+8F}},
  };
  const Loaded loaded = loadedText("");  // unreadable, so the built-in Pythagorean
  for (const auto &[tonic, expected] : rows) {
    for (int k = 0; k < 12; ++k)
      EXPECT_EQ(tonicFrequency(k, {442.3F, 1, tonic, 0}, loaded.tables),
                expected[static_cast<std::size_t>(k)])
          << tonic << " " << k;
  }
}

TEST(TuningControls, PitchClassesAreNamedInPlainAscii) {
  Names names;
  for (int k = 0; k < 12; ++k)
    names.push_back(pitchClassName(k));
  EXPECT_EQ(names, kNames);
}

TEST(TuningControls, TheTranspositionTellsWhatAWrittenCSoundsAs) {
  EXPECT_EQ(transposeText(-2), "C = A#/Bb (-2)");
  EXPECT_EQ(transposeText(3), "C = D#/Eb (+3)");
  EXPECT_EQ(transposeText(7), "C = G (+7)");
  EXPECT_EQ(transposeText(-11), "C = C#/Db (-11)");
  EXPECT_EQ(transposeText(11), "C = B (+11)");
  EXPECT_EQ(transposeText(-1), "C = B (-1)");
  EXPECT_EQ(transposeText(1), "C = C#/Db (+1)");
}

TEST(TuningControls, NoTranspositionHasNoText) {
  EXPECT_EQ(transposeText(0), "");
}

TEST(TuningControls, TheTuningMenuHasEqualTemperamentADividerAndThenTheRows) {
  EXPECT_EQ(tuningOfItem(0), 0);
  EXPECT_EQ(tuningOfItem(1), 0);
  EXPECT_EQ(tuningOfItem(2), 1);
  EXPECT_EQ(tuningOfItem(16), 15);
  EXPECT_EQ(itemOfTuning(0), 0);
  EXPECT_EQ(itemOfTuning(1), 2);
  EXPECT_EQ(itemOfTuning(15), 16);
}

TEST(TuningControls, TheTranspositionMenuGoesFromMinusElevenToEleven) {
  EXPECT_EQ(transposeOfItem(0), -11);
  EXPECT_EQ(transposeOfItem(11), 0);
  EXPECT_EQ(transposeOfItem(22), 11);
  EXPECT_EQ(itemOfTranspose(-11), 0);
  EXPECT_EQ(itemOfTranspose(0), 11);
  EXPECT_EQ(itemOfTranspose(11), 22);
}

}  // namespace
}  // namespace orvane::test
