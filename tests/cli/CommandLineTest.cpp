// Exit codes and messages, to the letter.
#include <cstring>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/cli/RunCommand.h"
#include "tests/cli/TestFiles.h"

namespace orvane::test {
namespace {

class CommandLine : public testing::Test {
 protected:
  TestFolder mFolder;
  std::string mSound = mFolder.writeSound("a4.wav", sine(440.0, 44100, 0.5), 44100);

  // The one line on standard error with the program's name and the given beginning.
  static void expectFailure(const CommandResult &result, int exitCode, const std::string &line) {
    EXPECT_EQ(result.exitCode, exitCode) << result.errors;
    EXPECT_TRUE(result.errors.starts_with("orvane-cli: " + line)) << result.errors;
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
  }

  // The bytes of the good sound file with some of them replaced.
  std::string patched(const std::string &name, std::size_t offset, std::uint32_t value,
                      std::size_t bytes) const {
    std::ifstream file(mSound, std::ios::binary);
    std::string content(std::istreambuf_iterator<char>(file), {});
    std::memcpy(content.data() + offset, &value, bytes);
    return mFolder.write(name, content);
  }
};

TEST_F(CommandLine, WrongUsageExitsWithTwo) {
  const struct {
    std::vector<std::string> arguments;
    const char *line;
  } rows[] = {
      {{}, "usage: "},
      {{"fly"}, "usage: 'fly' is no command or option here"},
      {{"analyze", "-x.flac"}, "usage: '-x.flac' is no command or option here"},
      {{"analyze"}, "usage: "},
      {{"analyze", mSound, "--loud"}, "usage: "},
      {{"temperaments", "--transpose", "12"},
       "--transpose: '12' is not a whole number from -11 to 11"},
      {{"temperaments", "--transpose", "-12"}, "--transpose: "},
      {{"temperaments", "--transpose", "1.5"}, "--transpose: "},
      {{"temperaments", "--tonic", "12"},
       "--tonic: '12' is neither a number from 0 (C) to 11 (B) nor a note name"},
      {{"temperaments", "--tonic", "H"}, "--tonic: 'H'"},
      {{"temperaments", "--reference-pitch", "348.9"},
       "--reference-pitch: '348.9' is not a number of hertz from 349 to 499.9"},
      {{"temperaments", "--reference-pitch", "500"}, "--reference-pitch: "},
      {{"temperaments", "--reference-pitch", "nan"}, "--reference-pitch: "},
      {{"temperaments", "--reference-pitch", "440Hz"}, "--reference-pitch: "},
      {{"temperaments", "--temperament", "Nonsense"},
       "--temperament: 'Nonsense' is unknown; known are: Equal temperament, "},
      {{"analyze", mSound, "--callback-frames", "0"}, "--callback-frames: "},
      {{"listen", "--seconds", "0"}, "--seconds: '0' is not a number of seconds above 0"},
      {{"listen", "--seconds", "inf"}, "--seconds: "},
      {{"listen", "--seconds", ""}, "--seconds: ''"},
      {{"temperaments", "--tonic", ""}, "--tonic: ''"},
      {{"temperaments", "--transpose="}, "usage: --transpose: "},
      {{"temperaments", "--reference-pitch", ""}, "--reference-pitch: ''"},
      {{"temperaments", "--temperament", ""}, "--temperament: ''"},
      {{"devices", "--input", mSound, "--reference-pitch", "9"}, "--reference-pitch: "},
  };
  for (const auto &row : rows)
    expectFailure(runCommand(row.arguments), 2, row.line);
}

TEST_F(CommandLine, TheEndsOfEveryRangeAreTaken) {
  for (const std::vector<std::string> &option : {std::vector<std::string>{"--transpose", "-11"},
                                                 {"--transpose", "+11"},
                                                 {"--tonic", "11"},
                                                 {"--tonic", "Bb"},
                                                 {"--tonic", "G♯"},
                                                 {"--tonic", "D#/Eb"},
                                                 {"--reference-pitch", "349"},
                                                 {"--reference-pitch", "499.9"},
                                                 {"--temperament", "Equal temperament"}}) {
    std::vector<std::string> arguments{"temperaments"};
    arguments.insert(arguments.end(), option.begin(), option.end());
    EXPECT_EQ(runCommand(arguments).exitCode, 0) << option[1];
    std::swap(arguments[0], arguments[2]);  // and the option before the command
    std::swap(arguments[0], arguments[1]);
    EXPECT_EQ(runCommand(arguments).exitCode, 0) << option[1];
  }
}

TEST_F(CommandLine, AFileThatIsNoSoundIsNamedWithTheReason) {
  const auto analyze = [](const std::string &file) { return runCommand({"analyze", file}); };
  expectFailure(analyze("/no/such/file.wav"), 1, "/no/such/file.wav: no such file");
  expectFailure(analyze(mFolder.path("")), 1, mFolder.path("") + ": is a folder");
  const std::string empty = mFolder.write("empty.wav", "");
  expectFailure(analyze(empty), 1, empty + ": is empty");
  const std::string text = mFolder.write("text.wav", "This is a text and no sound at all.");
  expectFailure(analyze(text), 1, text + ": ");
  const std::string folderLine = mFolder.write("two\nlines.wav", "x");
  EXPECT_EQ(analyze(folderLine).exitCode, 1);
  EXPECT_EQ(analyze(folderLine).errors.find('\n'), analyze(folderLine).errors.size() - 1);
  expectFailure(analyze("/dev/null"), 1, "/dev/null: ");
}

TEST_F(CommandLine, AHeaderThatLiesIsToldAndNothingCrashes) {
  // Offsets in the WAV header that libsndfile writes: channels at 22, rate at 24.
  expectFailure(runCommand({"analyze", patched("c0.wav", 22, 0, 2)}), 1, mFolder.path("c0.wav"));
  expectFailure(runCommand({"analyze", patched("c.wav", 22, 65535, 2)}), 1, mFolder.path("c.wav"));
  expectFailure(runCommand({"analyze", patched("r0.wav", 24, 0, 4)}), 1, mFolder.path("r0.wav"));
  expectFailure(runCommand({"analyze", patched("r.wav", 24, 0xFFFFFFFF, 4)}), 1,
                mFolder.path("r.wav"));
}

TEST_F(CommandLine, ARecordingWithoutSoundIsToldAndDoesNotWait) {
  const std::string none = mFolder.writeSound("none.wav", {}, 44100);
  expectFailure(runCommand({"analyze", none}), 1, none + ": holds no sound");
  expectFailure(runCommand({"listen", "--input", none}), 1, "Recording : none.wav: gives no sound");
}

TEST_F(CommandLine, ALimitOfTheFileSizeIsAnErrorLikeAFullDisk) {
  CommandOptions limited;
  limited.outputTo = mFolder.path("out");
  limited.mostBytes = 1000;
  expectFailure(runCommand({"analyze", "--json", mSound}, limited), 1,
                "standard output: File too large");
}

TEST_F(CommandLine, ATruncatedRecordingIsReadAsFarAsItGoesAndThenTold) {
  std::ifstream file(mSound, std::ios::binary);
  std::string content(std::istreambuf_iterator<char>(file), {});
  content.resize(content.size() / 2);
  const std::string half = mFolder.write("half.wav", content);
  const CommandResult result = runCommand({"analyze", half, "--json"});
  expectFailure(result, 1, half + ": ");
  EXPECT_EQ(result.lines().size(), 4U);  // a quarter of a second: 4 whole blocks of 54.5 ms
}

TEST_F(CommandLine, ATemperamentFileThatCannotBeUsedIsLoggedAndAnsweredWithTheBuiltInTable) {
  const std::string bad = mFolder.write("bad.txt", utf16("{\n  Equal = (0, 0;\n}"));
  for (const std::string &file : {bad, std::string("/no/such/Temperaments.txt")}) {
    const CommandResult result = runCommand({"temperaments", "--json", "--temperaments", file});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.errors.starts_with(
        "orvane-cli: failed to read Temperaments.txt. error: " + file + ": "))
        << result.errors;
    EXPECT_EQ(result.output,
              "{\"name\":\"Pythagorean\",\"toolTip\":\"cents = (-5.865, 7.820, -1.955, -11.730, "
              "1.955, -7.820, 5.865, -3.910, 9.775, 0.000, -9.775, 3.910)\"}\n");
  }
  EXPECT_NE(runCommand({"temperaments", "--temperaments", bad}).errors.find("line 2, column 16"),
            std::string::npos);
}

TEST_F(CommandLine, WithoutASoundServerTheReasonIsGiven) {
  expectFailure(runCommand({"devices"}), 1, "sound server: ");
  expectFailure(runCommand({"listen"}), 1, "sound server: ");
}

TEST_F(CommandLine, ADeviceThatIsNotThereIsNamed) {
  expectFailure(runCommand({"listen", "--input", mSound, "--device", "Nobody : Nothing"}), 1,
                "--device: there is no input device 'Nobody : Nothing'");
  expectFailure(runCommand({"listen", "--input", "/no/such.wav"}), 1, "/no/such.wav: no such file");
}

TEST_F(CommandLine, AnOutputThatTakesNothingIsAnError) {
  for (const std::vector<std::string> &command : {std::vector<std::string>{"analyze", mSound},
                                                  {"temperaments"},
                                                  {"--help"},
                                                  {"--version"},
                                                  {"devices", "--input", mSound},
                                                  {"listen", "--json", "--input", mSound}}) {
    CommandOptions full;
    full.outputTo = "/dev/full";
    expectFailure(runCommand(command, full), 1, "standard output: No space left on device");
    CommandOptions closed;
    closed.outputTo = "-";
    expectFailure(runCommand(command, closed), 1, "standard output: Bad file descriptor");
    CommandOptions early;
    early.closeEarly = true;
    expectFailure(runCommand(command, early), 1, "standard output: Broken pipe");
  }
}

TEST_F(CommandLine, AFullDiskIsToldOnceWhateverTheNumberOfRecordings) {
  CommandOptions full;
  full.outputTo = "/dev/full";
  const CommandResult result = runCommand({"analyze", mSound, mSound, "/no/such", mSound}, full);
  expectFailure(result, 1, "standard output: No space left on device");
}

TEST_F(CommandLine, AFileWithoutANameIsNamedAllTheSame) {
  expectFailure(runCommand({"analyze", ""}), 1, "'': no such file");
  expectFailure(runCommand({"listen", "--input", ""}), 1, "'': no such file");
}

TEST_F(CommandLine, ControlCharactersInNamesDoNotReachTheTerminal) {
  const std::string file =
      mFolder.write("t.txt", utf16("{\"a\\U001b[31m\\nb\" = (0,0,0,0,0,0,0,0,0,0,0,0);}"));
  EXPECT_TRUE(
      runCommand({"temperaments", "--temperaments", file}).output.starts_with("a?[31m?b\n"));
}

TEST_F(CommandLine, MarksThatSomeTerminalsObeyAreNotShown) {
  // U+009B begins a command and U+202E turns the direction of writing; U+00E9 is a letter.
  const std::string sound =
      mFolder.writeSound("x\u009b31m\u202e\u00e9.wav", sine(440.0, 8000, 0.1), 8000);
  EXPECT_EQ(runCommand({"devices", "--input", sound}).output, "Recording : x?31m?\u00e9.wav\n");
}

TEST_F(CommandLine, HelpAndVersionGoToStandardOutput) {
  EXPECT_EQ(runCommand({"--version"}).output, "orvane-cli " ORVANE_VERSION "\n");
  const CommandResult help = runCommand({"--help"});
  EXPECT_EQ(help.exitCode, 0);
  for (const char *word : {"devices", "listen", "analyze", "temperaments", "--reference-pitch"})
    EXPECT_NE(help.output.find(word), std::string::npos) << word;
  const CommandResult analyze = runCommand({"analyze", "--help"});
  for (const char *word : {"--callback-frames", "--json", "--csv", "--summary", "--plot"})
    EXPECT_NE(analyze.output.find(word), std::string::npos) << word;
  EXPECT_NE(runCommand({"listen", "--help"}).output.find("--csv"), std::string::npos);
}

TEST_F(CommandLine, RecordingsAreListedAsDevicesAndEqualTitlesKeptApart) {
  const CommandResult result =
      runCommand({"devices", "--json", "--input", mSound, "--input", mSound});
  EXPECT_EQ(result.output,
            "{\"index\":0,\"name\":\"Recording : a4.wav\",\"deviceID\":1}\n"
            "{\"index\":1,\"name\":\"Recording : a4.wav (2)\",\"deviceID\":2}\n");
  EXPECT_EQ(runCommand({"devices", "--input", mSound}).output, "Recording : a4.wav\n");
}

TEST_F(CommandLine, TheShippedTemperamentsAreListedWithTheirToolTips) {
  const CommandResult result = runCommand({"temperaments", "--json"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  ASSERT_GE(result.lines().size(), 5U);
  for (const std::string &line : result.lines()) {
    const auto temperament = nlohmann::json::parse(line);
    EXPECT_FALSE(temperament["name"].get<std::string>().empty());
    EXPECT_TRUE(temperament["toolTip"].get<std::string>().starts_with("cents = ("));
  }
}

}  // namespace
}  // namespace orvane::test
