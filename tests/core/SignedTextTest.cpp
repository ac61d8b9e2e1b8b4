#include "core/SignedText.h"

#include <clocale>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace orvane::test {
namespace {

TEST(SignedText, AWholeNumberCarriesPlusPlusMinusOrMinus) {
  EXPECT_EQ(plusMinusValueString(0), "±0");
  EXPECT_EQ(plusMinusValueString(7), "+7");
  EXPECT_EQ(plusMinusValueString(-12), "-12");
  EXPECT_EQ(plusMinusValueString(2147483647), "+2147483647");
  EXPECT_EQ(plusMinusValueString(std::numeric_limits<std::int32_t>::min()), "-2147483648");
}

TEST(SignedText, AMagnitudeBelowOneTwentiethReadsAsPlusMinusZero) {
  EXPECT_EQ(plusMinusFloatString(0.0F), "±0.0Hz");
  EXPECT_EQ(plusMinusFloatString(0.04F), "±0.0Hz");
  EXPECT_EQ(plusMinusFloatString(-0.04F), "±0.0Hz");
  EXPECT_EQ(plusMinusFloatString(0.06F), "+0.1Hz");
  EXPECT_EQ(plusMinusFloatString(-1.26F), "-1.3Hz");
}

TEST(SignedText, OneTwentiethInSinglePrecisionLiesSlightlyAboveAndReadsPlus) {
  EXPECT_EQ(plusMinusFloatString(0.05F), "+0.1Hz");
  EXPECT_EQ(plusMinusFloatString(-0.05F), "-0.1Hz");
  EXPECT_EQ(plusMinusFloatString(std::nextafter(0.05F, 0.0F)), "±0.0Hz");
}

TEST(SignedText, HertzAreRoundedToTheNearestTenthOfTheExactValue) {
  EXPECT_EQ(hertzString(440.0F), "440.0Hz");
  EXPECT_EQ(hertzString(261.62557F), "261.6Hz");
  EXPECT_EQ(hertzString(0.25F), "0.2Hz");  // a tie goes to the even digit
  EXPECT_EQ(hertzString(0.75F), "0.8Hz");
}

TEST(SignedText, TheDecimalPointDoesNotFollowTheLocale) {
  const char *german = std::setlocale(LC_ALL, "de_DE.UTF-8");
  EXPECT_EQ(hertzString(440.5F), "440.5Hz") << (german == nullptr ? "(no such locale)" : german);
  EXPECT_EQ(plusMinusFloatString(1.5F), "+1.5Hz");
  std::setlocale(LC_ALL, "C");
}

}  // namespace
}  // namespace orvane::test
