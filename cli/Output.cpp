#include "cli/Output.h"

#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include "cli/CliError.h"

namespace orvane {
namespace {

constexpr std::size_t kBufferedBytes = 1 << 16;

bool writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written < 0) {
      if (errno == EINTR)
        continue;
      return false;
    }
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace

std::string oneLine(std::string text) {
  for (char &c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
      c = '?';
  }
  return text;
}

void printError(const std::string &line) {
  // Not a failure of the command's own when nobody can be told.
  static_cast<void>(writeAll(STDERR_FILENO, "orvane-cli: " + oneLine(line) + '\n'));
}

void Output::prepareStandardStreams() {
  // A closed output is opened for reading only, so that writing to it still fails as it should.
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (::fcntl(descriptor, F_GETFD) < 0 && errno == EBADF)
      ::open("/dev/null", O_RDONLY);
  }
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
}

void Output::write(std::string_view text) {
  mPending += text;
  if (mPending.size() >= kBufferedBytes)
    flush();
}

void Output::flush() {
  std::string text;
  text.swap(mPending);
  if (!writeAll(STDOUT_FILENO, text))
    throw CliError(kExitFailed, "standard output", std::strerror(errno));
}

bool Output::isTerminal() {
  return ::isatty(STDOUT_FILENO) == 1;
}

}  // namespace orvane
