// Readings as comma-separated values: quoting as RFC 4180 has it, lines that end in a line feed. A
// field without a value is empty.
#pragma once

#include <string>
#include <string_view>

#include "cli/TerminalTuner.h"

namespace orvane {

// One field, in quotes where it needs them; bytes that are not UTF-8 become U+FFFD.
std::string csvField(std::string_view text);

// The line with the names of the fields. withFile: the name of the recording comes first.
std::string csvHeader(bool withFile);

// Appends one line. fileCsv: the csvField of the file that is named in it, or nothing.
void appendCsv(std::string &line, const Reading &reading, std::string_view fileCsv);

}  // namespace orvane
