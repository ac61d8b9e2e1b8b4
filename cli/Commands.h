// The four commands of orvane-cli. Each returns the exit code and throws CliError for what ends it
// early. Main thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/CommonOptions.h"

namespace orvane {

struct DevicesOptions {
  std::vector<std::string> inputs;  // sound files in place of the sound server
  bool json = false;
};
int runDevices(const DevicesOptions &options, const CommonOptions &common);

struct ListenOptions {
  std::optional<std::string> device;  // title; the first when not given
  std::vector<std::string> inputs;
  std::optional<std::string> seconds;  // no end when not given
  bool json = false;
  bool csv = false;
};
int runListen(const ListenOptions &options, const CommonOptions &common);

struct AnalyzeOptions {
  std::vector<std::string> files;
  std::string callbackFrames = "512";
  bool json = false;
  bool csv = false;
  bool summary = false;
  std::optional<std::string> plot;
};
int runAnalyze(const AnalyzeOptions &options, const CommonOptions &common);

struct TemperamentsOptions {
  bool json = false;
  std::vector<std::string> imports;     // Scala scale files to turn into a file of temperaments
  std::optional<std::string> exported;  // the temperament to turn into a Scala scale file
};
int runTemperaments(const TemperamentsOptions &options, const CommonOptions &common);

}  // namespace orvane
