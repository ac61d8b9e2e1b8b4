// Tunes live: waits for blocks, for the end of the time asked for, and for the signals that end it.
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include "cli/CliError.h"
#include "cli/Commands.h"
#include "cli/LiveInput.h"
#include "cli/Output.h"
#include "cli/ReadingJson.h"
#include "cli/ReadingText.h"

namespace orvane {
namespace {

// The ending signals as something to wait for. Made before any other thread, so that none of them
// can be hit.
class EndingSignals {
 public:
  EndingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
      sigaddset(&signals, signal);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    mDescriptor = ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
  }
  ~EndingSignals() { ::close(mDescriptor); }
  EndingSignals(const EndingSignals &) = delete;
  EndingSignals &operator=(const EndingSignals &) = delete;

  int descriptor() const { return mDescriptor; }

 private:
  int mDescriptor;
};

double parseSeconds(const std::string &text) {
  double seconds = 0.0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size() || !(seconds > 0.0) ||
      !std::isfinite(seconds))
    throw CliError(kExitUsage, "--seconds", "'" + text + "' is not a number of seconds above 0");
  return seconds;
}

// Readings in the form that fits: JSON Lines, one live line on a terminal, else a line per change.
class LiveWriter {
 public:
  explicit LiveWriter(bool json) : mJson(json) {
    const char *terminal = std::getenv("TERM");
    mIsLive =
        !json && Output::isTerminal() && terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
    mIsColoured = std::getenv("NO_COLOR") == nullptr;
  }

  void write(const Reading &reading) {
    if (mJson) {
      mText.clear();
      appendJson(mText, reading, {});
      mOutput.write(mText);
      mOutput.flush();
    } else if (!mIsLive && reading.accepted) {
      show(changeLine(reading.display), "", "\n");
    }
  }

  // After a run of readings: the live line shows only the newest.
  void settle(const Display &display) {
    if (mIsLive)
      show(liveLine(display, mIsColoured, columns()), "\r", "\x1b[K");
  }

  // Before something else goes to the terminal, and at the end: the live line stays above it.
  void finish() {
    if (mIsLive && !mLast.empty())
      mOutput.write("\n");
    mLast.clear();
    mOutput.flush();
  }

 private:
  static std::size_t columns() {
    winsize size{};
    return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
  }

  void show(std::string line, const char *before, const char *after) {
    if (line == mLast)
      return;
    mOutput.write(before + line + after);
    mOutput.flush();
    mLast = std::move(line);
  }

  Output mOutput;
  bool mJson;
  bool mIsLive;
  bool mIsColoured;
  std::string mText;
  std::string mLast;
};

int listen(const ListenOptions &options, const Tuning &tuning, double seconds) {
  using Clock = std::chrono::steady_clock;
  const EndingSignals signals;
  const Inputs inputs(options.inputs);
  WakeUpDescriptor wakeUp;
  TerminalTuner tuner(tuning, &wakeUp);
  LiveInput input(inputs, options.device, tuner, wakeUp);
  LiveWriter writer(options.json);

  const auto start = Clock::now();
  const auto now = [start] { return std::chrono::duration<double>(Clock::now() - start).count(); };
  bool wasAlive = true;
  std::uint64_t lostBlocks = 0;
  while (now() < seconds) {
    const double left = std::ceil((seconds - now()) * 1000.0);
    // A whole day at most: longer does not fit the argument, and waking once a day costs nothing.
    const int timeout = static_cast<int>(std::clamp(left, 0.0, 86'400'000.0));
    pollfd descriptors[] = {{wakeUp.descriptor(), POLLIN, 0}, {signals.descriptor(), POLLIN, 0}};
    if (::poll(descriptors, 2, timeout) < 0 && errno != EINTR)
      throw CliError(kExitFailed, "poll", std::strerror(errno));
    if (descriptors[1].revents != 0)
      break;

    wakeUp.clear();
    while (const auto reading = tuner.takeReading(now()))
      writer.write(*reading);
    writer.settle(tuner.display());

    if (input.isAlive() != wasAlive) {
      wasAlive = !wasAlive;
      writer.finish();
      printError(input.title() + (wasAlive ? ": is back" : ": is gone, waiting for its return"));
    }
    if (tuner.queue().lostBlocks() != lostBlocks) {
      lostBlocks = tuner.queue().lostBlocks();
      writer.finish();
      printError("memory: " + std::to_string(lostBlocks) + " blocks of sound lost so far");
    }
  }
  writer.finish();
  return kExitDone;
}

}  // namespace

int runListen(const ListenOptions &options, const CommonOptions &common) {
  const double seconds =
      options.seconds ? parseSeconds(*options.seconds) : std::numeric_limits<double>::infinity();
  return listen(options, resolveTuning(common), seconds);
}

}  // namespace orvane
