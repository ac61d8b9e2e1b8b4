// Where the program's own files are: under share/orvane beside an installed program, else in the
// source tree it was built from.
#pragma once

#include <filesystem>
#include <string>

namespace orvane {

// The path of the resource with that file name; it need not exist.
std::filesystem::path resourcePath(const std::string &name);

}  // namespace orvane
