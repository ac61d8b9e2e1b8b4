// Listening to sound files in place of a sound server, as a pipe, on a terminal, and to its end.
#include <array>
#include <csignal>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <nlohmann/json.hpp>

#include "tests/cli/OnTerminal.h"
#include "tests/cli/RunCommand.h"
#include "tests/cli/TestFiles.h"

namespace orvane::test {
namespace {

class Listen : public testing::Test {
 protected:
  TestFolder mFolder;
  std::string mA4 = mFolder.writeSound("a4.wav", sine(440.0, 44100, 1.0), 44100);
  std::string mE4 = mFolder.writeSound("e4.wav", sine(330.0, 48000, 1.0), 48000);
};

TEST_F(Listen, ARecordingIsNamedBlockByBlockAndTheTimeAskedForEndsIt) {
  const CommandResult result = runCommand({"listen", "--input", mA4, "--json", "--seconds", "1.2"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  ASSERT_GT(result.lines().size(), 5U);
  std::uint64_t block = 0;
  double before = 0.0;
  for (const std::string &line : result.lines()) {
    const auto reading = nlohmann::json::parse(line);
    EXPECT_EQ(reading["block"], block++);
    EXPECT_GT(reading["time"].get<double>(), before);
    before = reading["time"];
    EXPECT_EQ(reading["note"], "A");
  }
}

TEST_F(Listen, TheDeviceWithTheGivenTitleIsTheOneHeard) {
  const CommandResult result = runCommand({"listen", "--input", mA4, "--input", mE4, "--device",
                                           "Recording : e4.wav", "--json", "--seconds", "0.7"});
  ASSERT_GT(result.lines().size(), 2U);
  EXPECT_EQ(nlohmann::json::parse(result.lines().back())["note"], "E");
}

TEST_F(Listen, AnInterruptEndsItCleanly) {
  CommandOptions options;
  options.interruptAfterMs = 700;
  const CommandResult result = runCommand({"listen", "--input", mA4, "--json"}, options);
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  ASSERT_FALSE(result.lines().empty());
  EXPECT_TRUE(nlohmann::json::accept(result.lines().back())) << "no torn line";
}

// The reader holds the pipe open and never reads: the pipe fills up, and neither the end of the
// time nor an interrupt may be kept waiting by that.
TEST_F(Listen, AReaderThatStopsReadingCannotKeepItFromEnding) {
  const std::string fast = mFolder.writeSound("fast.wav", sine(440.0, 44100, 1.0), 44100);
  for (const bool interrupt : {false, true}) {
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe2(pipe.data(), O_CLOEXEC), 0);
    ::fcntl(pipe[1], F_SETPIPE_SZ, 4096);  // full after a dozen readings
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      ::dup2(pipe[1], STDOUT_FILENO);
      ::execl(ORVANE_CLI, "orvane-cli", "listen", "--json", "--input", fast.c_str(), "--seconds",
              interrupt ? "1000" : "2", nullptr);
      ::_exit(127);
    }
    ::close(pipe[1]);
    int status = -1;
    for (int tenths = 0; tenths < 100 && ::waitpid(child, &status, WNOHANG) == 0; ++tenths) {
      if (interrupt && tenths == 20)
        ::kill(child, SIGINT);
      ::usleep(100'000);
    }
    EXPECT_EQ(status, 0) << (interrupt ? "interrupted" : "time over");
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    ::close(pipe[0]);
  }
}

TEST_F(Listen, AReaderThatLeavesIsNoticedEvenWhenNothingChanges) {
  CommandOptions early;
  early.closeEarly = true;
  const CommandResult result = runCommand(
      {"listen", "--input", mFolder.writeSound("s.wav", std::vector<float>(8000), 8000)}, early);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "orvane-cli: standard output: Broken pipe\n");
}

TEST_F(Listen, ASocketWhoseReaderLeavesIsNoticedToo) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
  const std::string silence = mFolder.writeSound("s.wav", std::vector<float>(8000), 8000);
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::dup2(ends[1], STDOUT_FILENO);
    ::execl(ORVANE_CLI, "orvane-cli", "listen", "--input", silence.c_str(), "--seconds", "5",
            nullptr);
    ::_exit(127);
  }
  ::close(ends[1]);
  ::close(ends[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(WEXITSTATUS(status), 1);
}

TEST_F(Listen, WithoutATerminalALineIsPrintedPerChange) {
  // 500 Hz is 16 samples exactly, so nothing changes after the first reading.
  const std::string steady = mFolder.writeSound("b4.wav", sine(500.0, 8000, 30.0), 8000);
  const CommandResult result = runCommand({"listen", "--input", steady, "--seconds", "0.8"});
  EXPECT_EQ(result.output, "B4   +21 cents   500.0Hz, ideal  493.9Hz, +6.1Hz\n");
}

TEST_F(Listen, OnATerminalOneLineIsRewritten) {
  const std::string steady = mFolder.writeSound("b4.wav", sine(500.0, 8000, 30.0, 0.9), 8000);
  const auto [status, screen] = runOnTerminal({"listen", "--input", steady}, 100,
                                              [](pid_t process, const std::string &shown) {
                                                if (shown.find("B4") != std::string::npos)
                                                  ::kill(process, SIGINT);
                                              });
  EXPECT_EQ(status, 0);
  const std::string line =
      "\rB4   +21 cents  ○○○○○◈●●●○○   500.0Hz, ideal  493.9Hz, +6.1Hz   ▮▮▮▮▮▮▮▪  -1dB\x1b[K";
  EXPECT_NE(screen.find(line), std::string::npos) << screen;
  EXPECT_EQ(std::count(screen.begin(), screen.end(), '\n'), 1) << screen;
  EXPECT_TRUE(screen.ends_with("\r\n")) << screen;
}

}  // namespace
}  // namespace orvane::test
