// The tuning options that every command takes, and what they resolve to.
#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <string_view>

#include "core/NoteComputation.h"
#include "core/TemperamentTables.h"

namespace CLI {
class App;
}

namespace orvane {

struct CommonOptions {
  std::optional<std::string> referencePitch;
  std::optional<std::string> temperament;
  std::optional<std::string> tonic;
  std::optional<std::string> transpose;
  std::optional<std::string>
      temperaments;  // path; the user's own or the shipped file when not given

  void addTo(CLI::App &app);
};

struct Tuning {
  TemperamentTables tables;
  TuningSettings settings;
};

// Loads the temperaments (what the loading logs goes to standard error) and resolves the options.
// Throws CliError (exit 2) for a value out of range or an unknown temperament.
Tuning resolveTuning(const CommonOptions &options);

// 0 for equal temperament, k for row k - 1. Upper and lower case count only where names differ by
// nothing else, and what stands in parentheses at a name's end may be left out where one alone is
// meant. Throws CliError (exit 2) that names the option and what is known.
std::int64_t findTemperament(const std::string &option, const std::string &name,
                             const TemperamentTables &tables);

// Whether the whole text is one decimal number, with a "+" or "-" or none before it.
template <typename Number>
bool parseWhole(std::string_view text, Number &value) {
  if (text.starts_with('+') && text.size() > 1 && text[1] != '-')
    text.remove_prefix(1);
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

// Parses a whole number within low and high. Throws CliError (exit 2) that names the option.
std::int64_t parseInteger(const std::string &option, const std::string &text, std::int64_t low,
                          std::int64_t high);

}  // namespace orvane
