// Readings as JSON Lines. A number that is not finite is null.
#pragma once

#include <string>
#include <string_view>

#include "cli/TerminalTuner.h"

namespace orvane {

// A JSON string of UTF-8 text; bytes that are not UTF-8 become U+FFFD.
std::string jsonString(std::string_view text);

// The text with its bytes that are not UTF-8 as U+FFFD.
std::string validUtf8(std::string_view text);

// Appends one line. fileJson: the jsonString of the file that is named in it, or nothing.
void appendJson(std::string &line, const Reading &reading, std::string_view fileJson);

}  // namespace orvane
