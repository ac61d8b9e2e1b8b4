// Whole numbers of calculated ones. Plain arithmetic, any thread.
#pragma once

#include <cstdint>
#include <limits>

namespace orvane {

// Cut toward zero. A value that has no such integer (not a number, infinite, out of range) gives
// the smallest one.
inline std::int32_t wholeNumber(double value) {
  if (!(value > -2147483649.0 && value < 2147483648.0))
    return std::numeric_limits<std::int32_t>::min();
  return static_cast<std::int32_t>(value);
}

}  // namespace orvane
