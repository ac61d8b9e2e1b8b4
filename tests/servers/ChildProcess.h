// A program that a test runs beside itself. It dies with the test, however that ends.
// Main thread only.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace orvane::test {

class ChildProcess {
 public:
  ChildProcess() = default;
  // Output goes to the file when one is named, else nowhere. Throws std::runtime_error when the
  // process cannot be made; a program that cannot be run ends with status 127.
  explicit ChildProcess(const std::vector<std::string> &command, const std::string &logFile = {});
  // Kills it.
  ~ChildProcess();

  ChildProcess(ChildProcess &&other) noexcept;
  ChildProcess &operator=(ChildProcess &&other) noexcept;

  // Does nothing when it has ended.
  void signal(int number) const;
  void kill();
  // Its exit status; -1 when a signal ended it; kills it, and -1, when it takes too long.
  int wait(std::chrono::milliseconds longest);

  void writeLine(const std::string &line) const;  // to its standard input

 private:
  pid_t mProcess = -1;
  int mInput = -1;
};

// Runs the command to its end and returns its standard output and error; empty when it takes longer
// than 10 s.
std::string outputOf(const std::vector<std::string> &command);

}  // namespace orvane::test
