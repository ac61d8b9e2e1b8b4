#include "core/ScalaFile.h"

#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/core/LoadedTemperaments.h"

namespace orvane::test {
namespace {

using namespace std::string_view_literals;
using Values = std::array<std::string, 12>;

// The file with those eleven pitches, one a line, below its octave.
std::string file(const std::string &pitches, const std::string &description = "A scale",
                 const std::string &octave = "2/1") {
  return description + "\n12\n" + pitches + "\n" + octave + "\n";
}

constexpr const char *kJust = "16/15\n9/8\n6/5\n5/4\n4/3\n45/32\n3/2\n8/5\n5/3\n9/5\n15/8";
const Values kJustValues = {"1",       "1.066666667", "1.125", "1.2",         "1.25", "1.333333333",
                            "1.40625", "1.5",         "1.6",   "1.666666667", "1.8",  "1.875"};

ScalaFile parsed(std::string_view bytes) {
  std::string reason;
  const auto scala = ScalaFile::parse(bytes, reason);
  EXPECT_TRUE(scala.has_value()) << reason;
  return scala.value_or(ScalaFile());
}

std::string reasonFor(std::string_view bytes) {
  std::string reason;
  EXPECT_FALSE(ScalaFile::parse(bytes, reason).has_value()) << bytes.substr(0, 200);
  return reason;
}

// With the given pitch as degree 1, in line 3.
ScalaPitch pitch(const std::string &line) {
  const std::string rest = std::string(kJust).substr(std::string(kJust).find('\n') + 1);
  return parsed(file(line + "\n" + rest)).pitches[0];
}
std::string pitchReason(const std::string &line) {
  const std::string rest = std::string(kJust).substr(std::string(kJust).find('\n') + 1);
  return reasonFor(file(line + "\n" + rest));
}

TEST(ScalaFile, OfRatiosGivesAListOfRatios) {
  const ScalaFile scala = parsed(file(kJust));
  EXPECT_EQ(scala.description, "A scale");
  EXPECT_EQ(scala.listValues(), kJustValues);
  EXPECT_EQ(scala.pitches[6].ratio, 1.5);
  EXPECT_NEAR(scala.pitches[6].cents, 701.955000865387, 1e-9);
  EXPECT_TRUE(scala.pitches[6].isRatio);
}

// Two pitches of a quarter comma's meantone are pure, 5/4 and 25/16: 386.313714 and 772.627428
// cents.
TEST(ScalaFile, WithCentsGivesCentsFromEqualTemperament) {
  const ScalaFile scala = parsed(
      file(" 76.04900\n 193.15686\n 310.26471\n 5/4\n 503.42157\n 579.47057\n 696.57843\n 25/16\n"
           " 889.73529\n 1006.84314\n 1082.89214"));
  EXPECT_EQ(scala.listValues(),
            (Values{"0", "-23.951", "-6.84314", "10.26471", "-13.686286", "3.42157", "-20.52943",
                    "-3.42157", "-27.372572", "-10.26471", "6.84314", "-17.10786"}));
}

TEST(ScalaFile, OneCentsValueAmongRatiosMakesAListOfCents) {
  const std::string ratios = std::string(kJust).substr(0, std::string(kJust).rfind('\n'));
  const Values values = parsed(file(ratios + "\n1088.0")).listValues();
  EXPECT_EQ(values[0], "0");
  EXPECT_EQ(values[7], "1.955001");
  EXPECT_EQ(values[11], "-12");
}

TEST(ScalaFile, PitchesAreCentsWithAPeriodAndElseRatios) {
  for (const char *line : {"81/64", " 81/64", "\t81/64 ", "81 / 64", "81/\t64", "162/128",
                           "81/64 E", "81/64   E\\", "81/64! a third", "81/64, a third", "81/64."})
    EXPECT_EQ(pitch(line).ratio, 1.265625) << line;
  for (const char *line : {"408.0", "408.", "  408.00000", "408.0 cents", "408.0cents", "408. E",
                           "0408.0", "408.0 / 2", "408.0\tE\\"}) {
    EXPECT_EQ(pitch(line).cents, 408.0) << line;
    EXPECT_NEAR(pitch(line).ratio, 1.26575659397, 1e-11) << line;
    EXPECT_FALSE(pitch(line).isRatio) << line;
  }
  EXPECT_EQ(pitch("5").ratio, 5.0);
  EXPECT_EQ(pitch("5").cents, 1200.0 * std::log2(5.0));
  EXPECT_EQ(pitch("10/20").ratio, 0.5);
  EXPECT_EQ(pitch("-5.0").cents, -5.0);
  EXPECT_EQ(pitch(" -.5").cents, -0.5);
  EXPECT_EQ(pitch("0.0").ratio, 1.0);
  EXPECT_EQ(pitch("2147483647/2147483646").ratio, 1.0 + 1.0 / 2147483646.0);
  EXPECT_EQ(pitch("4722366482869645213696/2361183241434822606848").ratio, 2.0);  // 2^72 and 2^71
}

TEST(ScalaFile, LinesThatAreNoPitchAreRefused) {
  const struct {
    const char *line;
    const char *reason;
  } rows[] = {
      {"", "line 3: '' is no pitch, as 3/2 or 701.955"},
      {"x", "line 3: 'x' is no pitch, as 3/2 or 701.955"},
      {"  E 5/4", "line 3: 'E 5/4' is no pitch, as 3/2 or 701.955"},
      {".", "line 3: '.' is no pitch, as 3/2 or 701.955"},
      {"-.", "line 3: '-.' is no pitch, as 3/2 or 701.955"},
      {"+5.0", "line 3: '+5.0' is no pitch, as 3/2 or 701.955"},
      {"- 5.0", "line 3: '- 5.0' is no pitch, as 3/2 or 701.955"},
      {"5/", "line 3: '5/' is no pitch, as 3/2 or 701.955"},
      {"/4", "line 3: '/4' is no pitch, as 3/2 or 701.955"},
      {"5/-4", "line 3: '5/-4' is no pitch, as 3/2 or 701.955"},
      {"5/4/3", "line 3: '5/4/3' is no pitch, as 3/2 or 701.955"},
      {"5:4", "line 3: '5:4' is no pitch, as 3/2 or 701.955"},
      {"701,955", "line 3: '701,955' is no pitch, as 3/2 or 701.955"},
      {"1.2.3", "line 3: '1.2.3' is no pitch, as 3/2 or 701.955"},
      {"5/4.5", "line 3: '5/4.5' is no pitch, as 3/2 or 701.955"},
      {"1.0e2", "line 3: '1.0e2' is no pitch, as 3/2 or 701.955"},
      {"1e-2", "line 3: '1e-2' is no pitch, as 3/2 or 701.955"},
      {"1E+2", "line 3: '1E+2' is no pitch, as 3/2 or 701.955"},
      {"\x1b[31m\xe9~\x7f", "line 3: '?[31m?~?' is no pitch, as 3/2 or 701.955"},
      {"a234567890123456789012345678901234567890",
       "line 3: 'a234567890123456789012345678901234567890' is no pitch, as 3/2 or 701.955"},
      {"a2345678901234567890123456789012345678901",
       "line 3: 'a234567890123456789012345678901234567890...' is no pitch, as 3/2 or 701.955"},
      {"-3/2", "line 3: '-3/2' is a negative ratio"},
      {"-2", "line 3: '-2' is a negative ratio"},
      {"0/2", "line 3: '0/2' is out of range"},
      {"2/0", "line 3: '2/0' is out of range"},
      {"0/0", "line 3: '0/0' is out of range"},
      {"0", "line 3: '0' is out of range"},
      {"153600.0", "line 3: '153600.0' is out of range"},    // 2^128
      {"-151200.1", "line 3: '-151200.1' is out of range"},  // below 2^-126
  };
  for (const auto &row : rows)
    EXPECT_EQ(pitchReason(row.line), row.reason);
  // The largest number of single precision, and what comes after it in double precision.
  EXPECT_EQ(pitch("340282346638528859811704183484516925440/1").ratio, 0x1.fffffep127);
  EXPECT_EQ(pitchReason("340282346638528897590636046441678635008/1"),
            "line 3: '340282346638528897590636046441678635008/...' is out of range");
  EXPECT_NEAR(pitch("-151200.0").ratio, 0x1p-126, 0x1p-140);
  EXPECT_EQ(pitchReason(std::string(400, '9')).substr(0, 14), "line 3: '99999");
  EXPECT_EQ(pitchReason("1" + std::string(400, '0') + ".0"),
            "line 3: '1" + std::string(39, '0') + "...' is out of range");
  EXPECT_EQ(pitch("0." + std::string(400, '0') + "1").cents, 0.0);
}

TEST(ScalaFile, CommentsMayStandAnywhereAndCountAsLines) {
  const std::string text =
      "! just.scl\n!\nJust\n! how many\n 12\n!\n16/15\n!9/8\n9/8\n6/5\n5/4\n4/3\n"
      "45/32\n3/2\n8/5\n5/3\n9/5\n15/8\n! the octave\n2/1\n! the end";
  EXPECT_EQ(parsed(text).listValues(), kJustValues);
  EXPECT_EQ(reasonFor("!\n!\nJust\n!\n 12\n! \n16/15\n!\nx\n"),
            "line 9: 'x' is no pitch, as 3/2 or 701.955");
}

TEST(ScalaFile, TheDescriptionMayBeEmptyAndIsPlainUtf8) {
  EXPECT_EQ(parsed(file(kJust, "")).description, "");
  EXPECT_EQ(parsed(file(kJust, " \t ")).description, "");
  EXPECT_EQ(parsed(file(kJust, "\tTwo  words ")).description, "Two  words");
  EXPECT_EQ(parsed(file(kJust, " ! no comment")).description, "! no comment");
  EXPECT_EQ(parsed(file(kJust, "temp\xc3\xa9rament")).description, "temp\u00e9rament");
  EXPECT_EQ(parsed(file(kJust, "temp\xe9rament")).description, "temp\u00e9rament");
  EXPECT_EQ(parsed("\xef\xbb\xbf" + file(kJust, "m\xc3\xa9")).description, "m\u00e9");
  EXPECT_EQ(parsed("\xef\xbb\xbf" + file(kJust, "!\nx")).description, "x");
  EXPECT_EQ(parsed("!\n\xef\xbb\xbf" + file(kJust, "x")).description, "x");
  // Bell, escape, delete, and U+009B as UTF-8 and as ISO 8859-1.
  EXPECT_EQ(parsed(file(kJust,
                        "a\ab\x1b\x63\x7f"
                        "d"))
                .description,
            "a b c d");
  EXPECT_EQ(parsed(file(kJust,
                        "a\xc2\x9b"
                        "b"))
                .description,
            "a b");
  EXPECT_EQ(parsed(file(kJust, "\xe9\x9b\xe9")).description, "\u00e9 \u00e9");
  // U+009F is the last of them, U+00A0 a space that is kept.
  EXPECT_EQ(parsed(file(kJust, "x\xc2\x9f\xc2\xa0x")).description, "x \u00a0x");
}

TEST(ScalaFile, EveryLineEndIsTaken) {
  for (const std::string end : {"\r\n", "\r", "\n"}) {
    std::string text;
    for (const char c : "! x\n\n" + file(kJust, "").substr(1)) {
      if (c == '\n')
        text += end;
      else
        text += c;
    }
    EXPECT_EQ(parsed(text).listValues(), kJustValues);
    EXPECT_EQ(parsed(text.substr(0, text.size() - end.size())).listValues(), kJustValues);
    EXPECT_EQ(parsed(text + end + "3/1" + end).listValues(), kJustValues);
    EXPECT_EQ(reasonFor("a" + end + "12" + end + "1/1" + end + "x"),
              "line 4: 'x' is no pitch, as 3/2 or 701.955");
  }
}

TEST(ScalaFile, TheNumberOfNotesIsTwelve) {
  for (const char *count : {" 12", "12 notes", "\t12\t!", "012"})
    EXPECT_EQ(parsed("a\n" + std::string(count) + "\n" + kJust + "\n2/1").listValues(), kJustValues)
        << count;
  EXPECT_EQ(reasonFor("a\n 7\n9/8\n"), "line 2: 7 notes, but a temperament has 12");
  EXPECT_EQ(reasonFor("a\n0\n"), "line 2: 0 notes, but a temperament has 12");
  EXPECT_EQ(reasonFor("a\n4294967308\n"), "line 2: 4294967308 notes, but a temperament has 12");
  const std::string forty = "1234567890123456789012345678901234567890";
  EXPECT_EQ(reasonFor("a\n" + forty + "12\n"),
            "line 2: " + forty + " notes, but a temperament has 12");
  for (const std::string count : {"", "twelve", "-12", "12.5", "12/1"})
    EXPECT_EQ(reasonFor("a\n" + count + "\n" + kJust + "\n2/1"),
              "line 2: '" + count + "' is no number of notes");
}

TEST(ScalaFile, AFileThatEndsEarlyIsToldWithItsLastLine) {
  EXPECT_EQ(reasonFor(""), "line 1: the file ends before its description");
  EXPECT_EQ(reasonFor("! a\n! b\n"), "line 2: the file ends before its description");
  EXPECT_EQ(reasonFor("a"), "line 1: the file ends before its number of notes");
  EXPECT_EQ(reasonFor("a\n12\n"), "line 2: the file ends before pitch 1 of 12");
  EXPECT_EQ(reasonFor("a\n12\n" + std::string(kJust)),
            "line 13: the file ends before pitch 12 of 12");
}

TEST(ScalaFile, TheLastPitchIsTheOctave) {
  for (const char *octave : {"2", "4/2", "1200.0", "1200. cents", "1199.999", "1200.001"})
    EXPECT_EQ(parsed(file(kJust, "", octave)).listValues(), kJustValues) << octave;
  for (const std::string octave :
       {"3/1", "1199.9989", "1200.0011", "1200.0010001", "1/2", "1200", "531441/262144"})
    EXPECT_EQ(reasonFor(file(kJust, "", octave)),
              "line 14: the last pitch, '" + octave + "', is not the octave 2/1");
}

TEST(ScalaFile, NothingBehindTheLastByteIsRead) {
  const std::string whole = file(kJust, "", "2/1,");
  for (const std::ptrdiff_t cut : {1, 2}) {
    // A buffer without an end of its own, which the address sanitizer watches.
    const std::vector<char> bytes(whole.begin(), whole.end() - cut);
    EXPECT_EQ(parsed(std::string_view(bytes.data(), bytes.size())).listValues(), kJustValues);
  }
  // A digit there would make another octave of it.
  const std::string longer = file(kJust, "", "2/15");
  EXPECT_EQ(parsed(std::string_view(longer).substr(0, longer.size() - 2)).listValues(),
            kJustValues);
}

TEST(ScalaFile, PitchesNeedNotAscendNorStayWithinTheOctave) {
  EXPECT_EQ(
      parsed(file("-5.0\n1250.5\n300.0\n300.0\n500.0\n600.0\n700.0\n800.0\n0.0\n1000.0\n1100.0"))
          .listValues(),
      (Values{"0", "-105", "1050.5", "0", "-100", "0", "0", "0", "0", "-900", "0", "0"}));
  EXPECT_EQ(
      parsed(file("3/1\n1/1000000\n1/1\n1/1\n1/1\n1/1\n1/1\n1/1\n1/1\n1/1\n1/1")).listValues(),
      (Values{"1", "3", "1e-06", "1", "1", "1", "1", "1", "1", "1", "1", "1"}));
}

TEST(ScalaFile, CentsThatAreEqualTemperamentButForADustAreZero) {
  EXPECT_EQ(parsed(file("99.9999999\n200.0000001\n3/2\n4/3\n4/3\n4/3\n4/3\n4/3\n4/3\n4/3\n110.0"))
                .listValues()[1],
            "0");
}

TEST(ScalaFile, BytesThatAreNoTextAreRefused) {
  EXPECT_EQ(reasonFor("\x89PNG\r\n\x1a\n\0\0\0\rIHDR"sv), "line 2: '?' is no number of notes");
  EXPECT_EQ(reasonFor("\xff\xfe!\0\n\0\n\0001\0002\0\n\0"sv).substr(0, 8), "line 2: ");
  EXPECT_EQ(reasonFor(std::string(1 << 20, '\0')),
            "line 1: the file ends before its number of notes");
}

// The row as the tuner has it, read back from the file.
Row readBack(const std::string &text) {
  std::string list;
  for (const std::string &value : parsed(text).listValues())
    list += value + ", ";
  return loadedText("{a = (" + list + ");}").row(0);
}

TEST(ScalaFile, ARowIsWrittenWithTheDecimalsThatItNeeds) {
  // Werckmeister's third, with cents to six decimals.
  const Loaded loaded = loadedText(
      "{w = (0, -9.775004, -7.820003, -5.865003, -9.775004, -1.955001, -11.730005, "
      "-3.910002, -7.820003, -11.730005, -3.910002, -7.820003);}");
  std::string reason;
  EXPECT_EQ(ScalaFile::text("W", loaded.tables.row(0), reason),
            "W\n 12\n!\n 90.225\n 192.18\n 294.135\n 390.225\n 498.045\n 588.27\n 696.09\n 792.18\n"
            " 888.27\n 996.09\n 1092.18\n 2/1\n");
  EXPECT_EQ(ScalaFile::text("", kEqualRow.data(), reason),
            "\n 12\n!\n 100.0\n 200.0\n 300.0\n 400.0\n 500.0\n 600.0\n 700.0\n 800.0\n 900.0\n"
            " 1000.0\n 1100.0\n 2/1\n");
}

TEST(ScalaFile, ARowOfCentsComesBackToTheLastBit) {
  for (int seed = 0; seed < 500; ++seed) {
    std::string list = "0";
    for (int degree = 1; degree < 12; ++degree)  // anything from -50 to 50, in steps of 0.000001
      list += ", " +
              std::to_string(
                  static_cast<double>((seed * 7919LL + degree * 104729LL) * 613 % 100000001) / 1e6 -
                  50.0);
    const Loaded loaded = loadedText("{a = (" + list + ");}");
    std::string reason;
    const auto text = ScalaFile::text("a", loaded.tables.row(0), reason);
    ASSERT_TRUE(text.has_value()) << reason;
    EXPECT_EQ(readBack(*text), loaded.row(0)) << list;
  }
}

// Sums of cents in single precision, 2^-13 apart there, step over this ratio: none gives it.
TEST(ScalaFile, ARatioThatNoCentsGiveIsWrittenWithSixDecimals) {
  Row row = kEqualRow;
  row[11] = 0x1.e3d712p+0F;
  std::string reason;
  const auto text = ScalaFile::text("a", row.data(), reason);
  EXPECT_TRUE(text.value_or("").ends_with("\n 1000.0\n 1102.063905\n 2/1\n")) << text.value_or("");
}

TEST(ScalaFile, ANameThatWouldBeACommentKeepsItsPlace) {
  std::string reason;
  const auto text = ScalaFile::text("!x", kEqualRow.data(), reason);
  EXPECT_TRUE(text.value_or("").starts_with(" !x\n 12\n"));
  EXPECT_EQ(parsed(text.value_or("")).description, "!x");
}

TEST(ScalaFile, ARowThatIsNoPitchesIsNotWritten) {
  for (const float ratio : {0.0F, -1.0F, std::nanf(""), HUGE_VALF, 0x1p-127F}) {
    Row row = kEqualRow;
    row[4] = ratio;
    std::string reason;
    EXPECT_FALSE(ScalaFile::text("a", row.data(), reason).has_value()) << ratio;
    EXPECT_EQ(reason, "degree 4 is no pitch");
  }
}

}  // namespace
}  // namespace orvane::test
