#include "cli/CommonOptions.h"

#include <algorithm>
#include <array>
#include <vector>

#include <CLI/CLI.hpp>

#include "cli/CliError.h"
#include "cli/Resources.h"
#include "core/TemperamentFile.h"
#include "core/TuningControls.h"

namespace orvane {
namespace {

// Each pitch class under every name a musician may type, in lower case.
constexpr std::array<std::array<const char *, 5>, 12> kTonicNames = {{
    {"c", "b#", "b♯", "", ""},
    {"c#", "db", "c#/db", "c♯", "d♭"},
    {"d", "", "", "", ""},
    {"d#", "eb", "d#/eb", "d♯", "e♭"},
    {"e", "fb", "f♭", "", ""},
    {"f", "e#", "e♯", "", ""},
    {"f#", "gb", "f#/gb", "f♯", "g♭"},
    {"g", "", "", "", ""},
    {"g#", "ab", "g#/ab", "g♯", "a♭"},
    {"a", "", "", "", ""},
    {"a#", "bb", "a#/bb", "a♯", "b♭"},
    {"b", "cb", "c♭", "", ""},
}};

std::string lowerAscii(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return text;
}

float parseReferencePitch(const std::string &text) {
  float pitch = 0.0F;
  if (!parseWhole(text, pitch) || acceptedReferencePitch(pitch).beeps)
    throw CliError(kExitUsage, "--reference-pitch",
                   "'" + text + "' is not a number of hertz from 349 to 499.9");
  return pitch;
}

std::int64_t parseTonic(const std::string &text) {
  std::int64_t tonic = 0;
  if (parseWhole(text, tonic) && tonic >= 0 && tonic <= 11)
    return tonic;
  const std::string name = lowerAscii(text);
  for (std::size_t k = 0; !name.empty() && k < kTonicNames.size(); ++k) {
    for (const char *candidate : kTonicNames[k]) {
      if (name == candidate)
        return static_cast<std::int64_t>(k);
    }
  }
  throw CliError(kExitUsage, "--tonic",
                 "'" + text + "' is neither a number from 0 (C) to 11 (B) nor a note name");
}

}  // namespace

std::int64_t parseInteger(const std::string &option, const std::string &text, std::int64_t low,
                          std::int64_t high) {
  std::int64_t value = 0;
  if (!parseWhole(text, value) || value < low || value > high)
    throw CliError(kExitUsage, option,
                   "'" + text + "' is not a whole number from " + std::to_string(low) + " to " +
                       std::to_string(high));
  return value;
}

std::int64_t findTemperament(const std::string &option, const std::string &name,
                             const TemperamentTables &tables) {
  // A name as the file spells it wins over one that differs in case, and over the equal
  // temperament.
  for (std::size_t row = 0; row < tables.rowCount(); ++row) {
    if (tables.name(row) == name)
      return static_cast<std::int64_t>(row) + 1;
  }
  const std::string lower = lowerAscii(name);
  if (lower == lowerAscii(kEqualTemperament) || lower == "equal")
    return 0;
  std::vector<std::size_t> shortened;
  for (std::size_t row = 0; row < tables.rowCount(); ++row) {
    const std::string candidate = lowerAscii(tables.name(row));
    if (candidate == lower)
      return static_cast<std::int64_t>(row) + 1;
    if (candidate.ends_with(')') && candidate.substr(0, candidate.rfind(" (")) == lower)
      shortened.push_back(row);
  }
  if (shortened.size() == 1)
    return static_cast<std::int64_t>(shortened[0]) + 1;
  std::string known = kEqualTemperament;
  for (std::size_t row = 0; row < tables.rowCount(); ++row)
    known += ", " + tables.name(row);
  throw CliError(kExitUsage, option, "'" + name + "' is unknown; known are: " + known);
}

void CommonOptions::addTo(CLI::App &app) {
  app.add_option("--reference-pitch", referencePitch, "Pitch of A4, 349 to 499.9")->type_name("HZ");
  app.add_option("--temperament", temperament, "Temperament by name (see 'temperaments')")
      ->type_name("NAME");
  app.add_option("--tonic", tonic, "Tonic of the temperament, 0 (C) to 11 (B) or a note name")
      ->type_name("NOTE");
  app.add_option("--transpose", transpose, "Transposition in semitones, -11 to +11")
      ->type_name("SEMITONES");
  app.add_option("--temperaments", temperaments,
                 "File of temperaments in place of your own or the shipped one")
      ->type_name("FILE");
}

Tuning resolveTuning(const CommonOptions &options) {
  Tuning tuning;
  if (options.referencePitch)
    tuning.settings.mReferencePitch = parseReferencePitch(*options.referencePitch);
  if (options.tonic)
    tuning.settings.mTonic = parseTonic(*options.tonic);
  if (options.transpose)
    tuning.settings.mTranspose = parseInteger("--transpose", *options.transpose, -11, 11);
  tuning.tables.load(temperamentFile(options.temperaments, resourcePath("Temperaments.txt")),
                     printError);
  if (options.temperament)
    tuning.settings.mTuning = findTemperament("--temperament", *options.temperament, tuning.tables);
  return tuning;
}

}  // namespace orvane
