// Temperaments read from files, the shipped one among them.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/TemperamentFile.h"
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
  Loaded odd;
  const auto path = write("{a = (0); }");
  odd.load(path);
  expectBuiltIn(odd, path.string() + ": odd number of bytes (11), so no UTF-16" +
                         " (the file must be UTF-16, not UTF-8)");
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

// Sets a variable of the environment, or takes it away, for its life.
class Variable {
 public:
  Variable(const char *name, const std::string &value) : mName(name) {
    if (const char *before = std::getenv(name))
      mBefore = before;
    ::setenv(name, value.c_str(), 1);
  }
  explicit Variable(const char *name) : Variable(name, "") { ::unsetenv(name); }
  ~Variable() {
    if (mBefore)
      ::setenv(mName, mBefore->c_str(), 1);
    else
      ::unsetenv(mName);
  }
  Variable(const Variable &) = delete;
  Variable &operator=(const Variable &) = delete;

 private:
  const char *mName;
  std::optional<std::string> mBefore;
};

TEST(UserTemperamentFile, LiesInTheFolderForTheDataOfPrograms) {
  const Variable home("HOME", "/home/somebody");
  {
    const Variable data("XDG_DATA_HOME", "/data");
    EXPECT_EQ(userTemperamentFile(), "/data/velmora/Orvane/Temperaments.txt");
  }
  const std::string usual = "/home/somebody/.local/share/velmora/Orvane/Temperaments.txt";
  {
    const Variable none("XDG_DATA_HOME");
    EXPECT_EQ(userTemperamentFile(), usual);
  }
  for (const char *folder : {"", "relative/folder"}) {
    const Variable data("XDG_DATA_HOME", folder);
    EXPECT_EQ(userTemperamentFile(), usual);
  }
}

TEST(UserTemperamentFile, IsNowhereForWhoHasNoHome) {
  const Variable data("XDG_DATA_HOME");
  const Variable home("HOME");
  EXPECT_EQ(userTemperamentFile(), "");
  EXPECT_EQ(temperamentFile(std::nullopt, "/shipped"), "/shipped");
}

TEST_F(TemperamentFile, OfTheUserGoesBeforeTheShippedOneAndTheNamedOneBeforeBoth) {
  const Variable data("XDG_DATA_HOME", mFolder.string());
  EXPECT_EQ(temperamentFile(std::nullopt, "/shipped"), "/shipped");
  const auto own = userTemperamentFile();
  std::filesystem::create_directories(own.parent_path());
  EXPECT_EQ(temperamentFile(std::nullopt, "/shipped"), "/shipped");
  std::ofstream(own) << "x";
  EXPECT_EQ(temperamentFile(std::nullopt, "/shipped"), own);
  EXPECT_EQ(temperamentFile("named.txt", "/shipped"), "named.txt");
  EXPECT_EQ(temperamentFile("", "/shipped"), "");
}

TEST_F(TemperamentFile, OfTheUserIsNotPassedOverWhenItIsUseless) {
  const Variable data("XDG_DATA_HOME", mFolder.string());
  const auto own = userTemperamentFile();
  std::filesystem::create_directories(own);
  EXPECT_EQ(temperamentFile(std::nullopt, "/shipped"), own);
  std::filesystem::remove(own);
  std::filesystem::create_symlink("gone.txt", own);
  EXPECT_EQ(temperamentFile(std::nullopt, "/shipped"), own);
  Loaded loaded;
  loaded.load(own);
  expectBuiltIn(loaded, own.string() + ": No such file or directory");
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
  const std::vector<std::string> expected = {"1/3-comma meantone (Salinas, 1577)",
                                             "1/4-comma meantone (Aaron, 1523)",
                                             "1/5-comma meantone (Verheijen, c. 1600)",
                                             "1/6-comma meantone (syntonic comma)",
                                             "2/7-comma meantone (Zarlino, 1558)",
                                             "2/9-comma meantone (Rossi, 1666)",
                                             "Barnes (1979)",
                                             "Bendeler I (c. 1690)",
                                             "Bendeler II (c. 1690)",
                                             "Bendeler III (c. 1690)",
                                             "d'Alembert (1752)",
                                             "Grammateus (1518)",
                                             "Just intonation (Ellis duodene)",
                                             "Kellner (1977)",
                                             "Kirnberger I (1766)",
                                             "Kirnberger II (1771)",
                                             "Kirnberger III (1779)",
                                             "Lambert (1774)",
                                             "Lehman (2005)",
                                             "Neidhardt Big City (1724)",
                                             "Neidhardt II (1724)",
                                             "Neidhardt Small Town (1732)",
                                             "Neidhardt Village (1732)",
                                             "Pythagorean",
                                             "Pythagorean (Arnaut, c. 1440)",
                                             "Rameau (1726)",
                                             "Silbermann (1/6 Pythagorean comma)",
                                             "Sorge (1758)",
                                             "Vallotti",
                                             "Werckmeister III (1691)",
                                             "Werckmeister IV (1691)",
                                             "Werckmeister V (1691)",
                                             "Werckmeister VI, D 175 (1691)",
                                             "Werckmeister VI, D 176 (1691)",
                                             "Young I (1800)",
                                             "Young II (1800)"};
  EXPECT_EQ(loaded.names(), expected);
  std::ifstream file(path, std::ios::binary);
  EXPECT_EQ(file.get(), 0xFF);
  EXPECT_EQ(file.get(), 0xFE);
}

}  // namespace
}  // namespace orvane
