// What the programs touch on the machine in a run as a person has it, held against lists of all
// that they may: SECURITY.md promises it.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "tests/cli/TestFiles.h"
#include "tests/desktop/OrvaneRig.h"
#include "tests/failures/Trace.h"
#include "tests/speech/SpeechRig.h"

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

  // What the window program may change but for its settings.
  Paths othersThanSettings(const Desktop &desktop) const {
    const std::filesystem::path home = desktop.configurationFolder().parent_path();
    Paths allowed = ofTheSoundServer();
    allowed.insert("/dev/null");
    // The toolkit makes sure that the folder for sockets is there.
    allowed.insert(home.parent_path() / "runtime");
    // The font library keeps what it found, in the system's folder where it may write there, when
    // fonts have changed since.
    allowed.insert(home / ".cache");
    const Paths folders = {desktop.configurationFolder() / "velmora", home / ".cache/fontconfig",
                           "/var/cache/fontconfig"};
    return others(mTrace.changedPaths(), allowed, folders);
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
  EXPECT_EQ(othersThanSettings(desktop), Paths{});
  EXPECT_TRUE(mTrace.changedPaths().contains(desktop.configurationFolder() / "velmora/Orvane.ini"));
}

TEST_F(Touched, SpeakingStartsTheHelperAloneAndMakesNoNetworkSocket) {
  FakeSpeechService speech;
  ASSERT_TRUE(speech.start("ok"));
  Instrument instrument(mServer.pipeOf("Mic"));
  instrument.play(440.0);
  Desktop desktop;
  const std::filesystem::path settings = desktop.configurationFolder() / "velmora/Orvane.ini";
  std::filesystem::create_directories(settings.parent_path());
  std::ofstream(settings) << "[General]\norg.velmora.TuneSpeechKey=true\n";
  ChildProcess program(desktop.command(mTrace.command({ORVANE_PROGRAM})), mFolder.path("log"));
  ASSERT_TRUE(eventually([&speech] { return !speech.texts().empty(); }, std::chrono::seconds(30)));
  program.signal(SIGTERM);
  ASSERT_EQ(program.wait(std::chrono::seconds(10)), 0);
  ASSERT_TRUE(mTrace.read());
  EXPECT_EQ(mTrace.socketFamilies(), std::set<std::string>{"AF_UNIX"});
  EXPECT_EQ(mTrace.startedPrograms(), (Paths{ORVANE_PROGRAM, ORVANE_SPEECH}));
  EXPECT_EQ(othersThanSettings(desktop), Paths{});
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

TEST_F(Touched, DrawingWritesTheDrawingByWayOfANewFileBesideItAndNothingElse) {
  const std::string sound = mFolder.writeSound("a4.wav", sine(440.0, 44100, 1.0), 44100);
  const std::string drawing = mFolder.path("a4.svg");
  ChildProcess program(mTrace.command({ORVANE_CLI, "analyze", "--plot", drawing, sound}));
  ASSERT_EQ(program.wait(std::chrono::seconds(20)), 0);
  ASSERT_TRUE(mTrace.read());
  EXPECT_EQ(mTrace.socketFamilies(), Paths{});
  EXPECT_EQ(mTrace.startedPrograms(), Paths{ORVANE_CLI});
  EXPECT_TRUE(mTrace.changedPaths().contains(drawing));
  for (const std::string &path : mTrace.changedPaths())
    EXPECT_TRUE(path == drawing || (path.starts_with(drawing + ".") && path.ends_with(".new")))
        << path;
  EXPECT_EQ(mTrace.changedPaths().size(), 2U);
}

TEST_F(Touched, ScalesComeAndGoByTheStandardStreamsOnly) {
  const std::string scale = mFolder.path("Vallotti.scl");
  {
    ChildProcess program(mTrace.command({ORVANE_CLI, "temperaments", "--export", "Vallotti"}),
                         scale);
    ASSERT_EQ(program.wait(std::chrono::seconds(20)), 0);
  }
  ASSERT_TRUE(mTrace.read());
  Trace importing(mFolder.path("importing"));
  ChildProcess program(importing.command({ORVANE_CLI, "temperaments", "--import", scale}),
                       mFolder.path("Vallotti.txt"));
  ASSERT_EQ(program.wait(std::chrono::seconds(20)), 0);
  ASSERT_TRUE(importing.read());
  for (const Trace *trace : {&mTrace, &importing}) {
    EXPECT_EQ(trace->socketFamilies(), Paths{});
    EXPECT_EQ(trace->startedPrograms(), Paths{ORVANE_CLI});
    EXPECT_EQ(trace->changedPaths(), Paths{});
  }
}

// What the others see they would see of a program that does what it must not, too.
TEST_F(Touched, ATraceShowsChangesOfEveryKindAndSockets) {
  const std::string home = mFolder.path("home/");
  for (const char *name : {"given", "aged", "owned", "marked", "shortened"})
    std::ofstream(home + name);
  // Most of it by way of a file that is open for reading only.
  constexpr const char *kOpenFiles =
      "import os, socket, sys\n"
      "folder = os.open(sys.argv[1], os.O_PATH)\n"
      "os.fchmod(os.open('given', os.O_RDONLY, dir_fd=folder), 0o600)\n"
      "os.utime(os.open('aged', os.O_RDONLY, dir_fd=folder))\n"
      "os.chown(os.open('owned', os.O_RDONLY, dir_fd=folder), -1, -1)\n"
      "os.truncate(sys.argv[1] + 'shortened', 0)\n"
      "socket.socket(socket.AF_UNIX).bind(sys.argv[1] + 'bound')\n"
      "os.setxattr(os.open('marked', os.O_RDONLY, dir_fd=folder), 'user.orvane', b'v')\n";
  ChildProcess program(
      mTrace.command({"bash", "-c",
                      "cd \"$1\" && : >written && mv $1written $1renamed && mkdir $1folder &&"
                      "ln -s renamed $1link; python3 -B -c \"$2\" $1;"
                      ": 2>/dev/null 3<>/dev/tcp/127.0.0.1/9; true",
                      "bash", home, kOpenFiles}));
  ASSERT_EQ(program.wait(std::chrono::seconds(20)), 0);
  ASSERT_TRUE(mTrace.read());
  EXPECT_TRUE(mTrace.socketFamilies().contains("AF_INET"));
  EXPECT_GT(mTrace.startedPrograms().size(), 1U);
  for (const char *name : {"written", "renamed", "link", "folder", "given", "aged", "owned",
                           "shortened", "bound", "marked"})
    EXPECT_TRUE(mTrace.changedPaths().contains(home + name)) << name;
}

}  // namespace
}  // namespace orvane::test
