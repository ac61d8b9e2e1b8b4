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
  if (written < 0) {
    // Standard output may be shared with a program that made it non-blocking.
    if (errno == EAGAIN || errno == EWOULDBLOCK) {
      pollfd writable = {descriptor, POLLOUT, 0};
      return ::poll(&writable, 1, -1) >= 0 || errno == EINTR;
    }
    return errno == EINTR;
  }
  text.remove_prefix(static_cast<std::size_t>(written));
  return true;
}

}  // namespace

std::string oneLine(std::string text) {
  // Besides the plain control characters, in UTF-8: U+0080 to U+009F, which some terminals obey,
  // and the marks that turn the direction of writing or end the line.
  const auto isCommand = [&text](std::size_t at, std::size_t length) {
    const std::string_view bytes = std::string_view(text).substr(at, length);
    if (length == 2)
      return bytes >= "\xC2\x80" && bytes <= "\xC2\x9F" && bytes.size() == 2;
    return (bytes >= "\u2028" && bytes <= "\u202E") || (bytes >= "\u2066" && bytes <= "\u2069");
  };
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < 0x20 || byte == 0x7F)
      text[at] = '?';
    else if (byte == 0xC2 && isCommand(at, 2))
      text.replace(at, 2, "?");
    else if (byte == 0xE2 && isCommand(at, 3))
      text.replace(at, 3, "?");
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
  // A closed pipe and a limit of the file's size are errors of the write, not signals.
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
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
  if (mBeforeFlush && !mPending.empty())
    mBeforeFlush();
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
