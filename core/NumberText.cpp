#include "core/NumberText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <locale>
#include <sstream>
#include <system_error>

namespace orvane {
namespace {

// Takes white space and a sign off the beginning; whether the sign is a minus.
bool takeSign(std::string_view &text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  const bool isNegative = text.starts_with('-');
  if (isNegative || text.starts_with('+'))
    text.remove_prefix(1);
  return isNegative;
}

}  // namespace

// Rounded to single precision once, not by way of double.
float floatValue(std::string_view text) {
  const bool isNegative = takeSign(text);
  // The library would also read "inf", "nan" and a second sign.
  if (text.substr(text.starts_with('.') ? 1 : 0).find_first_of("0123456789") != 0)
    return 0.0F;
  float value = 0.0F;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec == std::errc::result_out_of_range) {
    // It leaves open in which direction; a stream fails for too large a number only.
    std::istringstream stream(std::string(text.data(), result.ptr));
    stream.imbue(std::locale::classic());
    if (!(stream >> value))
      value = std::numeric_limits<float>::infinity();
  }
  return isNegative ? -value : value;
}

std::int64_t integerValue(std::string_view text) {
  using Limits = std::numeric_limits<std::int64_t>;
  const bool isNegative = takeSign(text);
  // Unsigned, because the smallest number has no positive counterpart; a second sign is none then.
  std::uint64_t magnitude = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), magnitude);
  constexpr auto kLargest = static_cast<std::uint64_t>(Limits::max());
  if (result.ec == std::errc::result_out_of_range || magnitude > kLargest)
    return isNegative ? Limits::min() : Limits::max();
  const auto value = static_cast<std::int64_t>(magnitude);
  return isNegative ? -value : value;
}

bool boolValue(std::string_view text) {
  takeSign(text);
  const std::size_t at = text.find_first_not_of('0');
  return at != std::string_view::npos &&
         std::string_view("123456789YyTt").find(text[at]) != std::string_view::npos;
}

std::string floatText(float value) {
  std::array<char, 64> text;  // the largest float has 39 digits, the smallest 45 decimals
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
  return {text.data(), end.ptr};
}

std::string fixedText(double value, int decimals) {
  std::array<char, 340> text;  // the largest double has 309 digits before its point
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                 std::chars_format::fixed, decimals);
  return {text.data(), end.ptr};
}

}  // namespace orvane
