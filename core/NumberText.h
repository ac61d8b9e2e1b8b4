// Numbers and their texts: what a user types, what a file lists, what the settings store keeps. A
// text is read from its beginning, after ASCII white space, as far as it makes sense; what makes
// none is 0. The same in every locale. Pure functions; any thread, not real-time safe.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orvane {

// The decimal number that the text begins with, with fraction and exponent, rounded once to single
// precision. Too large a number is infinite, too small a one 0, with its sign. "inf", "nan" and
// hexadecimal numbers are none.
float floatValue(std::string_view text);

// The whole number that the text begins with; the nearest one there is when it is out of range.
std::int64_t integerValue(std::string_view text);

// True for a digit from 1 to 9 or one of the letters Y, y, T and t, behind a sign and zeros if
// any: "1", "YES", "true". False for everything else: "0", "no", "on".
bool boolValue(std::string_view text);

// The shortest decimal text without an exponent that floatValue reads back as the same number:
// "440", "499.9". What is not finite reads "inf", "-inf", "nan", which all read back as 0.
std::string floatText(float value);

// With so many decimals (at most 20) and no exponent: "0.50". "inf" and "nan" for what is not
// finite.
std::string fixedText(double value, int decimals);

}  // namespace orvane
