#include "core/NumberText.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace orvane::test {
namespace {

using namespace std::string_view_literals;

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

TEST(NumberText, AFloatIsTheDecimalNumberThatTheTextBeginsWith) {
  EXPECT_EQ(floatValue("440"), 440.0F);
  EXPECT_EQ(floatValue(" \t\n\v\f\r440.5Hz"), 440.5F);
  EXPECT_EQ(floatValue("+442,5"), 442.0F);
  EXPECT_EQ(floatValue("-.5e1x"), -5.0F);
  EXPECT_EQ(floatValue("44e"), 44.0F);
  EXPECT_EQ(floatValue("499.9"), 0x1.f3e666p+8F);
}

TEST(NumberText, ATextThatBeginsWithNoNumberIsZero) {
  for (const auto text : {"", " ", "A", "-", "+.", "inf", "nan", "Hz 440", "--1", "- 1"})
    EXPECT_EQ(floatValue(text), 0.0F) << text;
  EXPECT_EQ(floatValue("0x10"), 0.0F);
}

TEST(NumberText, AFloatOutOfRangeIsInfiniteOrZeroWithItsSign) {
  EXPECT_EQ(floatValue("1e39"), kInfinity);
  EXPECT_EQ(floatValue("-1e39"), -kInfinity);
  EXPECT_EQ(floatValue("1e+39"), kInfinity);
  EXPECT_EQ(floatValue("1e-46"), 0.0F);
  EXPECT_TRUE(std::signbit(floatValue("-1e-46")));
}

TEST(NumberText, WhetherAFloatIsTooLargeOrTooSmallGoesByItsDigitsAndItsExponentTogether) {
  const std::string zeros(50, '0');
  for (const std::string &text :
       {std::string("1000e36"), std::string("0.001e42"), std::string("0.1e40"), "1" + zeros,
        "1" + zeros + "e-10", "0." + zeros + "1e90", "9" + zeros + ".5e-1",
        std::string("1e99999999999999999999")})
    EXPECT_EQ(floatValue(text), kInfinity) << text;
  for (const std::string &text :
       {std::string("1000e-50"), std::string("0.001e-43"), "0." + zeros + "1", "." + zeros + "1e2",
        "1" + zeros + "e-99", "0." + zeros + "1e+3", std::string("1e-99999999999999999999")}) {
    EXPECT_EQ(floatValue(text), 0.0F) << text;
    EXPECT_FALSE(std::signbit(floatValue(text))) << text;
  }
}

TEST(NumberText, AnIntegerIsTheDigitsThatTheTextBeginsWith) {
  EXPECT_EQ(integerValue("7"), 7);
  EXPECT_EQ(integerValue(" \t\n\v\f\r+12 semitones"), 12);
  EXPECT_EQ(integerValue("-11"), -11);
  EXPECT_EQ(integerValue("-0"), 0);
  EXPECT_EQ(integerValue("0007"), 7);
  EXPECT_EQ(integerValue("2.9"), 2);
  EXPECT_EQ(integerValue("1e3"), 1);
  EXPECT_EQ(integerValue("5,6"), 5);
  EXPECT_EQ(integerValue("3\0004"sv), 3);
}

TEST(NumberText, ATextThatBeginsWithNoDigitIsTheIntegerZero) {
  for (const auto text : {"", "   ", "-", "+", "--5", "+-5", "-+5", "- 5", ".5", "x5", "true", "٥"})
    EXPECT_EQ(integerValue(text), 0) << text;
}

TEST(NumberText, AnIntegerOutOfRangeIsTheNearestThereIs) {
  EXPECT_EQ(integerValue("9223372036854775807"), kLargest);
  EXPECT_EQ(integerValue("9223372036854775808"), kLargest);
  EXPECT_EQ(integerValue("18446744073709551616"), kLargest);
  EXPECT_EQ(integerValue("99999999999999999999999999"), kLargest);
  EXPECT_EQ(integerValue("-9223372036854775807"), kSmallest + 1);
  EXPECT_EQ(integerValue("-9223372036854775808"), kSmallest);
  EXPECT_EQ(integerValue("-9223372036854775809"), kSmallest);
  EXPECT_EQ(integerValue("-99999999999999999999999999"), kSmallest);
}

TEST(NumberText, DigitsButZeroAndTheLettersOfYesAndTrueMeanTrue) {
  for (const auto text : {"1", "9", "true", "TRUE", "True", "t", "YES", "yes", "Y", " \t yes", "+1",
                          "-1", "0001", "-00Y", "2", "10", "truly", "1no"})
    EXPECT_TRUE(boolValue(text)) << text;
}

TEST(NumberText, EverythingElseMeansFalse) {
  for (const auto text : {"", " ", "0", "000", "-0", "false", "FALSE", "no", "NO", "n", "off", "on",
                          "0.5", ".1", "x1", "+-1", "- 1", "0 1"})
    EXPECT_FALSE(boolValue(text)) << text;
}

TEST(NumberText, AFloatIsWrittenWithTheFewestDigitsAndNoExponent) {
  EXPECT_EQ(floatText(440.0F), "440");
  EXPECT_EQ(floatText(349.0F), "349");
  EXPECT_EQ(floatText(499.9F), "499.9");
  EXPECT_EQ(floatText(440.37F), "440.37");
  EXPECT_EQ(floatText(0.1F), "0.1");
  EXPECT_EQ(floatText(0.0F), "0");
  EXPECT_EQ(floatText(-12.5F), "-12.5");
  EXPECT_EQ(floatText(16777216.0F), "16777216");
  EXPECT_EQ(floatText(1e10F), "10000000000");
  EXPECT_EQ(floatText(1e-7F), "0.0000001");
  EXPECT_EQ(floatText(std::numeric_limits<float>::denorm_min()),
            "0.000000000000000000000000000000000000000000001");
}

TEST(NumberText, WhatIsNotFiniteIsWrittenAsAWordThatReadsAsZero) {
  EXPECT_EQ(floatText(kInfinity), "inf");
  EXPECT_EQ(floatText(-kInfinity), "-inf");
  EXPECT_EQ(floatText(std::numeric_limits<float>::quiet_NaN()), "nan");
}

TEST(NumberText, AnyFiniteFloatReadsBackAsItself) {
  // Every 9973rd bit pattern: all exponents, both signs.
  for (std::uint64_t bits = 0; bits <= 0xFFFFFFFFU; bits += 9973) {
    const auto word = static_cast<std::uint32_t>(bits);
    float value = 0.0F;
    std::memcpy(&value, &word, sizeof(value));
    if (!std::isfinite(value))
      continue;
    const std::string text = floatText(value);
    ASSERT_EQ(text.find_first_not_of("-.0123456789"), std::string::npos) << text;
    ASSERT_EQ(floatValue(text), value) << text;
    ASSERT_EQ(std::signbit(floatValue(text)), std::signbit(value)) << text;
  }
}

}  // namespace
}  // namespace orvane::test
