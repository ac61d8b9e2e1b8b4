#include "cli/Terminal.h"

#include <algorithm>

#include <sys/ioctl.h>

namespace orvane {
namespace {

bool beginsCodePoint(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

}  // namespace

std::size_t terminalColumns(int descriptor) {
  winsize size{};
  if (::ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
    return 80;
  return std::max<std::size_t>(size.ws_col, 2);
}

std::size_t columnCount(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), beginsCodePoint));
}

std::string padded(const std::string &text, std::size_t width, Align align) {
  const std::size_t columns = columnCount(text);
  const std::string blanks(columns < width ? width - columns : 0, ' ');
  return align == Align::Right ? blanks + text : text + blanks;
}

std::string columnsOf(std::string_view text, std::size_t columns) {
  if (columnCount(text) <= columns)
    return std::string(text);
  if (columns == 0)
    return {};
  std::size_t end = 0;
  for (std::size_t kept = 0; end < text.size(); ++end) {
    if (beginsCodePoint(text[end]) && kept++ == columns - 1)
      break;
  }
  return std::string(text.substr(0, end)) + "…";
}

}  // namespace orvane
