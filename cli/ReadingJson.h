// Readings as JSON Lines. Single-precision values are the shortest decimal that reads back to the
// same single-precision value; one that is not finite is null.
#pragma once

#include <string>
#include <string_view>

#include "cli/TerminalTuner.h"

namespace orvane {

// A JSON string of UTF-8 text; bytes that are not UTF-8 become U+FFFD.
std::string jsonString(std::string_view text);

// Appends one line. file is named in it when it is not empty.
void appendJson(std::string &line, const Reading &reading, std::string_view file);

}  // namespace orvane
