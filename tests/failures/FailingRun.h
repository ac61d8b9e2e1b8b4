// Runs a program some of whose system calls fail (FailingCalls.c), once for each number of the call
// that does.
//
// How many of the numbers are tried is the environment's choice: ORVANE_LONG_COUNT for each kind of
// failure, and ORVANE_LONG_SEED says with which to begin. Main thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tests/cli/RunCommand.h"
#include "tests/cli/TestFiles.h"

namespace orvane::test {

enum class Calls { Memory, Files };
enum class Lasting { Once, ForGood };

struct Failure {
  Calls calls = Calls::Memory;
  Lasting lasting = Lasting::Once;
  int error = 0;               // errno, in place of the one that a call has of itself
  std::string after = {};      // counts from the opening of a file on whose path contains this
  bool quitsWhenIdle = false;  // SIGTERM once the program has nothing to do

  std::string name() const;
};

struct FailedRun {
  CommandResult result;
  std::uint64_t number = 0;  // of the call that failed, from 1
  std::uint64_t calls = 0;   // that were made
  std::string caller;        // the library, or the program, that made it
  std::string endedIn;       // the one in which a signal ended the program; empty when none did

  // For a test's message.
  std::string told() const;
};

class FailingRuns {
 public:
  // The arguments and options are those of runCommand.
  FailingRuns(std::vector<std::string> arguments, CommandOptions options = {})
      : mArguments(std::move(arguments)), mOptions(std::move(options)) {}

  // Tries the first call, the last and, evenly spread, so many between; before and after each the
  // caller has its say. Returns how many were tried.
  std::uint64_t forEach(const Failure &failure, std::uint64_t shortCount,
                        const std::function<void()> &before,
                        const std::function<void(const FailedRun &)> &after) const;
  // Only the call of this number, from 1; none for 0.
  FailedRun run(const Failure &failure, std::uint64_t number) const;

 private:
  std::vector<std::string> mArguments;
  CommandOptions mOptions;
  TestFolder mFolder;
};

// What holds for every program: it ends by itself within its time, and when it failed it says why.
// Empty when that is so. Every line of standard error begins with one of the words.
std::string whyUnclean(const FailedRun &run, const std::vector<std::string> &lineBeginnings);

}  // namespace orvane::test
