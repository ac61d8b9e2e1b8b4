#include "core/TemperamentTables.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <locale>
#include <string>
#include <string_view>
#include <vector>

#include "tests/core/LoadedTemperaments.h"

namespace orvane {
namespace {

using namespace std::string_literals;

// The value of an entry, read off a list of ratios to 1.
float entryValue(std::string_view entry) {
  const Loaded loaded =
      loadedText("{a = (1, " + std::string(entry) + ", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);}");
  EXPECT_TRUE(loaded.log.empty());
  return loaded.tables.rowCount() == 1 ? loaded.tables.row(0)[1] : -1.0F;
}

TEST(TemperamentTables, ReadRatiosAndCentsFromOneText) {
  const Loaded loaded = loadedText(
      "{ Pythagorean = (1.0, 1.067871094, 1.125, 1.185185185, 1.265625, 1.333333333,"
      " 1.423828125, 1.5, 1.601806641, 1.6875, 1.777777778, 1.8984375);"
      " Equal = (" +
      kTwelveZeros + "); }");
  EXPECT_TRUE(loaded.log.empty());
  EXPECT_EQ(loaded.names(), (std::vector<std::string>{"Equal", "Pythagorean"}));
  EXPECT_EQ(loaded.tables.mTemperamentCount, 2);
  EXPECT_EQ(loaded.row(0), kEqualRow);
  EXPECT_EQ(loaded.row(1), kBuiltInRow);
  ASSERT_NE(loaded.tables.mTemperaments.find("Equal"), nullptr);
  EXPECT_EQ(loaded.tables.mTemperaments.find("Equal")->list()->size(), 12U);
}

TEST(TemperamentTables, BeforeLoadingThereAreNone) {
  const TemperamentTables tables;
  EXPECT_EQ(tables.rowCount(), 0U);
  EXPECT_EQ(tables.mTemperamentCount, 0);
}

TEST(TemperamentTables, AnEmptyDictionaryGivesNoTemperament) {
  for (const auto text : {"{}", " { } ", "{ // none\n}"}) {
    const Loaded loaded = loadedText(text);
    EXPECT_EQ(loaded.tables.rowCount(), 0U);
    EXPECT_EQ(loaded.tables.mTemperamentCount, 0);
    EXPECT_TRUE(loaded.tables.mTemperaments.entries.empty());
    EXPECT_TRUE(loaded.log.empty());
  }
}

TEST(TemperamentTables, NamesThatDifferOnlyInCaseKeepTheOrderOfTheFile) {
  const std::string list = " = (" + kTwelveZeros + ");";
  EXPECT_EQ(
      loadedText("{beta" + list + "b" + list + "A" + list + "a" + list + "B" + list + "}").names(),
      (std::vector<std::string>{"A", "a", "b", "B", "beta"}));
  EXPECT_EQ(loadedText("{a" + list + "B" + list + "b" + list + "A" + list + "}").names(),
            (std::vector<std::string>{"a", "A", "B", "b"}));
}

TEST(TemperamentTables, ManyEqualNamesKeepTheOrderOfTheFile) {
  // 64 spellings of one name, enough for an unstable sort to show itself.
  std::string text = "{";
  std::vector<std::string> expected;
  for (unsigned i = 0; i < 64; ++i) {
    std::string name = "abcdef";
    for (unsigned letter = 0; letter < 6; ++letter) {
      if ((i * 37 % 64 >> letter & 1) != 0)
        name[letter] = static_cast<char>(name[letter] - 'a' + 'A');
    }
    expected.push_back(name);
    text += name + " = (" + kTwelveZeros + ");";
  }
  EXPECT_EQ(loadedText(text + "}").names(), expected);
}

TEST(TemperamentTables, NamesAreSortedWithoutRegardToCaseInAllOfUnicode) {
  const auto sorted = [](const std::vector<std::u16string> &names) {
    std::u16string text = u"{";
    for (const std::u16string &name : names)
      text += u"\"" + name + u"\" = (0,0,0,0,0,0,0,0,0,0,0,0);";
    Loaded loaded;
    loaded.tables.loadText(text + u"}", "test", nullptr);
    return loaded.names();
  };
  using Names = std::vector<std::string>;
  // Folded to small letters, so that the underscore comes before every letter.
  EXPECT_EQ(sorted({u"Za", u"_a", u"zA", u"1"}), (Names{"1", "_a", "Za", "zA"}));
  EXPECT_EQ(sorted({u"öb", u"ÖA", u"Ż", u"żA", u"z"}), (Names{"z", "ÖA", "öb", "Ż", "żA"}));
  EXPECT_EQ(sorted({u"ДБ", u"да", u"Σβ", u"σα", u"ςγ"}), (Names{"σα", "Σβ", "ςγ", "да", "ДБ"}));
  // A sharp s equals two s.
  EXPECT_EQ(sorted({u"STRASSE", u"straße", u"Strasse"}), (Names{"STRASSE", "straße", "Strasse"}));
  EXPECT_EQ(sorted({u"straßf", u"STRASSE"}), (Names{"STRASSE", "straßf"}));
  // By code point: U+E000 before U+1D11E, whose first unit is smaller.
  EXPECT_EQ(sorted({u"\U0001d11e", u"\ue000"}), (Names{"\ue000", "\U0001d11e"}));
  // Capitals beyond the first 65536 characters.
  EXPECT_EQ(sorted({u"\U00010428b", u"\U00010400a"}), (Names{"\U00010400a", "\U00010428b"}));
}

TEST(TemperamentTables, EntriesAfterTheTwelfthAreIgnored) {
  const Loaded loaded = loadedText("{a = (" + kTwelveZeros + ", 99); b = (" + kTwelveZeros +
                                   ", x, (), {y = z;}, <00>); }");
  EXPECT_TRUE(loaded.log.empty());
  EXPECT_EQ(loaded.tables.rowCount(), 2U);
  EXPECT_EQ(loaded.row(0), kEqualRow);
  EXPECT_EQ(loaded.row(1), kEqualRow);
}

TEST(TemperamentTables, RatiosAreDividedByTheFirst) {
  EXPECT_EQ(
      loadedText("{a = (2.0, 2.1, 2.25, 2.4, 2.5, 2.7, 2.8, 3, 3.2, 3.3, 3.6, 3.75);}").row(0),
      (Row{0x1p+0F, 0x1.0cccccp+0F, 0x1.2p+0F, 0x1.333334p+0F, 0x1.4p+0F, 0x1.59999ap+0F,
           0x1.666666p+0F, 0x1.8p+0F, 0x1.99999ap+0F, 0x1.a66666p+0F, 0x1.ccccccp+0F, 0x1.ep+0F}));
}

TEST(TemperamentTables, FrequenciesServeAsRatios) {
  EXPECT_EQ(loadedText("{a = (261.63, 277.18, 293.66, 311.13, 329.63, 349.23, 369.99, 392.00, "
                       "415.30, 440.00, 466.16, 493.88);}")
                .row(0),
            (Row{0x1p+0F, 0x1.0f3722p+0F, 0x1.1f573cp+0F, 0x1.306f5p+0F, 0x1.428966p+0F,
                 0x1.55b706p+0F, 0x1.6a0738p+0F, 0x1.7f9088p+0F, 0x1.965cf8p+0F, 0x1.ae881ap+0F,
                 0x1.c820f4p+0F, 0x1.e34092p+0F}));
}

TEST(TemperamentTables, ANegativeFirstRatioTurnsTheSigns) {
  EXPECT_EQ(loadedText("{a = (-2, 1, -1, 2, -2, 4, -4, 8, -8, 1, 0, 3);}").row(0),
            (Row{1.0F, -0.5F, 0.5F, -1.0F, 1.0F, -2.0F, 2.0F, -4.0F, 4.0F, -0.5F, -0.0F, -1.5F}));
}

TEST(TemperamentTables, TheTonicIsOneEvenUnderAnInfiniteFirstRatio) {
  const Loaded loaded = loadedText("{a = (1e39, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11);}");
  EXPECT_EQ(loaded.row(0), (Row{1.0F}));  // eleven zeros
}

TEST(TemperamentTables, RatiosNeedNotAscendNorStayBelowTheOctave) {
  EXPECT_EQ(loadedText("{a = (1, 8, 0.25, 0, 3, 2, 1, 5, 6, 7, 9, 0.5);}").row(0),
            (Row{1.0F, 8.0F, 0.25F, 0.0F, 3.0F, 2.0F, 1.0F, 5.0F, 6.0F, 7.0F, 9.0F, 0.5F}));
}

TEST(TemperamentTables, CentsAreAddedInSinglePrecision) {
  // Degrees 8, 10 and 11 come out differently when the sum is formed in double precision.
  EXPECT_EQ(loadedText("{a = (0, 9.1, -8.4, -5.9, -2.7, 1.7, 4.9, 7.4, -10.1, -7.9, -4.1, -1.4);}")
                .row(0),
            (Row{0x1p+0F, 0x1.10a6e6p+0F, 0x1.1df59ep+0F, 0x1.2f66bap+0F, 0x1.420982p+0F,
                 0x1.560e02p+0F, 0x1.6b1098p+0F, 0x1.8135acp+0F, 0x1.9402c4p+0F, 0x1.ac942cp+0F,
                 0x1.c70faap+0F, 0x1.e2df7cp+0F}));
}

TEST(TemperamentTables, TwelveZerosAreEqualTemperament) {
  const Loaded loaded = loadedText("{a = (" + kTwelveZeros + ");}");
  EXPECT_EQ(loaded.row(0), kEqualRow);
  EXPECT_EQ(loaded.tables.toolTip(0),
            "cents = (0.000, 0.000, 0.000, 0.000, 0.000, 0.000, 0.000, 0.000, 0.000, 0.000, 0.000, "
            "0.000)");
}

TEST(TemperamentTables, AFirstEntryThatReadsAsZeroMeansCents) {
  for (const auto first : {"0", "0.0", "-0", "+.0", "0e9", "none", "\"\"", "()", "{}", "<01>",
                           "1e-60", "inf", "nan", "0x10"}) {
    EXPECT_EQ(loadedText("{a = ("s + first + ", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);}").row(0),
              kEqualRow)
        << first;
  }
}

TEST(TemperamentTables, ALaterEntryThatIsNoNumberReadsAsZero) {
  EXPECT_EQ(loadedText("{a = (0, x, (1), {}, <01>, '', 0, 0, 0, 0, 0, 0);}").row(0), kEqualRow);
  EXPECT_EQ(loadedText("{a = (4, x, (1), {a = 2;}, <01>, '', 4, 4, 4, 4, 4, 4);}").row(0),
            (Row{1.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 1.0F, 1.0F, 1.0F, 1.0F, 1.0F, 1.0F}));
}

TEST(TemperamentTables, EntriesAreReadByTheirLeadingDecimalNumber) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  const struct {
    const char *entry;
    float value;
  } cases[] = {
      {"1.5", 1.5F},
      {"+1.5", 1.5F},
      {"-1.5", -1.5F},
      {"\" \\t\\n\\v\\f\\r1.5\"", 1.5F},
      {"'1.5 cents'", 1.5F},
      {"'1,5'", 1.0F},
      {"'3/2'", 3.0F},
      {"1.5.5", 1.5F},
      {".5", 0.5F},
      {"5.", 5.0F},
      {"-.5", -0.5F},
      {"007", 7.0F},
      {"15e-1", 1.5F},
      {"0.15E+1", 1.5F},
      {"2e", 2.0F},
      {"2e+", 2.0F},
      {"2e-x", 2.0F},
      {"2ex", 2.0F},
      {".", 0.0F},
      {"-", 0.0F},
      {"+", 0.0F},
      {"-.", 0.0F},
      {".e5", 0.0F},
      {"e5", 0.0F},
      {"--1", 0.0F},
      {"+-1", 0.0F},
      {"'- 1'", 0.0F},
      {"x1", 0.0F},
      {"0x1p3", 0.0F},
      {"1x", 1.0F},
      {"inf", 0.0F},
      {"-infinity", 0.0F},
      {"nan", 0.0F},
      {"''", 0.0F},
      {"' '", 0.0F},
      // An Arabic-Indic digit is no digit here.
      {"'\\U0661'", 0.0F},
      {"'1\\U06611'", 1.0F},
      {"3.4028235e38", std::numeric_limits<float>::max()},
      {"3.4028236e38", kInfinity},
      {"1e99", kInfinity},
      {"-1e99", -kInfinity},
      {"1e999999999999999999999", kInfinity},
      {"0.0001e999", kInfinity},
      {"1000000000000000000000000000000000000000", kInfinity},
      {"1e-99", 0.0F},
      {"1000e-99", 0.0F},
      {"1e-999999999999999999999", 0.0F},
      {"0e999999999999999999999", 0.0F},
      {"0.00000000000000000000000000000000000000000000000001", 0.0F},
      {"7.0064923216240853e-46", 0.0F},
      {"7.0064923216240854e-46", std::numeric_limits<float>::denorm_min()},
      {"1e-45", std::numeric_limits<float>::denorm_min()},
  };
  for (const auto &row : cases)
    EXPECT_EQ(entryValue(row.entry), row.value) << row.entry;
}

TEST(TemperamentTables, EntriesAreRoundedOnceToSinglePrecision) {
  EXPECT_EQ(entryValue("16777217"), 16777216.0F);
  EXPECT_EQ(entryValue("0.1"), 0x1.99999ap-4F);
  // Just above the middle of two floats; by way of double it would become the middle, then 1.
  EXPECT_EQ(entryValue("1.0000000596046447753906251"), 0x1.000002p+0F);
}

TEST(TemperamentTables, ANegativeNumberTooSmallIsANegativeZero) {
  EXPECT_TRUE(std::signbit(entryValue("-1e-99")));
  EXPECT_FALSE(std::signbit(entryValue("1e-99")));
  // No number at all is a plain zero.
  EXPECT_FALSE(std::signbit(entryValue("-")));
  EXPECT_FALSE(std::signbit(entryValue("-x")));
}

TEST(TemperamentTables, DoNotDependOnTheLocale) {
  class CommaForPoint : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
  };
  const std::locale previous =
      std::locale::global(std::locale(std::locale::classic(), new CommaForPoint));
  for (const auto name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8"}) {
    if (std::setlocale(LC_NUMERIC, name) != nullptr)
      break;
  }
  const Loaded loaded = loadedText("{a = (0, 0.5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);}");
  std::setlocale(LC_NUMERIC, "C");
  std::locale::global(previous);
  // 0.5 cents, to the three decimals that single precision leaves of them.
  EXPECT_EQ(loaded.tables.toolTip(0).substr(0, 22), "cents = (0.000, 0.500,");
}

TEST(TemperamentTables, TheToolTipOfTheBuiltInTableIsKnown) {
  Loaded loaded;
  loaded.loadText("");
  EXPECT_EQ(loaded.tables.toolTip(0),
            "cents = (-5.865, 7.820, -1.955, -11.730, 1.955, -7.820, 5.865, -3.910, 9.775, 0.000, "
            "-9.775, 3.910)");
}

TEST(TemperamentTables, TheToolTipIsRelativeToDegreeNine) {
  EXPECT_EQ(loadedText("{a = (0, 9.1, -8.4, -5.9, -2.7, 1.7, 4.9, 7.4, -10.1, -7.9, -4.1, -1.4);}")
                .tables.toolTip(0),
            "cents = (7.900, 17.000, -0.500, 2.000, 5.200, 9.600, 12.800, 15.300, -2.200, 0.000, "
            "3.800, 6.500)");
}

TEST(TemperamentTables, ToolTipsKeepANegativeZero) {
  EXPECT_EQ(
      loadedText("{a = (0, -0.0001, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);}").tables.toolTip(0),
      "cents = (0.000, -0.000, 0.000, 0.000, 0.000, 0.000, 0.000, 0.000, 0.000, 0.000, 0.000, "
      "0.000)");
}

TEST(TemperamentTables, ToolTipsOfOddRatiosAreInfiniteOrNoNumbers) {
  EXPECT_EQ(loadedText("{a = (1, 0, -1, 1, 1, 1, 1, 1, 1, 1.681792831, 1, 1);}")
                .tables.toolTip(0)
                .substr(0, 26),
            "cents = (0.000, -inf, nan,");
  // Degree 9 is 0 even where it has no logarithm.
  EXPECT_EQ(loadedText("{a = (1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 1, -1);}").tables.toolTip(0),
            "cents = (inf, inf, inf, inf, inf, inf, inf, inf, inf, 0.000, inf, nan)");
}

TEST(TemperamentTables, AListOfFewerThanTwelveEntriesIsLeftOut) {
  const Loaded loaded = loadedText("{c = (" + kTwelveZeros + "); b = (1, 2, 3); a = (" +
                                   kTwelveZeros + "); d = (); e = (0,0,0,0,0,0,0,0,0,0,0); }");
  EXPECT_EQ(loaded.names(), (std::vector<std::string>{"a", "c"}));
  EXPECT_EQ(loaded.tables.mTemperamentCount, 2);
  EXPECT_EQ(loaded.log, (std::vector<std::string>{kInvalidLine, kInvalidLine, kInvalidLine}));
  EXPECT_EQ(loaded.tables.mTemperaments.entries.size(), 5U);
}

TEST(TemperamentTables, ARejectedFirstTemperamentLeavesNoGap) {
  const Loaded loaded = loadedText(
      "{b = (2, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4); A = (1, 2, 3); c = (" + kTwelveZeros + ");}");
  EXPECT_EQ(loaded.names(), (std::vector<std::string>{"b", "c"}));
  EXPECT_EQ(loaded.tables.mTemperamentCount, 2);
  EXPECT_EQ(loaded.row(0),
            (Row{1.0F, 2.0F, 2.0F, 2.0F, 2.0F, 2.0F, 2.0F, 2.0F, 2.0F, 2.0F, 2.0F, 2.0F}));
  EXPECT_EQ(loaded.row(1), kEqualRow);
  EXPECT_EQ(loaded.tables.row(0), loaded.tables.mTemperamentTables.get());
  EXPECT_EQ(loaded.tables.row(1), loaded.tables.mTemperamentTables.get() + 12);
  EXPECT_EQ(loaded.log, std::vector<std::string>{kInvalidLine});
}

TEST(TemperamentTables, WhenEveryListIsTooShortThereIsNone) {
  const Loaded loaded = loadedText("{a = (1, 2, 3);}");
  EXPECT_EQ(loaded.tables.rowCount(), 0U);
  EXPECT_EQ(loaded.tables.mTemperamentCount, 0);
}

TEST(TemperamentTables, ARepeatedNameCountsOnceWithItsLastList) {
  const Loaded loaded = loadedText("{a = (1, 2, 3); a = (" + kTwelveZeros + ");}");
  EXPECT_EQ(loaded.tables.mTemperamentCount, 1);
  EXPECT_EQ(loaded.row(0), kEqualRow);
  EXPECT_TRUE(loaded.log.empty());
}

TEST(TemperamentTables, ATextThatIsNoPropertyListGivesTheBuiltInTable) {
  expectBuiltIn(loadedText("{ a = (1, 2"), "test: line 1, column 12: expected ',' or ')'");
  expectBuiltIn(loadedText("{\n  a = (" + kTwelveZeros + ")\n}"),
                "test: line 3, column 1: expected ';'");
  expectBuiltIn(loadedText(""), "test: line 1, column 1: the text is empty");
}

TEST(TemperamentTables, ControlCharactersOfTheSourceDoNotBreakTheLogLine) {
  TemperamentTables tables;
  std::string line;
  tables.loadText(u"", std::string("a\0b\1c\x1f\x7f \xc3\xa9", 10),
                  [&line](const std::string &text) { line = text; });
  EXPECT_EQ(
      line,
      "failed to read Temperaments.txt. error: a?b?c?? \xc3\xa9: line 1, column 1: the text is "
      "empty");
}

TEST(TemperamentTables, ARootThatIsNoDictionaryOfListsGivesTheBuiltInTable) {
  expectBuiltIn(loadedText("// x\n  (a, b)"), "test: line 2, column 3: the root is no dictionary");
  expectBuiltIn(loadedText("word"), "test: line 1, column 1: the root is no dictionary");
  const std::string reason = ": a temperament's value is no list, as \"(0, 0, ...)\"";
  expectBuiltIn(loadedText("{ a = (" + kTwelveZeros + ");\n  b = 1; }"),
                "test: line 2, column 7" + reason);
  expectBuiltIn(loadedText("{a = {};}"), "test: line 1, column 6" + reason);
  expectBuiltIn(loadedText("{a = <00>;}"), "test: line 1, column 6" + reason);
}

TEST(TemperamentTables, LoadingAgainReplacesEverything) {
  Loaded loaded = loadedText("{a = (" + kTwelveZeros + "); b = (" + kTwelveZeros + ");}");
  loaded.loadText("{c = (2, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4);}");
  EXPECT_EQ(loaded.names(), std::vector<std::string>{"c"});
  EXPECT_EQ(loaded.tables.mTemperamentCount, 1);
  EXPECT_EQ(loaded.tables.mTemperaments.find("a"), nullptr);
  EXPECT_EQ(loaded.row(0)[1], 2.0F);
  loaded.loadText("broken!");
  expectBuiltIn(loaded);
  EXPECT_EQ(loaded.tables.toolTip(0).substr(0, 23), "cents = (-5.865, 7.820,");
}

TEST(TemperamentTables, AnEmptyLogIsAllowed) {
  TemperamentTables tables;
  tables.loadText(u"{a = (1);", "test", nullptr);
  EXPECT_EQ(tables.rowCount(), 1U);
  tables.loadText(u"{a = (1);}", "test", TemperamentTables::Log());
  EXPECT_EQ(tables.rowCount(), 0U);
}

}  // namespace
}  // namespace orvane
