#include "tests/speech/SpeechRig.h"

#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include <QCoreApplication>

namespace orvane::test {
namespace {

bool isListening(const std::string &path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool isConnected =
      connect(client, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
  close(client);
  return isConnected;
}

}  // namespace

bool runUntil(const std::function<bool()> &condition, milliseconds longest) {
  const auto end = Clock::now() + longest;
  while (!condition()) {
    if (Clock::now() > end)
      return false;
    QCoreApplication::processEvents();
    std::this_thread::sleep_for(milliseconds(5));
  }
  return true;
}

void runFor(milliseconds duration) {
  runUntil([] { return false; }, duration);
}

SpeechServiceFolder::SpeechServiceFolder() {
  setenv("SPEECHD_ADDRESS", ("unix_socket:" + path("socket")).c_str(), 1);
  // A client that finds no service would start one.
  setenv("SPEECHD_CMD", "/bin/false", 1);
}

bool SpeechServiceFolder::start(const std::vector<std::string> &command) {
  std::filesystem::remove(path("socket"));
  mProcess = ChildProcess(command, path("log"));
  return runUntil([this] { return isListening(path("socket")); }, seconds(10));
}

bool FakeSpeechService::start(const std::string &mode) {
  return SpeechServiceFolder::start({"python3", "-B",
                                     ORVANE_SPEECH_TESTS_DIR "/fake_speech_service.py",
                                     path("socket"), path("texts"), mode});
}

std::vector<std::string> FakeSpeechService::texts() const {
  std::vector<std::string> lines;
  std::ifstream log(path("texts"));
  for (std::string line; std::getline(log, line);)
    lines.push_back(line);
  return lines;
}

bool RealSpeechService::start() {
  std::filesystem::create_directories(path("conf/modules"));
  std::ofstream(path("conf/modules/espeak-ng.conf"));
  std::ofstream(path("conf/speechd.conf")) << "AudioOutputMethod \"pulse\"\n"
                                              "AddModule \"espeak-ng\" \"sd_espeak-ng\" "
                                              "\"espeak-ng.conf\"\n"
                                              "DefaultModule espeak-ng\n"
                                              "DefaultLanguage \"en\"\n";
  return SpeechServiceFolder::start({"speech-dispatcher", "-s", "-t", "0", "-C", path("conf"), "-L",
                                     path(""), "-l", "1", "-c", "unix_socket", "-S", path("socket"),
                                     "-P", path("pid")});
}

}  // namespace orvane::test
