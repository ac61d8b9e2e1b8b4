// The signed and plain number texts of the display. The same in every locale. Any thread.
#pragma once

#include <cstdint>
#include <string>

namespace orvane {

// "+7", "±0", "-12".
std::string plusMinusValueString(std::int32_t value);

// "+0.1Hz", "-1.3Hz"; a magnitude below 0.05 reads "±0.0Hz".
std::string plusMinusFloatString(float value);

// "440.0Hz".
std::string hertzString(float value);

}  // namespace orvane
