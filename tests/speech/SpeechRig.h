// The speech services of the tests: one that writes down what it is given, and the real one.
// Main thread only. They set this process's environment so that clients find them; there must be
// one such object at a time, and no other thread may read the environment meanwhile.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "tests/TemporaryFolder.h"
#include "tests/servers/ChildProcess.h"

namespace orvane::test {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using std::chrono::seconds;

// Runs the event loop until the condition holds; false when it does not come to hold.
bool runUntil(const std::function<bool()> &condition, milliseconds longest = seconds(15));
void runFor(milliseconds duration);

// Its folder and address; nothing answers there yet.
class SpeechServiceFolder {
 public:
  SpeechServiceFolder();
  std::string path(const std::string &name) const { return (mFolder / name).string(); }
  // Starts the command, whose service listens at path("socket"); false when it does not in 10 s.
  bool start(const std::vector<std::string> &command);
  void kill() { mProcess.kill(); }
  void signal(int number) const { mProcess.signal(number); }

 private:
  TemporaryFolder mFolder;
  ChildProcess mProcess;
};

class FakeSpeechService : public SpeechServiceFolder {
 public:
  // As fake_speech_service.py explains it.
  bool start(const std::string &mode);
  // Every text that came, in order, as JSON.
  std::vector<std::string> texts() const;
};

// speech-dispatcher with espeak-ng, playing on the sound server of the environment.
class RealSpeechService : public SpeechServiceFolder {
 public:
  bool start();
};

}  // namespace orvane::test
