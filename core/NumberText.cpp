#include "core/NumberText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <system_error>

namespace orvane {
namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// For a number that does not fit a float: whether it is too large rather than too small.
// number: digits, an optional fraction and an optional exponent, with a digit other than 0.
bool isAboveOne(std::string_view number) {
  const std::size_t mark = std::min(number.find_first_of("eE"), number.size());
  const std::string_view mantissa = number.substr(0, mark);
  const auto point = static_cast<std::int64_t>(std::min(mantissa.find('.'), mantissa.size()));
  const auto first = static_cast<std::int64_t>(mantissa.find_first_of("123456789"));
  const std::int64_t magnitude = first < point ? point - first - 1 : point - first;

  std::string_view digits = number.substr(std::min(mark + 1, number.size()));
  const bool isNegative = digits.starts_with('-');
  if (isNegative || digits.starts_with('+'))
    digits.remove_prefix(1);
  // No mantissa is long enough to make up for such an exponent.
  std::int64_t exponent = std::numeric_limits<std::int32_t>::max();
  std::int64_t parsed = 0;
  if (digits.empty())
    exponent = 0;
  else if (std::from_chars(digits.data(), digits.data() + digits.size(), parsed).ec == std::errc())
    exponent = std::min(exponent, parsed);
  return magnitude + (isNegative ? -exponent : exponent) >= 0;
}

// Takes white space and a sign off the beginning; whether the sign is a minus.
bool takeSign(std::string_view &text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  const bool isNegative = text.starts_with('-');
  if (isNegative || text.starts_with('+'))
    text.remove_prefix(1);
  return isNegative;
}

}  // namespace

// The number is cut out first because the library would also read "inf" and "nan"; it is rounded to
// single precision once, not by way of double.
float floatValue(std::string_view text) {
  const bool isNegative = takeSign(text);
  std::size_t at = 0;
  std::size_t digitCount = 0;
  const auto skipDigits = [&text, &digitCount](std::size_t from) {
    for (; from < text.size() && isDigit(text[from]); ++from)
      ++digitCount;
    return from;
  };
  at = skipDigits(at);
  if (at < text.size() && text[at] == '.')
    at = skipDigits(at + 1);
  if (digitCount == 0)
    return 0.0F;
  if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
    std::size_t exponent = at + 1;
    if (exponent < text.size() && (text[exponent] == '+' || text[exponent] == '-'))
      ++exponent;
    if (exponent < text.size() && isDigit(text[exponent]))
      at = skipDigits(exponent);
  }

  const std::string_view number = text.substr(0, at);
  float value = 0.0F;
  const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
  if (result.ec == std::errc::result_out_of_range)
    value = isAboveOne(number) ? std::numeric_limits<float>::infinity() : 0.0F;
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

}  // namespace orvane
