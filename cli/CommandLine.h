// The words behind the program's name, understood: which command, with which options. Main thread.
#pragma once

#include <string>

#include "cli/Commands.h"

namespace orvane {

enum class Command { ShowText, Devices, Listen, Analyze, Temperaments };

struct CommandLine {
  Command command = Command::ShowText;
  std::string text;  // of ShowText: the help or the version, with its line end
  CommonOptions common;
  DevicesOptions devices;
  ListenOptions listen;
  AnalyzeOptions analyze;
  TemperamentsOptions temperaments;
};

// Throws CliError (exit 2) for words that make no command. The values of options are still texts;
// the commands read them.
CommandLine parseCommandLine(int argc, const char *const *argv);

}  // namespace orvane
