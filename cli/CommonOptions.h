// The tuning options that every command takes, and what they resolve to.
#pragma once

#include <optional>
#include <string>

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
  std::optional<std::string> temperaments;  // path; the shipped file when not given

  void addTo(CLI::App &app);
};

struct Tuning {
  TemperamentTables tables;
  TuningSettings settings;
};

// Loads the temperaments (what the loading logs goes to standard error) and resolves the options.
// Throws CliError (exit 2) for a value out of range or an unknown temperament.
Tuning resolveTuning(const CommonOptions &options);

// Parses a whole number within low and high. Throws CliError (exit 2) that names the option.
std::int64_t parseInteger(const std::string &option, const std::string &text, std::int64_t low,
                          std::int64_t high);

}  // namespace orvane
