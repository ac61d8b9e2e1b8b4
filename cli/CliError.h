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

// The text with its control characters shown as "?": names of files, devices and temperaments may
// hold any, and none may break a line or reach the terminal as a command.
std::string oneLine(std::string text);

// "orvane-cli: LINE" on standard error, as one line.
void printError(const std::string &line);

}  // namespace orvane
