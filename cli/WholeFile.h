// A file that is there whole or not at all: written beside its place and moved there.
#pragma once

#include <string>
#include <string_view>

namespace orvane {

// Replaces a file of that name, or what a symbolic link of that name leads to. Throws CliError
// (exit 1) that names the file, also for what is no regular file or may not be written; what was
// there before is then as it was. No ending signal is answered meanwhile.
void writeWholeFile(const std::string &file, std::string_view content);

}  // namespace orvane
