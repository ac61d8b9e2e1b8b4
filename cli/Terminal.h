// What is known of a terminal, and text measured at one column a code point (wide characters are
// undercounted). Any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orvane {

// 80 where the terminal does not say. At least 2.
std::size_t terminalColumns(int descriptor);

std::size_t columnCount(std::string_view text);

// The text with blanks on the other side, where it has fewer columns than width.
enum class Align { Left, Right };
std::string padded(const std::string &text, std::size_t width, Align align);

// The text cut to so many columns; what was cut ends in "…".
std::string columnsOf(std::string_view text, std::size_t columns);

}  // namespace orvane
