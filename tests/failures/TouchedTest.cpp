// What the programs touch on the machine in a run as a person has it, held against lists of all
// that they may: SECURITY.md promises it.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>

#include "tests/cli/TestFiles.h"
#include "tests/desktop/Desktop.h"
#include "tests/failures/Trace.h"
#include "tests/servers/ChildProcess.h"
#include "tests/servers/HardwareProbe.h"
#include "tests/servers/PrivateServer.h"

namespace orvane::test {
namespace {

using Paths = std::set<std::string>;

class Touched : public testing::Test {
 protected:
  void SetUp() override {
    if (const std::string reason = Trace::whyImpossible(); !reason.empty())
      GTEST_SKIP() << "no program can be traced here: " << reason;
    ASSERT_TRUE(mServer.start());
    ASSERT_FALSE(mServer.loadSource("Mic").empty());
    std::filesystem::create_directories(mHome / ".config");
  }

  static bool isHeard() {
    return !PrivateServer::control({"list", "short", "source-outputs"}).empty();
  }

  // The library of the sound server opens its key so that it could write a new one, and makes the
  // folder for it where there is none.
  Paths ofTheSoundServer() const {
    const std::filesystem::path key = std::getenv("PULSE_COOKIE");
    return {key, key.parent_path()};
  }

  // The paths that are neither allowed nor in one of the folders, nor such a folder.
  static Paths others(const Paths &changed, const Paths &allowed, const Paths &folders = {}) {
    Paths others;
    for (const std::string &path : changed) {
      const bool isIn = std::ranges::any_of(folders, [&path](const std::string &folder) {
        return path == folder || path.starts_with(folder + "/");
      });
      if (!isIn && !allowed.contains(path))
        others.insert(path);
    }
    return others;
  }

  TestFolder mFolder;
  PrivateServer mServer{PrivateServer::Kind::kPulseAudio};
  const std::filesystem::path mHome = mFolder / "home";
  Trace mTrace{mFolder.path("trace")};
};

TEST_F(Touched, TheWindowProgramChangesItsSettingsAndMakesNoNetworkSocket) {
  Desktop desktop;
  ChildProcess program(desktop.command(mTrace.command({ORVANE_PROGRAM})), mFolder.path("log"));
  ASSERT_TRUE(eventually(isHeard)) << "it does not open the device";
  program.signal(SIGTERM);
  ASSERT_EQ(program.wait(std::chrono::seconds(10)), 0);
  ASSERT_TRUE(mTrace.read());
  EXPECT_EQ(mTrace.socketFamilies(), std::set<std::string>{"AF_UNIX"});
  EXPECT_EQ(mTrace.startedPrograms(), Paths{ORVANE_PROGRAM});
  const std::filesystem::path home = desktop.configurationFolder().parent_path();
  const std::string settings = desktop.configurationFolder() / "velmora";
  Paths allowed = ofTheSoundServer();
  allowed.insert("/dev/null");
  // The toolkit makes sure that the folder for sockets is there.
  allowed.insert(home.parent_path() / "runtime");
  // The font library keeps what it found, in the system's folder where it may write there, when
  // fonts have changed since.
  allowed.insert(home / ".cache");
  const Paths folders = {settings, home / ".cache/fontconfig", "/var/cache/fontconfig"};
  EXPECT_EQ(others(mTrace.changedPaths(), allowed, folders), Paths{});
  EXPECT_TRUE(mTrace.changedPaths().contains(settings + "/Orvane.ini"));
}

TEST_F(Touched, ListeningInTheTerminalChangesNothingAndMakesNoNetworkSocket) {
  ChildProcess program(mTrace.command({ORVANE_CLI, "listen", "--seconds", "1"}));
  ASSERT_EQ(program.wait(std::chrono::seconds(20)), 0);
  ASSERT_TRUE(mTrace.read());
  EXPECT_EQ(mTrace.socketFamilies(), std::set<std::string>{"AF_UNIX"});
  EXPECT_EQ(mTrace.startedPrograms(), Paths{ORVANE_CLI});
  EXPECT_EQ(others(mTrace.changedPaths(), ofTheSoundServer()), Paths{});
}

TEST_F(Touched, AnalyzingChangesNothingAndMakesNoSocketAtAll) {
  const std::string sound = mFolder.writeSound("a4.wav", sine(440.0, 44100, 1.0), 44100);
  ChildProcess program(mTrace.command({ORVANE_CLI, "analyze", sound}));
  ASSERT_EQ(program.wait(std::chrono::seconds(20)), 0);
  ASSERT_TRUE(mTrace.read());
  EXPECT_EQ(mTrace.socketFamilies(), Paths{});
  EXPECT_EQ(mTrace.startedPrograms(), Paths{ORVANE_CLI});
  EXPECT_EQ(mTrace.changedPaths(), Paths{});
}

// What the others see they would see of a program that does what it must not, too.
TEST_F(Touched, ATraceShowsEveryKindOfChangeAndEverySocket) {
  const std::string home = mFolder.path("home/");
  ChildProcess program(
      mTrace.command({"bash", "-c",
                      "cd \"$1\" && : >written && mv $1written $1renamed && mkdir $1folder &&"
                      "ln -s renamed $1link; : 2>/dev/null 3<>/dev/tcp/127.0.0.1/9; true",
                      "bash", home}));
  ASSERT_EQ(program.wait(std::chrono::seconds(20)), 0);
  ASSERT_TRUE(mTrace.read());
  EXPECT_TRUE(mTrace.socketFamilies().contains("AF_INET"));
  EXPECT_GT(mTrace.startedPrograms().size(), 1U);
  for (const char *name : {"written", "renamed", "link", "folder"})
    EXPECT_TRUE(mTrace.changedPaths().contains(home + name)) << name;
}

}  // namespace
}  // namespace orvane::test
