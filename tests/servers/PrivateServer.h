// A real sound server of the test's own, in a temporary folder, that no sound card and no other
// program has anything to do with. Sources are made from named pipes, so that a test can say what
// they hear.
//
// Main thread only. The constructor sets the environment of this process so that clients find the
// server; there must be one such object at a time, and no other thread may read the environment
// meanwhile.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "tests/TemporaryFolder.h"
#include "tests/servers/ChildProcess.h"

namespace orvane::test {

class PrivateServer {
 public:
  enum class Kind { kPulseAudio, kPipeWire };

  // Prepares the folder and the environment, does not start the server.
  explicit PrivateServer(Kind kind);
  // Kills the server and removes the folder.
  ~PrivateServer();

  PrivateServer(const PrivateServer &) = delete;
  PrivateServer &operator=(const PrivateServer &) = delete;

  // Starts the server and waits until it answers; false when it does not within 10 s.
  bool start();
  // Ends it as a crash would, at once and without a farewell.
  void kill();
  // The same of PipeWire's daemon and its session manager alone: the service that clients are
  // connected with stays, and has nothing left to offer.
  void killDaemon();
  // Starts both anew and waits until they answer; false when they do not within 10 s.
  bool startDaemon();
  // It neither runs nor ends until thaw.
  void freeze() const;
  void thaw() const;

  // Makes a source that hears what is written into pipeOf(name), with a volume for each channel.
  // Returns the number to unload it with, empty when that failed.
  std::string loadSource(const std::string &name, int rate = 48000, int channels = 1,
                         const std::string &properties = {});
  void unload(const std::string &module) const;
  std::string pipeOf(const std::string &name) const;

  // Whether somebody else who listens to the source comes to hear a tenth of a second that is
  // louder than that; false when not within 10 s.
  bool sounds(const std::string &source, float louderThan) const;

  // The output of the server's own control program.
  static std::string control(std::vector<std::string> arguments);

  Kind kind() const { return mKind; }
  // A name for the test's output.
  static std::string nameOf(Kind kind);

 private:
  std::string path(const std::string &name) const { return (mFolder / name).string(); }
  void startPulseAudio();
  void startPipeWire();

  Kind mKind;
  TemporaryFolder mFolder;
  std::vector<ChildProcess> mProcesses;
  std::set<std::string> mPipes;
  // PipeWire's, among the processes.
  static constexpr std::size_t kDaemon = 1;
  static constexpr std::size_t kSessionManager = 2;
};

}  // namespace orvane::test
