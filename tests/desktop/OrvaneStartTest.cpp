// Starts of the window program that cannot succeed, for which it needs no desktop.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <thread>
#include <utility>

#include "tests/BrokenMpeg.h"
#include "tests/Sanitized.h"
#include "tests/cli/RunCommand.h"
#include "tests/cli/TestFiles.h"

namespace orvane::test {
namespace {

// Started with a recording that cannot be used, so that it ends.
class OrvaneStart : public testing::Test {
 protected:
  CommandResult start(const std::string &platform,
                      std::vector<std::pair<std::string, std::string>> environment = {}) const {
    return run(ORVANE_PROGRAM, {"--input", mSong}, platform, std::move(environment));
  }

  CommandResult run(const std::string &program, const std::vector<std::string> &arguments,
                    const std::string &platform,
                    std::vector<std::pair<std::string, std::string>> environment = {}) const {
    CommandOptions options;
    options.program = program;
    environment.insert(environment.end(), {{"QT_QPA_PLATFORM", platform},
                                           {"XDG_RUNTIME_DIR", mFolder.path("")},
                                           {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"}});
    options.environment = environment;
    return runCommand(arguments, options);
  }

  TestFolder mFolder;
  const std::string mSong = mFolder.write("song.mp3", brokenMpegFrames(50));
  const std::string mRefusal = "orvane: " + mSong + ": is damaged: none of it can be decoded\n";
};

TEST_F(OrvaneStart, ADisplayThatCannotBeReachedIsToldInOneLine) {
  const CommandResult result = start("xcb", {{"DISPLAY", ":555"}});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "orvane: display: could not connect to display :555\n");
}

TEST_F(OrvaneStart, APlatformThatThereIsNotIsToldInOneLine) {
  const CommandResult result = start("nonsense");
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors,
            "orvane: display: Could not find the Qt platform plugin \"nonsense\" in \"\"\n");
}

TEST_F(OrvaneStart, WithAllWarningsOffOneLineIsStillSaid) {
  const CommandResult result = start("nonsense", {{"QT_LOGGING_RULES", "*.warning=false"}});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_TRUE(result.errors.starts_with("orvane: display: This application failed to start"))
      << result.errors;
  EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1);
}

TEST_F(OrvaneStart, WhatTheToolkitWarnsOfIsSaidOnceItHasStarted) {
  const CommandResult result = start("offscreen", {{"QT_SCALE_FACTOR_ROUNDING_POLICY", "x"}});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_TRUE(result.errors.starts_with("orvane: Unknown scale factor rounding policy: x."))
      << result.errors;
  EXPECT_TRUE(result.errors.ends_with('\n' + mRefusal)) << result.errors;
}

// Which the toolkit would wait for without end. The stacks of threads are as large as the first one
// may grow, and so would fill more than there is.
TEST_F(OrvaneStart, AThreadThatCannotBeStartedIsToldInOneLine) {
  if (kIsSanitized)
    GTEST_SKIP() << "a sanitizer needs more than is left here";
  const CommandResult result =
      run("/bin/bash",
          {"-c", R"(ulimit -s 8388608 && ulimit -v 4194304 && exec "$0" --input "$1")",
           ORVANE_PROGRAM, mSong},
          "offscreen");
  if (result.errors.find("ulimit") != std::string::npos)
    GTEST_SKIP() << result.errors;
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "orvane: threads: Resource temporarily unavailable\n");
}

TEST_F(OrvaneStart, WithoutAnyDisplayTheTerminalProgramIsNamed) {
  const CommandResult result = start("", {{"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors,
            "orvane: display: neither WAYLAND_DISPLAY nor DISPLAY is set"
            " (see orvane-cli for the terminal)\n");
}

TEST_F(OrvaneStart, ARecordingWithoutANameIsToldAsOne) {
  const CommandResult result = run(ORVANE_PROGRAM, {"--input", ""}, "offscreen");
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "orvane: '': no such file\n");
}

// As from a slow disk.
TEST_F(OrvaneStart, FontsThatAreLongInComingAreWaitedFor) {
  const std::string pipe = mFolder.path("fonts.conf");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  std::thread writer([&] {
    std::this_thread::sleep_for(std::chrono::seconds(5));
    std::ofstream(pipe) << "<fontconfig><include>/etc/fonts/fonts.conf</include></fontconfig>";
  });
  const CommandResult result = start("offscreen", {{"FONTCONFIG_FILE", pipe}});
  // Where nobody read it, the writer waits for that.
  const int reader = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  writer.join();
  ::close(reader);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, mRefusal);
}

TEST_F(OrvaneStart, AnMp3ThatCannotBeDecodedIsToldInOneLine) {
  const CommandResult result = start("offscreen");
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, mRefusal);
}

}  // namespace
}  // namespace orvane::test
