// What ends a command of orvane-cli early: one line that names the thing and the reason.
#pragma once

#include <stdexcept>
#include <string>

namespace orvane {

inline constexpr int kExitDone = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;

class CliError : public std::runtime_error {
 public:
  CliError(int exitCode, const std::string &thing, const std::string &reason)
      : std::runtime_error(thing + ": " + reason), mExitCode(exitCode) {}

  int exitCode() const { return mExitCode; }

 private:
  int mExitCode;
};

// "orvane-cli: LINE" on standard error. Control characters in it (a file's name may hold any) are
// shown as "?" so that it stays one line.
void printError(const std::string &line);

}  // namespace orvane
