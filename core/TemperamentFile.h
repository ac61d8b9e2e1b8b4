// Which file the temperaments are read from: the one named at the start, else the user's own, else
// the shipped one. Main thread.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace orvane {

// Where a file of the user's own would be: velmora/Orvane/Temperaments.txt in the folder for the
// data of programs, $XDG_DATA_HOME or ~/.local/share. Empty without either.
std::filesystem::path userTemperamentFile();

// The user's own file is taken as soon as something has its name, so that one that cannot be read
// is told and not passed over.
std::filesystem::path temperamentFile(const std::optional<std::string> &named,
                                      const std::filesystem::path &shipped);

}  // namespace orvane
