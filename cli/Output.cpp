#include "cli/Output.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "cli/CliError.h"

namespace orvane {
namespace {

constexpr std::size_t kBufferedBytes = 1 << 16;
constexpr int kLongestWait = 86'400'000;  // milliseconds, a day: longer waits are made of several

// Writes some of the text and takes that much off it. False on an error.
bool writeSome(int descriptor, std::string_view &text, std::size_t most) {
  const ssize_t written = ::write(descriptor, text.data(), std::min(text.size(), most));
  if (written < 0)
    return errno == EINTR;
  text.remove_prefix(static_cast<std::size_t>(written));
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
  const std::string whole = "orvane-cli: " + oneLine(line) + '\n';
  std::string_view left = whole;
  while (!left.empty() && writeSome(STDERR_FILENO, left, left.size())) {
  }
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

void Output::stopAt(int descriptor, std::chrono::steady_clock::time_point deadline) {
  mStopDescriptor = descriptor;
  mDeadline = deadline;
}

void Output::waitUntilWritable() const {
  using std::chrono::milliseconds;
  const auto left = std::chrono::ceil<milliseconds>(mDeadline - std::chrono::steady_clock::now());
  const auto timeout = std::clamp(left, milliseconds(0), milliseconds(kLongestWait));
  pollfd descriptors[] = {{STDOUT_FILENO, POLLOUT, 0}, {mStopDescriptor, POLLIN, 0}};
  const int ready = ::poll(descriptors, 2, static_cast<int>(timeout.count()));
  if (descriptors[1].revents != 0 || (ready == 0 && left <= milliseconds(kLongestWait)))
    throw Stopped();
}

void Output::flush() {
  std::string text;
  text.swap(mPending);
  std::string_view left = text;
  while (!left.empty()) {
    // A pipe that says it can be written to takes so many bytes without waiting.
    std::size_t most = left.size();
    if (mStopDescriptor >= 0) {
      waitUntilWritable();
      most = PIPE_BUF;
    }
    if (!writeSome(STDOUT_FILENO, left, most))
      throw CliError(kExitFailed, "standard output", std::strerror(errno));
  }
}

bool Output::isTerminal() {
  return ::isatty(STDOUT_FILENO) == 1;
}

}  // namespace orvane
