#include "core/NumberText.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <locale>
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
  EXPECT_EQ(floatValue("7."), 7.0F);
  for (const auto text : {"44e", "44E+", "44e-", "44ex", "44.e.5", "44-1", "44.0.9"})
    EXPECT_EQ(floatValue(text), 44.0F) << text;
  EXPECT_EQ(floatValue("499.9"), 0x1.f3e666p+8F);
}

TEST(NumberText, ATextThatBeginsWithNoNumberIsZero) {
  for (const auto text : {"", " ", "A", "-", ".", "-.", "..5", "-.e5", "e5", "inf", "-inf", "nan",
                          "Hz 440", "--1", "+-1", "- 1", "x", "0x10"}) {
    EXPECT_EQ(floatValue(text), 0.0F) << text;
    EXPECT_FALSE(std::signbit(floatValue(text))) << text;
  }
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

TEST(NumberText, AnExponentOfAnyLengthLeavesZeroAtZero) {
  for (const auto text : {"0e9999999", "0.000e99999999999999999999", "0e-9999999", "00e39"})
    EXPECT_EQ(floatValue(text), 0.0F) << text;
}

TEST(NumberText, AFloatIsRoundedOnceAlsoAtTheEndsOfItsRange) {
  // The largest float is (2^24 - 1) * 2^104 = 340282346638528859811704183484516925440; from half a
  // step of 2^104 above it, 340282356779733661637539395458142568448, a number is too large.
  EXPECT_EQ(floatValue("340282346638528859811704183484516925440"), 0x1.fffffep+127F);
  EXPECT_EQ(floatValue("340282356779733661637539395458142568447"), 0x1.fffffep+127F);
  EXPECT_EQ(floatValue("340282356779733661637539395458142568448"), kInfinity);
  // The smallest is 2^-149 = 1.40129846432481707092…e-45, and up to its half a number is too small.
  EXPECT_EQ(floatValue("7.0064923216240854e-46"), 0x1p-149F);
  EXPECT_EQ(floatValue("7.0064923216240853e-46"), 0.0F);
}

// A locale that writes one half as "0,5", as many do.
struct CommaForPoint : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(NumberText, TheLocaleDoesNotChangeANumber) {
  const std::locale before = std::locale::global(std::locale(std::locale(), new CommaForPoint));
  const std::string zeros(60, '0');
  EXPECT_EQ(floatValue("440.5"), 440.5F);
  EXPECT_EQ(floatValue("440,5"), 440.0F);
  EXPECT_EQ(floatValue("1.5e39"), kInfinity);
  EXPECT_EQ(floatValue("0.1e40"), kInfinity);
  EXPECT_EQ(floatValue("1.0e-50"), 0.0F);
  EXPECT_EQ(floatValue("0." + zeros + "1"), 0.0F);
  EXPECT_EQ(floatValue("1000" + zeros + ".5"), kInfinity);
  EXPECT_EQ(integerValue("1000.5"), 1000);
  EXPECT_EQ(floatText(1234.5F), "1234.5");
  std::locale::global(before);
}

TEST(NumberText, NothingBehindTheEndOfTheTextIsRead) {
  const auto text = "440.25"sv;
  EXPECT_EQ(floatValue(text.substr(0, 2)), 44.0F);
  EXPECT_EQ(floatValue(text.substr(0, 5)), 440.2F);
  EXPECT_EQ(floatValue("5e39"sv.substr(0, 3)), 5000.0F);
  EXPECT_EQ(integerValue(text.substr(0, 2)), 44);
  EXPECT_EQ(floatValue(text.substr(0, 0)), 0.0F);
  EXPECT_EQ(integerValue(text.substr(0, 0)), 0);
  EXPECT_FALSE(boolValue("01"sv.substr(0, 1)));
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

TEST(NumberText, ANumberHasAsManyDecimalsAsAskedForAndNoExponent) {
  EXPECT_EQ(fixedText(0.5, 2), "0.50");
  EXPECT_EQ(fixedText(-0.04, 1), "-0.0");
  EXPECT_EQ(fixedText(1e22, 0), "10000000000000000000000");
  EXPECT_EQ(fixedText(-std::numeric_limits<double>::max(), 20).size(), 1U + 309U + 1U + 20U);
  EXPECT_EQ(fixedText(std::numeric_limits<double>::infinity(), 3), "inf");
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
