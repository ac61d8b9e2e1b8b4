// A program that is killed while it saves the settings, again and again, at a moment of chance.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <thread>

#include "tests/cli/RunCommand.h"
#include "tests/cli/TestFiles.h"
#include "tests/long/LongRun.h"
#include "tests/servers/ChildProcess.h"

namespace orvane::test {
namespace {

class KilledSaving : public testing::Test {
 protected:
  static CommandResult run(const std::vector<std::string> &arguments) {
    CommandOptions options;
    options.program = ORVANE_SAVE_SETTINGS;
    return runCommand(arguments, options);
  }

  std::ptrdiff_t filesInStore() const {
    return std::distance(std::filesystem::directory_iterator(mStore), {});
  }

  TestFolder mFolder;
  const std::filesystem::path mStore = mFolder / "store";
  const std::string mFile = (mStore / "Orvane.ini").string();
};

TEST_F(KilledSaving, LeavesWholeSettingsAndNothingThatKeepsTheNextFromBeingSaved) {
  const std::uint64_t kills = longRunCount(60);
  Random random(longRunSeed());
  std::filesystem::create_directory(mStore);
  std::ofstream(mFile) << "[Other]\nkey=kept\n";
  std::uint64_t leftovers = 0;
  std::uint64_t saved = 0;
  for (std::uint64_t i = 0; i < kills; ++i) {
    {
      ChildProcess program({ORVANE_SAVE_SETTINGS, "loop", mFile});
      // From its start over some savings.
      std::this_thread::sleep_for(std::chrono::microseconds(4000 + random.below(36000)));
      program.kill();
    }
    const auto files = filesInStore();
    leftovers += files > 1;
    EXPECT_LE(files, 3) << "the file, its lock, and a folder for what is being written";
    const CommandResult stored = run({"read", mFile});
    EXPECT_EQ(stored.errors, "");
    EXPECT_NE(stored.output, "torn\n");
    saved += stored.output != "none\n";
    std::ifstream file(mFile);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    ASSERT_NE(text.find("key=kept"), std::string::npos) << text;
    // A lock that was left would make it give up, with a word.
    ASSERT_EQ(run({"write", mFile, "0"}).errors, "");
    ASSERT_EQ(run({"read", mFile}).output, "0\n");
    ASSERT_EQ(filesInStore(), 1);
  }
  // Else it was never killed while it saved.
  EXPECT_GT(leftovers, 0U);
  EXPECT_GT(saved, 0U);
  std::cout << kills << " kills, " << leftovers << " of them left files behind\n";
}

}  // namespace
}  // namespace orvane::test
