// Runs orvane-cli on a terminal, as a user would who looks at it, and keeps all that came to the
// screen. Main thread only.
#pragma once

#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace orvane::test {

struct TerminalResult {
  int status = 0;  // as waitpid gives it
  std::string screen;
};

// watch: called with the process and what has come so far, whenever something has.
inline TerminalResult runOnTerminal(
    const std::vector<std::string> &arguments, unsigned short columns,
    const std::function<void(pid_t, const std::string &)> &watch = {}) {
  winsize size{24, columns, 0, 0};
  int terminal = -1;
  const pid_t child = ::forkpty(&terminal, nullptr, nullptr, &size);
  if (child < 0)
    throw std::runtime_error("no terminal");
  if (child == 0) {
    ::setenv("TERM", "xterm", 1);
    ::setenv("NO_COLOR", "1", 1);
    ::setenv("XDG_DATA_HOME", "/nonexistent", 1);
    std::vector<char *> argv{const_cast<char *>(ORVANE_CLI)};
    for (const std::string &argument : arguments)
      argv.push_back(const_cast<char *>(argument.c_str()));
    argv.push_back(nullptr);
    ::execv(ORVANE_CLI, argv.data());
    ::_exit(127);
  }
  TerminalResult result;
  std::array<char, 4096> bytes;
  ssize_t count = 0;
  // It ends with an error when the other end is closed.
  while ((count = ::read(terminal, bytes.data(), bytes.size())) > 0) {
    result.screen.append(bytes.data(), static_cast<std::size_t>(count));
    if (watch)
      watch(child, result.screen);
  }
  ::close(terminal);
  ::waitpid(child, &result.status, 0);
  return result;
}

}  // namespace orvane::test
