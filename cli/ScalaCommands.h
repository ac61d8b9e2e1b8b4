// What `temperaments --import` and `--export` do: Scala scale files into a file of temperaments,
// and a temperament into a Scala scale file, on standard output. Main thread.
#pragma once

#include <string>
#include <vector>

#include "cli/CommonOptions.h"

namespace orvane {

// Writes the files' scales as a file of temperaments, UTF-16 with its mark, or in UTF-8 to a
// terminal, which UTF-16 could command. Each is named by its description, or by its file without
// one; names that occur twice get the file's name too. A file that cannot be used is told, and then
// nothing is written. Returns the exit code; throws CliError.
int importScales(const std::vector<std::string> &files);

// Writes the temperament, as --temperament takes its name. Throws CliError.
int exportScale(const std::string &name, const CommonOptions &common);

}  // namespace orvane
