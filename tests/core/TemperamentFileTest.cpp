// Temperaments read from files, the shipped one among them.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "core/TemperamentTables.h"
#include "tests/core/LoadedTemperaments.h"

namespace orvane {
namespace {

using namespace std::string_view_literals;

class TemperamentFile : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "orvane.XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    mFolder = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(mFolder); }

  std::filesystem::path write(std::string_view bytes) const {
    const auto path = mFolder / "Temperaments.txt";
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }
  static std::string littleEndian(std::string_view ascii) {
    std::string bytes;
    for (const char c : ascii)
      bytes += {c, '\0'};
    return bytes;
  }

  std::filesystem::path mFolder;
};

TEST_F(TemperamentFile, IsReadInBothByteOrdersWithAndWithoutMark) {
  const std::string text = "{a = (" + kTwelveZeros + ");}";
  std::string bigEndian;
  for (const char c : text)
    bigEndian += {'\0', c};
  for (const std::string &bytes :
       {"\xff\xfe" + littleEndian(text), "\xfe\xff" + bigEndian, littleEndian(text), bigEndian}) {
    Loaded loaded;
    loaded.load(write(bytes));
    EXPECT_TRUE(loaded.log.empty());
    EXPECT_EQ(loaded.names(), std::vector<std::string>{"a"});
    EXPECT_EQ(loaded.row(0), kEqualRow);
  }
}

TEST_F(TemperamentFile, ThatIsMissingGivesTheBuiltInTable) {
  Loaded loaded;
  const auto path = mFolder / "none.txt";
  loaded.load(path);
  expectBuiltIn(loaded, path.string() + ": No such file or directory");
}

TEST_F(TemperamentFile, BelowAFileGivesTheBuiltInTable) {
  Loaded loaded;
  const auto path = write("") / "none.txt";
  loaded.load(path);
  expectBuiltIn(loaded, path.string() + ": Not a directory");
}

TEST_F(TemperamentFile, WhoseNameWouldBreakTheLogLineIsNamedWithQuestionMarks) {
  Loaded loaded;
  loaded.load(mFolder / "Stimmungen für\x7f\n\tden Flügel.txt");
  expectBuiltIn(loaded,
                mFolder.string() + "/Stimmungen für???den Flügel.txt: No such file or directory");
}

TEST_F(TemperamentFile, ThatIsAFolderGivesTheBuiltInTable) {
  Loaded loaded;
  loaded.load(mFolder);
  expectBuiltIn(loaded, mFolder.string() + ": is a folder");
}

TEST_F(TemperamentFile, ThatIsAPipeIsNotWaitedFor) {
  Loaded loaded;
  const auto path = mFolder / "pipe";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  loaded.load(path);
  expectBuiltIn(loaded, path.string() + ": is no regular file");
}

TEST_F(TemperamentFile, ThatCannotBeOpenedGivesTheBuiltInTable) {
  if (geteuid() == 0)
    GTEST_SKIP() << "root may open every file";
  Loaded loaded;
  const auto path = write(littleEndian("{}"));
  std::filesystem::permissions(path, std::filesystem::perms::none);
  loaded.load(path);
  expectBuiltIn(loaded, path.string() + ": Permission denied");
}

TEST_F(TemperamentFile, ThatFindsNoDescriptorFreeGivesTheBuiltInTable) {
  Loaded loaded;
  const auto path = write(littleEndian("{}"));
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit none = {0, limit.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  loaded.load(path);
  setrlimit(RLIMIT_NOFILE, &limit);
  expectBuiltIn(loaded, path.string() + ": Too many open files");
}

TEST_F(TemperamentFile, WhoseReadFailsGivesTheBuiltInTable) {
  // Address 0 is never mapped, so reading there fails although the file opens.
  Loaded loaded;
  loaded.load("/proc/self/mem");
  expectBuiltIn(loaded, "/proc/self/mem: Input/output error");
}

TEST_F(TemperamentFile, ThatIsEmptyGivesTheBuiltInTable) {
  Loaded loaded;
  const auto path = write("");
  loaded.load(path);
  expectBuiltIn(loaded, path.string() + ": line 1, column 1: the text is empty");
}

TEST_F(TemperamentFile, ThatIsTooLargeGivesTheBuiltInTable) {
  Loaded loaded;
  const auto path = write("");
  for (const std::size_t more : {2U, 65536U, 1U << 30}) {
    std::filesystem::resize_file(path, TemperamentTables::kMaximumFileSize + more);
    loaded = Loaded();
    loaded.load(path);
    expectBuiltIn(loaded, path.string() + ": larger than 4 MiB");
  }
}

TEST_F(TemperamentFile, OfTheLargestSizeIsRead) {
  std::string text = "{a = (" + kTwelveZeros + ");}";
  text.resize(TemperamentTables::kMaximumFileSize / 2, ' ');
  Loaded loaded;
  loaded.load(write(littleEndian(text)));
  EXPECT_TRUE(loaded.log.empty());
  EXPECT_EQ(loaded.names(), std::vector<std::string>{"a"});
}

TEST_F(TemperamentFile, ThatIsUndecodableGivesTheBuiltInTable) {
  Loaded odd;
  const auto path = write("\xff\xfe{\0}"sv);
  odd.load(path);
  expectBuiltIn(odd, path.string() + ": odd number of bytes (5), so no UTF-16");
  Loaded lone;
  lone.load(write("\xff\xfe{\0\x34\xd8}\0"sv));
  expectBuiltIn(lone, path.string() + ": surrogate U+D834 without its partner at byte 4");
}

TEST_F(TemperamentFile, InUtf8IsNamedAsSuch) {
  for (const auto text : {"{a = (0);}", "{a = (0); }", "\xef\xbb\xbf{}"}) {
    Loaded loaded;
    loaded.load(write(text));
    expectBuiltIn(loaded);
    ASSERT_EQ(loaded.log.size(), 1U);
    EXPECT_TRUE(loaded.log[0].ends_with(" (the file must be UTF-16, not UTF-8)")) << loaded.log[0];
  }
}

TEST_F(TemperamentFile, ThatIsBrokenIsNamedWithLineAndColumn) {
  Loaded loaded;
  const auto path = write("\xff\xfe" + littleEndian("{\r\n  a = (0, 0) b = ();\r\n}"));
  loaded.load(path);
  expectBuiltIn(loaded, path.string() + ": line 2, column 14: expected ';'");
}

TEST_F(TemperamentFile, WithControlCharactersInItsNameIsStillOneLine) {
  Loaded loaded;
  loaded.load(mFolder / "a\nb\x1b[c");
  expectBuiltIn(loaded, mFolder.string() + "/a?b?[c: No such file or directory");
}

// The fifths from C-G upward (C-G, G-D, D-A, A-E, E-B, B-F#, F#-C#, C#-G#, G#-Eb, Eb-Bb, Bb-F, F-C)
// and by how much each is narrower than pure.
struct Definition {
  double unit;  // cents
  std::array<double, 12> narrowings;
};

TEST(ShippedTemperaments, AreTheOnesOfTheirDefinitions) {
  const double fifth = 1200.0 * std::log2(3.0 / 2.0);
  const double pythagorean = 12.0 * fifth - 7.0 * 1200.0;
  const double syntonic = 1200.0 * std::log2(81.0 / 80.0);
  const double schisma = pythagorean - syntonic;
  const auto meantone = [&](double part) {
    const double wolf = pythagorean - 11.0 * syntonic * part;
    const double n = syntonic * part;
    return Definition{1.0, {n, n, n, n, n, n, n, n, wolf, n, n, n}};
  };
  const double quarter = syntonic / 4.0;
  const std::map<std::string, Definition> definitions = {
      {"Kellner", {pythagorean / 5.0, {1, 1, 1, 1, 0, 1, 0, 0, 0, 0, 0, 0}}},
      {"Kirnberger III", {1.0, {quarter, quarter, quarter, quarter, 0, 0, schisma, 0, 0, 0, 0, 0}}},
      {"Lehman", {pythagorean / 12.0, {2, 2, 2, 2, 0, 0, 0, 1, 1, 1, -1, 2}}},
      {"Meantone 1/4 Comma", meantone(1.0 / 4.0)},
      {"Meantone 1/5 Comma", meantone(1.0 / 5.0)},
      {"Meantone 1/6 Comma", meantone(1.0 / 6.0)},
      {"Neidhardt Big City", {pythagorean / 12.0, {2, 2, 2, 1, 0, 1, 1, 1, 0, 1, 1, 0}}},
      {"Neidhardt Small Town", {pythagorean / 12.0, {2, 2, 2, 2, 1, 1, 0, 0, 1, 1, 0, 0}}},
      {"Pythagorean", {pythagorean, {0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0}}},
      {"Vallotti", {pythagorean / 6.0, {1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 1}}},
      {"Werckmeister III", {pythagorean / 4.0, {1, 1, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0}}},
      {"Young II", {pythagorean / 6.0, {1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0}}},
  };
  std::map<std::string, std::array<double, 12>> expected;  // cents above C
  for (const auto &[name, definition] : definitions) {
    double cents = 0.0;
    for (std::size_t i = 0; i < 12; ++i) {
      expected[name][i * 7 % 12] = cents;
      cents = std::fmod(cents + fifth - definition.unit * definition.narrowings[i], 1200.0);
    }
    // The circle closes.
    EXPECT_NEAR(std::remainder(cents, 1200.0), 0.0, 1e-9) << name;
  }
  const double justRatios[] = {1.0,       16.0 / 15, 9.0 / 8, 6.0 / 5, 5.0 / 4, 4.0 / 3,
                               45.0 / 32, 3.0 / 2,   8.0 / 5, 5.0 / 3, 9.0 / 5, 15.0 / 8};
  for (std::size_t j = 0; j < 12; ++j)
    expected["Just Intonation"][j] = 1200.0 * std::log2(justRatios[j]);

  Loaded loaded;
  loaded.load(std::filesystem::path(ORVANE_RESOURCES_DIR) / "Temperaments.txt");
  EXPECT_TRUE(loaded.log.empty());
  ASSERT_EQ(loaded.tables.rowCount(), expected.size());
  EXPECT_EQ(loaded.tables.mTemperamentCount, static_cast<std::int64_t>(expected.size()));
  for (std::size_t row = 0; row < loaded.tables.rowCount(); ++row) {
    const std::string &name = loaded.tables.name(row);
    ASSERT_TRUE(expected.contains(name)) << name;
    EXPECT_EQ(loaded.tables.row(row)[0], 1.0F);
    // The file has six decimals; rounding the sum of cents near 1100 and the ratio to single
    // precision adds at most 0.00006 and 0.0001 cents.
    for (std::size_t j = 1; j < 12; ++j) {
      const double ratio = static_cast<double>(loaded.tables.row(row)[j]);
      EXPECT_NEAR(1200.0 * std::log2(ratio), expected[name][j], 0.00017)
          << name << ", degree " << j;
    }
  }
}

TEST(ShippedTemperaments, HaveThePythagoreanRowOfTheBuiltInTable) {
  Loaded loaded;
  loaded.load(std::filesystem::path(ORVANE_RESOURCES_DIR) / "Temperaments.txt");
  const auto names = loaded.names();
  const auto found = std::find(names.begin(), names.end(), "Pythagorean");
  ASSERT_NE(found, names.end());
  EXPECT_EQ(loaded.row(static_cast<std::size_t>(found - names.begin())), kBuiltInRow);
}

TEST(ShippedTemperaments, AreInTheOrderOfTheMenuAndInUtf16WithItsMark) {
  const auto path = std::filesystem::path(ORVANE_RESOURCES_DIR) / "Temperaments.txt";
  Loaded loaded;
  loaded.load(path);
  EXPECT_EQ(loaded.names(), (std::vector<std::string>{
                                "Just Intonation", "Kellner", "Kirnberger III", "Lehman",
                                "Meantone 1/4 Comma", "Meantone 1/5 Comma", "Meantone 1/6 Comma",
                                "Neidhardt Big City", "Neidhardt Small Town", "Pythagorean",
                                "Vallotti", "Werckmeister III", "Young II"}));
  std::ifstream file(path, std::ios::binary);
  EXPECT_EQ(file.get(), 0xFF);
  EXPECT_EQ(file.get(), 0xFE);
}

}  // namespace
}  // namespace orvane
