// Runs orvane-cli, or another program, as a user would and keeps everything it said. Main thread
// only.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace orvane::test {

struct CommandResult {
  int exitCode = -1;  // −1 when it had to be killed or a signal ended it
  int signal = 0;     // the one that ended it
  // Whether it had to be ended: by SIGABRT, and by SIGKILL where that is not enough.
  bool tookTooLong = false;
  long peakKiB = 0;  // the most memory it held
  std::string output;
  std::string errors;

  std::vector<std::string> lines() const;  // of the output
};

struct CommandOptions {
  std::string program;                                           // a path in place of orvane-cli's
  std::vector<std::pair<std::string, std::string>> environment;  // set besides this process's own
  std::string outputTo;       // a file in place of the pipe; "-" closes standard output
  long mostBytes = 0;         // limit of the size of that file; 0 for none
  bool closeEarly = false;    // nobody reads the pipe
  int interruptAfterMs = 0;   // SIGINT after so long; 0 for never
  bool heedsModes = false;    // of files, also when root runs it
  bool withoutServer = true;  // point it at a sound server that is not there
};

// arguments: what follows the program's name. Killed after 30 s.
CommandResult runCommand(const std::vector<std::string> &arguments,
                         const CommandOptions &options = {});

}  // namespace orvane::test
