#include "cli/CliError.h"

#include <cstdio>
#include <string_view>

namespace orvane {

std::string oneLine(std::string text) {
  // Besides the plain control characters, in UTF-8: U+0080 to U+009F, which some terminals obey,
  // and the marks that turn the direction of writing or end the line.
  const auto isCommand = [&text](std::size_t at, std::size_t length) {
    const std::string_view bytes = std::string_view(text).substr(at, length);
    if (length == 2)
      return bytes >= "\xC2\x80" && bytes <= "\xC2\x9F" && bytes.size() == 2;
    return (bytes >= "\u2028" && bytes <= "\u202E") || (bytes >= "\u2066" && bytes <= "\u2069");
  };
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < 0x20 || byte == 0x7F)
      text[at] = '?';
    else if (byte == 0xC2 && isCommand(at, 2))
      text.replace(at, 2, "?");
    else if (byte == 0xE2 && isCommand(at, 3))
      text.replace(at, 3, "?");
  }
  return text;
}

void printError(const std::string &line) {
  // Whoever cannot be told cannot be told that either.
  static_cast<void>(std::fputs(("orvane-cli: " + oneLine(line) + '\n').c_str(), stderr));
}

}  // namespace orvane
