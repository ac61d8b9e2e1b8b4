#include "core/SignedText.h"

#include <array>
#include <charconv>
#include <cmath>

namespace orvane {
namespace {

constexpr const char *kPlus = "+";
constexpr const char *kPlusMinus = "\u00B1";
constexpr const char *kMinus = "-";

// As "%.1f" in the C locale: correctly rounded from the exact value. 310 digits hold any double.
std::string oneDecimal(double value) {
  std::array<char, 320> text;
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 1);
  return {text.data(), end.ptr};
}

}  // namespace

std::string plusMinusValueString(std::int32_t value) {
  const char *sign = value < 0 ? kMinus : value == 0 ? kPlusMinus : kPlus;
  return sign + std::to_string(std::abs(static_cast<std::int64_t>(value)));
}

std::string plusMinusFloatString(float value) {
  const double magnitude = static_cast<double>(std::fabs(value));
  if (magnitude < 0.05)
    return std::string(kPlusMinus) + "0.0Hz";
  return (value < 0.0F ? kMinus : kPlus) + oneDecimal(magnitude) + "Hz";
}

std::string hertzString(float value) {
  return oneDecimal(static_cast<double>(value)) + "Hz";
}

}  // namespace orvane
