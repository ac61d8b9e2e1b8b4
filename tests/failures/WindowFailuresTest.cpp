// The window program with calls failing from its start to its end, which it comes to by itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <string>

#include "tests/failures/FailingRun.h"
#include "tests/long/LongRun.h"

namespace orvane::test {
namespace {

class WindowFailures : public testing::Test {
 protected:
  WindowFailures() {
    mOptions.program = ORVANE_PROGRAM;
    std::filesystem::create_directories(mSettings.parent_path());
    std::filesystem::permissions(mFolder.path(""), std::filesystem::perms::owner_all);
    mOptions.environment = {{"QT_QPA_PLATFORM", "offscreen"},
                            {"HOME", mFolder.path("")},
                            {"XDG_CONFIG_HOME", mFolder.path("config")},
                            {"XDG_RUNTIME_DIR", mFolder.path("")},
                            {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"},
                            {"QT_LOGGING_RULES", "qt.qpa.*=false"}};
  }

  void restore() const {
    std::filesystem::remove_all(mSettings.parent_path());
    std::filesystem::create_directory(mSettings.parent_path());
    std::ofstream(mSettings) << kOld;
  }

  // Libraries that give up, with a word of theirs, and those that go on for a while without the
  // memory that they did not get, of which the program tells.
  static bool endedInALibrary(const FailedRun &run) {
    if (run.result.tookTooLong || run.endedIn.empty() || run.endedIn.starts_with("orvane"))
      return false;
    if (run.result.signal == SIGABRT)
      return !run.result.errors.empty();
    if (run.result.signal == SIGTRAP)
      return run.result.errors.find(": ended the program\n") != std::string::npos;
    if (run.result.errors.find("orvane: lib") == std::string::npos ||
        run.result.errors.find(": used memory that is not there\n") == std::string::npos)
      return false;
    constexpr std::array kGoOn = {"libfontconfig", "libQt6DBus", "libQt6Gui", "libglib"};
    return run.result.signal == SIGSEGV && std::ranges::any_of(kGoOn, [&run](const char *library) {
             return run.endedIn.starts_with(library);
           });
  }

  void expectClean(const FailedRun &run) {
    if (endedInALibrary(run))
      ++mLibraries["ended by signal " + std::to_string(run.result.signal) + " in " + run.endedIn];
    else
      EXPECT_EQ(whyUnclean(run, {""}), "") << run.told();  // libraries have words of their own
    std::ifstream file(mSettings);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    const bool isWhole = text == kOld || std::ranges::count(text, '\n') == kLinesOfAll;
    EXPECT_TRUE(isWhole) << text << run.told();
    // What it could not read it cannot keep either; then it has said so.
    const bool isKept = text.find("TonicKey=7\nTuningKey=1\n") != std::string::npos;
    EXPECT_TRUE(isKept || run.result.errors.find("orvane: settings: ") != std::string::npos)
        << text << run.told();
  }

  void expectCleanAfter(const Failure &failure, std::uint64_t shortCount) {
    mLibraries.clear();
    const std::uint64_t tried = FailingRuns({"--input", mSound}, mOptions)
                                    .forEach(
                                        failure, shortCount, [this] { restore(); },
                                        [&](const FailedRun &run) { expectClean(run); });
    EXPECT_GT(tried, 0U);
    for (const auto &[end, count] : mLibraries)
      std::cout << "  " << count << " " << end << "\n";
  }

  static constexpr const char *kOld = "[General]\nTonicKey=7\nTuningKey=1\n";
  static constexpr int kLinesOfAll = 10;  // nine settings under their heading

  TestFolder mFolder;
  const std::filesystem::path mSettings = mFolder / "config/velmora/Orvane.ini";
  const std::string mSound = mFolder.writeSound("a4.wav", sine(440.0, 8000, 0.5), 8000);
  CommandOptions mOptions;
  std::map<std::string, int> mLibraries;
};

TEST_F(WindowFailures, AFileThatFailsIsToldOrDoesNoHarm) {
  expectCleanAfter({Calls::Files, Lasting::Once, 0, {}, true}, 7);
  expectCleanAfter({Calls::Files, Lasting::ForGood, 0, {}, true}, 4);
}

TEST_F(WindowFailures, AFileThatFailsWhileTheSettingsAreSavedLeavesTheOldOrTheNew) {
  expectCleanAfter({Calls::Files, Lasting::Once, 0, "Orvane.ini.lock", true}, 7);
  expectCleanAfter({Calls::Files, Lasting::ForGood, 0, "Orvane.ini.lock", true}, 7);
}

TEST_F(WindowFailures, WantOfMemoryIsToldOrDoesNoHarm) {
  expectCleanAfter({Calls::Memory, Lasting::Once, 0, {}, true}, 7);
}

TEST_F(WindowFailures, NoMoreMemoryWhileTheFontsAreReadEndsTheStart) {
  if (longRunCount(0) != 0)
    GTEST_SKIP() << "a long run comes to them in the next";
  expectCleanAfter({Calls::Memory, Lasting::ForGood, 0, "fonts.conf", true}, 7);
}

// One for each of its caches.
TEST_F(WindowFailures, ALockThatTheFontLibraryForgetsIsNotWaitedForWithoutEnd) {
#if !defined(__x86_64__) && !defined(__aarch64__)
  GTEST_SKIP() << "it is, here";
#endif
  constexpr std::uint64_t kCallsAtACache = 40;
  const FailingRuns runs({"--input", mSound}, mOptions);
  for (std::uint64_t number = 1; number <= kCallsAtACache; ++number) {
    restore();
    const FailedRun run = runs.run({Calls::Memory, Lasting::Once, 0, ".cache-", true}, number);
    if (run.calls < number)
      break;
    expectClean(run);
    if (run.result.errors != "orvane: fonts: their library waits for itself\n")
      continue;
    EXPECT_EQ(run.result.exitCode, 1) << run.told();
    return;
  }
  GTEST_SKIP() << "it forgets none, or has no caches";
}

TEST_F(WindowFailures, NoMoreMemoryFromSomeTimeOnIsToldOrDoesNoHarm) {
  expectCleanAfter({Calls::Memory, Lasting::ForGood, 0, {}, true}, 7);
}

TEST_F(WindowFailures, WantOfMemoryWhileTheSettingsAreSavedLeavesTheOldOrTheNew) {
  expectCleanAfter({Calls::Memory, Lasting::Once, 0, "Orvane.ini.lock", true}, 4);
  expectCleanAfter({Calls::Memory, Lasting::ForGood, 0, "Orvane.ini.lock", true}, 4);
}

}  // namespace
}  // namespace orvane::test
