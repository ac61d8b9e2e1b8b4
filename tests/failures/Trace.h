// What a program asks of the system while it runs: the sockets it makes, the programs it starts and
// the paths it would change, kept by strace. Main thread only.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace orvane::test {

class Trace {
 public:
  // The kept calls go to the file.
  explicit Trace(std::string file) : mFile(std::move(file)) {}

  // Why no program can be traced here; empty when it can.
  static std::string whyImpossible();

  // The command with what keeps its calls. Its process stays the command's own, so that signals
  // reach it.
  std::vector<std::string> command(const std::vector<std::string> &words) const;

  // Waits until all is kept after the program has ended, and reads it; false when it does not come.
  bool read();

  // "AF_UNIX" and the like.
  const std::set<std::string> &socketFamilies() const { return mSocketFamilies; }
  const std::set<std::string> &startedPrograms() const { return mStartedPrograms; }
  // Opened for writing, made, renamed, removed or given another length, owner, time or other
  // permissions, or tried to be; sockets with a place in the file system.
  const std::set<std::string> &changedPaths() const { return mChangedPaths; }

 private:
  void take(const std::string &line);

  std::string mFile;
  std::set<std::string> mSocketFamilies;
  std::set<std::string> mStartedPrograms;
  std::set<std::string> mChangedPaths;
};

}  // namespace orvane::test
