#include "cli/Output.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "cli/CliError.h"

namespace orvane {
namespace {

constexpr std::size_t kBufferedBytes = 1 << 16;
constexpr std::size_t kSurelyTaken = 256;  // bytes, by a pipe or terminal that can be written to
constexpr int kLongestWait = 86'400'000;   // milliseconds, a day: longer waits are made of several

}  // namespace

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

bool Output::isWritable() const {
  using std::chrono::milliseconds;
  const auto left = std::chrono::ceil<milliseconds>(mDeadline - std::chrono::steady_clock::now());
  const auto timeout = std::clamp(left, milliseconds(0), milliseconds(kLongestWait));
  pollfd descriptors[] = {{STDOUT_FILENO, POLLOUT, 0}, {mStopDescriptor, POLLIN, 0}};
  const int ready = ::poll(descriptors, 2, static_cast<int>(timeout.count()));
  if (descriptors[0].revents != 0)
    return true;
  if (descriptors[1].revents != 0 || (ready == 0 && left <= milliseconds(kLongestWait)))
    throw Stopped();
  return false;
}

void Output::flush() {
  if (mBeforeFlush && !mPending.empty())
    mBeforeFlush();
  std::string text;
  text.swap(mPending);
  std::string_view left = text;
  while (!left.empty()) {
    std::size_t most = left.size();
    if (mStopDescriptor >= 0) {
      if (!isWritable())
        continue;
      most = std::min(most, kSurelyTaken);
    }
    const ssize_t written = ::write(STDOUT_FILENO, left.data(), most);
    if (written >= 0)
      left.remove_prefix(static_cast<std::size_t>(written));
    else if (errno == EAGAIN || errno == EWOULDBLOCK)
      isWritable();  // shared with a program that made it non-blocking
    else if (errno != EINTR)
      throw CliError(kExitFailed, "standard output", std::strerror(errno));
  }
}

bool Output::isTerminal() {
  return ::isatty(STDOUT_FILENO) == 1;
}

}  // namespace orvane
