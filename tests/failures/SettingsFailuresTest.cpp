// The saving of the settings with one of its calls failing, or all from that one on: they are the
// old ones or the new ones afterwards.
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/failures/FailingRun.h"

namespace orvane::test {
namespace {

class SettingsFailures : public testing::Test {
 protected:
  void SetUp() override {
    mOptions.program = ORVANE_SAVE_SETTINGS;
    std::filesystem::create_directory(mStore);
    std::ofstream(mFile) << "[Other]\nkey=kept\n";
    ASSERT_EQ(run({"write", mFile, "1"}).errors, "");
    mOld = stored();
    ASSERT_EQ(run({"read", mFile}).output, "1\n");
  }

  CommandResult run(const std::vector<std::string> &arguments) const {
    return runCommand(arguments, mOptions);
  }

  std::string stored() const {
    std::ifstream file(mFile);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  // As it is before each: the settings that belong to 1, and what another program keeps there.
  void restore() const {
    std::filesystem::remove_all(mStore);
    std::filesystem::create_directory(mStore);
    std::ofstream(mFile) << mOld;
  }

  void expectOldOrNew(const FailedRun &failed) const {
    EXPECT_EQ(whyUnclean(failed, {"save-settings: "}), "") << failed.told();
    const CommandResult next = run({"read", mFile});
    EXPECT_EQ(next.errors, "") << failed.told();
    if (failed.result.exitCode == 0 && failed.result.errors.empty())
      EXPECT_EQ(next.output, "2\n") << failed.told();
    else
      EXPECT_TRUE(next.output == "1\n" || next.output == "2\n") << next.output << failed.told();
    EXPECT_NE(stored().find("key=kept"), std::string::npos) << failed.told();
    // And nothing that was left keeps the next from being saved.
    EXPECT_EQ(run({"write", mFile, "3"}).errors, "") << failed.told();
    EXPECT_EQ(run({"read", mFile}).output, "3\n") << failed.told();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(mStore), {}), 1) << failed.told();
  }

  void expectOldOrNewAfter(const Failure &failure, std::uint64_t shortCount) const {
    const std::uint64_t tried =
        FailingRuns({"write", mFile, "2"}, mOptions)
            .forEach(
                failure, shortCount, [this] { restore(); },
                [this](const FailedRun &failed) { expectOldOrNew(failed); });
    EXPECT_GT(tried, 0U);
  }

  TestFolder mFolder;
  const std::filesystem::path mStore = mFolder / "store";
  const std::string mFile = (mStore / "Orvane.ini").string();
  CommandOptions mOptions;
  std::string mOld;
};

TEST_F(SettingsFailures, AFileThatFailsLeavesTheOldSettingsOrTheNew) {
  expectOldOrNewAfter({Calls::Files, Lasting::Once}, 18);
  expectOldOrNewAfter({Calls::Files, Lasting::ForGood}, 18);
}

TEST_F(SettingsFailures, WantOfMemoryForFilesLeavesTheOldSettingsOrTheNew) {
  expectOldOrNewAfter({Calls::Files, Lasting::Once, ENOMEM}, 8);
  expectOldOrNewAfter({Calls::Files, Lasting::ForGood, ENOMEM}, 8);
}

TEST_F(SettingsFailures, WantOfMemoryLeavesTheOldSettingsOrTheNew) {
  expectOldOrNewAfter({Calls::Memory, Lasting::Once}, 12);
  expectOldOrNewAfter({Calls::Memory, Lasting::ForGood}, 12);
}

}  // namespace
}  // namespace orvane::test
