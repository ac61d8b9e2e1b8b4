#include <cmath>
#include <limits>

#include <QLocale>

#include <gtest/gtest.h>

#include "views/AutoResizeTextField.h"

namespace orvane::test {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr int kMost = 2147483647;

TEST(TextFieldNumber, IsWhatTheTextBeginsWith) {
  struct Row {
    const char *text;
    float asFloat;
    int asInt;
  };
  AutoResizeTextField field;
  for (const Row &row : {Row{"440", 440.0F, 440},
                         {"440.0Hz", 440.0F, 440},
                         {"-12dB", -12.0F, -12},
                         {"+7", 7.0F, 7},
                         {"\u00b10", 0.0F, 0},
                         {" \t 442.5", 442.5F, 442},
                         {".5", 0.5F, 0},
                         {"5.", 5.0F, 5},
                         {"-.25x", -0.25F, 0},
                         {"1e2", 100.0F, 1},
                         {"1E-1", 0.1F, 1},
                         {"1e", 1.0F, 1},
                         {"1e+", 1.0F, 1},
                         {"1,5", 1.0F, 1},
                         {"1 000", 1.0F, 1},
                         {"--1", 0.0F, 0},
                         {"+-1", 0.0F, 0},
                         {"- 1", 0.0F, 0},
                         {".", 0.0F, 0},
                         {".e5", 0.0F, 0},
                         {"", 0.0F, 0},
                         {"Hz 440", 0.0F, 0},
                         {"inf", 0.0F, 0},
                         {"infinity", 0.0F, 0},
                         {"nan", 0.0F, 0},
                         {"0x10", 0.0F, 0},
                         {"007", 7.0F, 7},
                         {"2147483647", 2147483648.0F, kMost},
                         {"2147483648", 2147483648.0F, kMost},
                         {"99999999999999999999", 1e20F, kMost},
                         {"-2147483648", -2147483648.0F, -kMost - 1},
                         {"-2147483649", -2147483648.0F, -kMost - 1},
                         {"1e39", kInfinity, 1},
                         {"-1e39", -kInfinity, -1},
                         {"1e-60", 0.0F, 1}}) {
    SCOPED_TRACE(row.text);
    field.setStringValue(QString::fromUtf8(row.text));
    EXPECT_EQ(field.floatValue(), row.asFloat);
    EXPECT_EQ(field.intValue(), row.asInt);
  }
}

TEST(TextFieldNumber, IsRoundedToSinglePrecisionOnce) {
  AutoResizeTextField field;
  // A little above the middle between 1 and the next number, 1 + 2^-23. In double precision it is
  // the middle itself, which would then round down.
  field.setStringValue(QStringLiteral("1.00000005960464477539063"));
  EXPECT_EQ(field.floatValue(), 1.0F + 0x1p-23F);
}

TEST(TextFieldNumber, ReadsTheSameInEveryLocale) {
  const QLocale former;
  QLocale::setDefault(QLocale(QLocale::German));
  AutoResizeTextField field;
  field.setFloatValue(442.5F);
  EXPECT_EQ(field.stringValue(), QStringLiteral("442.5"));
  EXPECT_EQ(field.floatValue(), 442.5F);
  field.setIntValue(1234567);
  EXPECT_EQ(field.stringValue(), QStringLiteral("1234567"));
  QLocale::setDefault(former);
}

TEST(TextFieldNumber, IsWrittenAsTheShortestTextThatReadsBackAsItself) {
  struct Row {
    float number;
    const char *text;
  };
  AutoResizeTextField field;
  for (const Row &row : {Row{349.0F, "349"},
                         {499.9F, "499.9"},
                         {440.37F, "440.37"},
                         {0.1F, "0.1"},
                         {-7.5F, "-7.5"},
                         {0.0F, "0"},
                         {1e-5F, "0.00001"},
                         {16777216.0F, "16777216"},
                         {1e10F, "10000000000"}}) {
    SCOPED_TRACE(row.text);
    field.setFloatValue(row.number);
    EXPECT_EQ(field.stringValue().toStdString(), row.text);
    EXPECT_EQ(field.floatValue(), row.number);
  }
}

TEST(TextFieldNumber, IsWrittenInFullHoweverLargeOrSmall) {
  AutoResizeTextField field;
  for (const float number : {std::numeric_limits<float>::max(), std::numeric_limits<float>::min(),
                             std::numeric_limits<float>::denorm_min(), -1.17549421e-38F}) {
    field.setFloatValue(number);
    EXPECT_EQ(field.floatValue(), number);
    EXPECT_FALSE(field.stringValue().contains(QLatin1Char('e')));
  }
}

}  // namespace
}  // namespace orvane::test
