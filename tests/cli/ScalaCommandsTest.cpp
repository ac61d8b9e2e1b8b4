// Scala scale files in and out, and a user's own file of temperaments, from the command line.
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/cli/RunCommand.h"
#include "tests/cli/TestFiles.h"

namespace orvane::test {
namespace {

constexpr const char *kJustPitches =
    "12\n16/15\n9/8\n6/5\n5/4\n4/3\n45/32\n3/2\n8/5\n5/3\n9/5\n15/8\n2/1\n";
constexpr const char *kJustValues =
    "(\n    1, 1.066666667, 1.125, 1.2, 1.25, 1.333333333,\n"
    "    1.40625, 1.5, 1.6, 1.666666667, 1.8, 1.875\n  );\n";

class ScalaCommands : public testing::Test {
 protected:
  static CommandResult import(const std::vector<std::string> &files) {
    std::vector<std::string> arguments{"temperaments", "--import"};
    arguments.insert(arguments.end(), files.begin(), files.end());
    return runCommand(arguments);
  }
  // The names and tool tips, as the tuner reads them from what an import wrote.
  std::string listed(const std::string &imported) const {
    const CommandResult result =
        runCommand({"temperaments", "--temperaments", mFolder.write("imported.txt", imported)});
    EXPECT_EQ(result.errors, "");
    return result.output;
  }
  // What an import wrote, from its UTF-16 of ASCII characters.
  static std::string ascii(const std::string &bytes) {
    std::string text;
    for (std::size_t at = 2; at < bytes.size(); at += 2)
      text += bytes[at];
    EXPECT_EQ(bytes, utf16(text));
    return text;
  }

  TestFolder mFolder;
  std::string mJust = mFolder.write("just.scl", std::string("! just.scl\nJust\n") + kJustPitches);
};

TEST_F(ScalaCommands, AnImportIsAFileOfTemperaments) {
  const CommandResult result = import({mJust});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(ascii(result.output), std::string("{\n  \"Just\" = ") + kJustValues + "}\n");
  // 1/1 is 15.641 cents above equal temperament when 5/3 is the A: 1200·log2(5/3) = 884.359.
  EXPECT_EQ(listed(result.output),
            "Just\n    cents = (15.641, 27.373, 19.551, 31.283, 1.955, 13.686, 5.865, 17.596, "
            "29.328, 0.000, 33.238, 3.910)\n");
}

TEST_F(ScalaCommands, SeveralFilesBecomeOneOfTemperamentsInTheirOrder) {
  const std::string cents =
      mFolder.write("mean.scl",
                    "! mean.scl\r\n!\r\n\"Mean\\tone\"\r\n 12\r\n!\r\n 76.04900\r\n 193.15686\r\n"
                    " 310.26471\r\n 5/4\r\n 503.42157\r\n 579.47057\r\n 696.57843\r\n 25/16\r\n"
                    " 889.73529\r\n 1006.84314\r\n 1082.89214\r\n 2/1\r\n");
  EXPECT_EQ(ascii(import({mJust, cents}).output),
            std::string("{\n  \"Just\" = ") + kJustValues +
                "  \"\\\"Mean\\\\tone\\\"\" = (\n    0, -23.951, -6.84314, 10.26471, -13.686286, "
                "3.42157,\n    -20.52943, -3.42157, -27.372572, -10.26471, 6.84314, -17.10786\n"
                "  );\n}\n");
}

TEST_F(ScalaCommands, AScaleWithoutADescriptionIsNamedAsItsFile) {
  const std::string file = mFolder.write("dekany.1.scl", std::string("\n") + kJustPitches);
  EXPECT_TRUE(ascii(import({file}).output).starts_with("{\n  \"dekany.1\" = ("));
  const std::string latin = mFolder.write("gr\xf6\xdf.scl", std::string("\n") + kJustPitches);
  EXPECT_TRUE(listed(import({latin}).output).starts_with("gr\ufffd\ufffd\n"));
}

TEST_F(ScalaCommands, NamesThatOccurTwiceGetTheNameOfTheirFile) {
  const std::string other = mFolder.write("other.scl", std::string("Just\n") + kJustPitches);
  const std::string third = mFolder.write("third.scl", std::string("Just (just)\n") + kJustPitches);
  const auto names = [](const std::vector<std::string> &files) {
    std::string all;
    std::string text = ascii(import(files).output);
    for (std::size_t at = 0; (at = text.find('"', at)) != std::string::npos; ++at) {
      const std::size_t end = text.find('"', at + 1);
      all += text.substr(at + 1, end - at - 1) + "|";
      at = end;
    }
    return all;
  };
  EXPECT_EQ(names({mJust, other}), "Just (just)|Just (other)|");
  EXPECT_EQ(names({mJust, mJust}), "Just (just)|Just (just) 2|");
  EXPECT_EQ(names({third, mJust, mJust, other}),
            "Just (just)|Just (just) 2|Just (just) 3|Just (other)|");
}

TEST_F(ScalaCommands, NamesAreUtf8OrLatin1AndNoneCommandsATerminal) {
  const std::string latin = mFolder.write("a.scl", std::string("temp\xe9rament\n") + kJustPitches);
  EXPECT_TRUE(listed(import({latin}).output).starts_with("temp\u00e9rament\n"));
  const std::string turned =
      mFolder.write("b.scl", std::string("a\u202eb\x1b[m\U0001d11e\n") + kJustPitches);
  const std::string output = import({turned}).output;
  // As its number, so that no editor obeys it.
  EXPECT_NE(output.find(std::string("\\\0U\0002\0000\0002\0e\0", 12)), std::string::npos);
  EXPECT_TRUE(listed(output).starts_with("a?b [m\U0001d11e\n"));
}

TEST_F(ScalaCommands, NothingIsWrittenUnlessAllFilesAreGoodAndEachBadOneIsTold) {
  const std::string stretched =
      mFolder.write("stretched.scl", "x\n12\n1.\n2.\n3.\n4.\n5.\n6.\n7.\n8.\n9.\n10.\n11.\n3/1\n");
  const std::string picture = mFolder.write("picture.scl", "\x89PNG\r\n\x1a\n");
  const std::string large = mFolder.write("large.scl", std::string((4 << 20) + 1, '!'));
  const std::string folder = mFolder.path("");
  const CommandResult result =
      import({"/no/such.scl", mJust, stretched, folder, picture, large, "", "/dev/null"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "orvane-cli: /no/such.scl: No such file or directory\n"
            "orvane-cli: " +
                stretched +
                ": line 14: the last pitch, '3/1', is not the octave 2/1\n"
                "orvane-cli: " +
                folder +
                ": is a folder\n"
                "orvane-cli: " +
                picture +
                ": line 2: '?' is no number of notes\n"
                "orvane-cli: " +
                large +
                ": larger than 4 MiB\n"
                "orvane-cli: '': No such file or directory\n"
                "orvane-cli: /dev/null: is no regular file\n");
}

TEST_F(ScalaCommands, AFileOfTheLargestSizeIsReadAndTooManyOfThemAreTold) {
  std::string text = std::string("!") + std::string((4 << 20) - 100, '-') + "\nJust\n";
  text += kJustPitches;
  ASSERT_LE(text.size(), std::size_t{4} << 20);
  EXPECT_EQ(import({mFolder.write("large.scl", text)}).exitCode, 0);

  const std::string name((4 << 20) - 100, 'x');
  const CommandResult result = import({mFolder.write("named.scl", name + "\n" + kJustPitches)});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "orvane-cli: --import: too many for one file of temperaments\n");
}

TEST_F(ScalaCommands, AnExportIsAScalaFile) {
  const CommandResult result = runCommand({"temperaments", "--export", "WERCKMEISTER III"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output,
            "Werckmeister III (1691)\n 12\n!\n 90.225\n 192.18\n 294.135\n 390.225\n 498.045\n"
            " 588.27\n 696.09\n 792.18\n 888.27\n 996.09\n 1092.18\n 2/1\n");
  EXPECT_EQ(runCommand({"temperaments", "--export", "equal"}).output,
            "Equal temperament\n 12\n!\n 100.0\n 200.0\n 300.0\n 400.0\n 500.0\n 600.0\n 700.0\n"
            " 800.0\n 900.0\n 1000.0\n 1100.0\n 2/1\n");
}

TEST_F(ScalaCommands, WhatIsExportedAndImportedIsTheSameTemperament) {
  std::vector<std::string> files;
  const CommandResult all = runCommand({"temperaments"});
  const std::vector<std::string> lines = all.lines();
  for (std::size_t at = 0; at + 1 < lines.size(); at += 2) {
    const CommandResult exported = runCommand({"temperaments", "--export", lines[at]});
    EXPECT_EQ(exported.exitCode, 0) << lines[at];
    files.push_back(mFolder.write(std::to_string(at) + ".scl", exported.output));
  }
  EXPECT_GE(files.size(), 30U);
  EXPECT_EQ(listed(import(files).output), all.output);
}

TEST_F(ScalaCommands, WhatCannotBeExportedIsTold) {
  const std::string file =
      mFolder.write("t.txt", utf16("{\"Zero\\n\" = (1, 2, 3, 0, 5, 6, 7, 8, 9, 10, 11, 12);}"));
  const CommandResult zero =
      runCommand({"temperaments", "--temperaments", file, "--export", "Zero\n"});
  EXPECT_EQ(zero.exitCode, 1);
  EXPECT_EQ(zero.output, "");
  EXPECT_EQ(zero.errors, "orvane-cli: Zero?: degree 3 is no pitch\n");
  const CommandResult none =
      runCommand({"temperaments", "--temperaments", file, "--export", "One"});
  EXPECT_EQ(none.exitCode, 2);
  EXPECT_EQ(none.errors,
            "orvane-cli: --export: 'One' is unknown; known are: Equal temperament, Zero?\n");
}

TEST_F(ScalaCommands, OnATerminalAnImportIsShownAsPlainText) {
  int terminal = -1;
  const pid_t child = ::forkpty(&terminal, nullptr, nullptr, nullptr);
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::execl(ORVANE_CLI, "orvane-cli", "temperaments", "--import", mJust.c_str(), nullptr);
    ::_exit(127);
  }
  std::string screen;
  std::array<char, 4096> bytes;
  ssize_t count = 0;
  while ((count = ::read(terminal, bytes.data(), bytes.size())) > 0)
    screen.append(bytes.data(), static_cast<std::size_t>(count));
  ::close(terminal);
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(screen.starts_with("{\r\n  \"Just\" = (\r\n    1, 1.066666667,")) << screen;
}

TEST_F(ScalaCommands, WrongUsageExitsWithTwo) {
  const struct {
    std::vector<std::string> options;
    const char *line;
  } rows[] = {
      {{"--import"}, "usage: --import: 1 required FILE.scl missing"},
      {{"--export"}, "usage: --export: 1 required NAME missing"},
      {{"--import", mJust, "--json"}, "usage: --json excludes --import"},
      {{"--export", "equal", "--json"}, "usage: --json excludes --export"},
      {{"--export", "equal", "--import", mJust}, "usage: --import excludes --export"},
  };
  for (const auto &row : rows) {
    std::vector<std::string> arguments{"temperaments"};
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    const CommandResult result = runCommand(arguments);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, std::string("orvane-cli: ") + row.line + "\n");
  }
}

TEST_F(ScalaCommands, AnOutputThatTakesNothingIsAnError) {
  for (const std::vector<std::string> &option :
       {std::vector<std::string>{"--import", mJust}, {"--export", "equal"}}) {
    CommandOptions full;
    full.outputTo = "/dev/full";
    const CommandResult result = runCommand({"temperaments", option[0], option[1]}, full);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errors, "orvane-cli: standard output: No space left on device\n");
  }
}

TEST_F(ScalaCommands, NamesMayLeaveOutWhatStandsInParenthesesWhereOneAloneIsMeant) {
  std::string text = "{";
  for (const char *name : {"One (1)", "One II (1)", "Two (1)", "Two (2)", "Three", "Three (3)"})
    text += std::string("\"") + name + "\" = (0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);";
  const std::string file = mFolder.write("t.txt", utf16(text + "}"));
  const auto found = [&](const std::string &name) {
    const CommandResult result =
        runCommand({"temperaments", "--temperaments", file, "--export", name});
    return result.exitCode == 0 ? result.lines()[0] : result.errors.substr(0, 34);
  };
  EXPECT_EQ(found("One"), "One (1)");
  EXPECT_EQ(found("one ii"), "One II (1)");
  EXPECT_EQ(found("two (2)"), "Two (2)");
  EXPECT_EQ(found("three"), "Three");
  for (const std::string name : {"Two", "On", "One (", "(3)"})
    EXPECT_EQ(found(name), ("orvane-cli: --export: '" + name + "' is unknown").substr(0, 34));
}

// Runs with the folder as that for the data of programs.
class OwnTemperaments : public testing::Test {
 protected:
  OwnTemperaments() {
    std::filesystem::create_directories(mFile.parent_path());
    mOptions.environment = {{"XDG_DATA_HOME", mFolder.path("")}};
  }
  void write(const std::string &bytes) const { std::ofstream(mFile, std::ios::binary) << bytes; }

  TestFolder mFolder;
  std::filesystem::path mFile = mFolder / "velmora/Orvane/Temperaments.txt";
  CommandOptions mOptions;
};

constexpr const char *kEqualTip =
    "cents = (0.000, 0.000, 0.000, 0.000, 0.000, 0.000, 0.000, 0.000, 0.000, 0.000, 0.000, 0.000)";

TEST_F(OwnTemperaments, TakeThePlaceOfTheShippedOnesUnlessAnotherFileIsNamed) {
  const std::string shipped = runCommand({"temperaments"}).output;
  EXPECT_EQ(runCommand({"temperaments"}, mOptions).output, shipped);
  write(utf16("{Mine = (0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);}"));
  EXPECT_EQ(runCommand({"temperaments"}, mOptions).output,
            std::string("Mine\n    ") + kEqualTip + "\n");
  EXPECT_EQ(runCommand({"temperaments", "--export", "mine"}, mOptions).exitCode, 0);
  const std::string named =
      mFolder.write("named.txt", utf16("{Named = (0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);}"));
  EXPECT_EQ(runCommand({"temperaments", "--temperaments", named}, mOptions).output,
            std::string("Named\n    ") + kEqualTip + "\n");
}

TEST_F(OwnTemperaments, ThatCannotBeReadAreToldAndAnsweredWithTheBuiltInTable) {
  write("{}");
  const CommandResult result = runCommand({"temperaments"}, mOptions);
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_TRUE(result.errors.starts_with(
      "orvane-cli: failed to read Temperaments.txt. error: " + mFile.string() + ": "))
      << result.errors;
  EXPECT_TRUE(result.output.starts_with("Pythagorean\n")) << result.output;
}

}  // namespace
}  // namespace orvane::test
