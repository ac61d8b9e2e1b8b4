// Tunes live: waits for blocks, for the end of the time asked for, and for the signals that end it.
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include "cli/CliError.h"
#include "cli/Commands.h"
#include "cli/LiveInput.h"
#include "cli/Output.h"
#include "cli/ReadingRecords.h"
#include "cli/ReadingText.h"
#include "cli/Terminal.h"

namespace orvane {
namespace {

// The ending signals as something to wait for. Made before any other thread, so that none of them
// can be hit.
class EndingSignals {
 public:
  EndingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
      // Whoever started this may want it to outlive them (nohup).
      struct sigaction action {};
      if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)
        sigaddset(&signals, signal);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    mDescriptor = ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (mDescriptor < 0)
      throw CliError(kExitFailed, "signals", std::strerror(errno));
  }
  ~EndingSignals() { ::close(mDescriptor); }
  EndingSignals(const EndingSignals &) = delete;
  EndingSignals &operator=(const EndingSignals &) = delete;

  int descriptor() const { return mDescriptor; }
  bool isPending() const {
    pollfd descriptor = {mDescriptor, POLLIN, 0};
    return ::poll(&descriptor, 1, 0) == 1;
  }

 private:
  int mDescriptor;
};

// Thirty years: beyond any session, and within what the clock can count.
constexpr double kLongestSeconds = 1e9;

double parseSeconds(const std::string &text) {
  double seconds = 0.0;
  if (!parseWhole(text, seconds) || !(seconds > 0.0) || !std::isfinite(seconds))
    throw CliError(kExitUsage, "--seconds", "'" + text + "' is not a number of seconds above 0");
  return seconds;
}

// Readings in the form that fits: records, one live line on a terminal, else a line per change.
class LiveWriter {
 public:
  LiveWriter(std::optional<RecordForm> form, int stopDescriptor,
             std::chrono::steady_clock::time_point deadline) {
    mOutput.stopAt(stopDescriptor, deadline);
    if (form) {
      mRecords.emplace(*form);
      mOutput.write(ReadingRecords::header(*form, false));
    }
    const char *terminal = std::getenv("TERM");
    mIsLive =
        !form && Output::isTerminal() && terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
    mIsColoured = std::getenv("NO_COLOR") == nullptr;
  }

  void write(const Reading &reading) {
    if (mRecords) {
      mOutput.write(mRecords->line(reading));
      mOutput.flush();
    } else if (!mIsLive && reading.isShown()) {
      show(changeLine(reading.display), "", "\n");
    }
  }

  // After a run of readings: the live line shows only the newest.
  void settle(const Display &display) {
    if (mIsLive)
      show(liveLine(display, mIsColoured, terminalColumns(STDOUT_FILENO)), "\r", "\x1b[K");
  }

  // Before something else goes to the terminal, and at the end: the live line stays above it.
  void finish() {
    if (mIsLive && !mLast.empty())
      mOutput.write("\n");
    mLast.clear();
    mOutput.flush();
  }

 private:
  void show(std::string line, const char *before, const char *after) {
    if (line == mLast)
      return;
    mOutput.write(before + line + after);
    mOutput.flush();
    mLast = std::move(line);
  }

  Output mOutput;
  bool mIsLive;
  bool mIsColoured;
  std::optional<ReadingRecords> mRecords;
  std::string mLast;
};

// What the terminal tells besides the readings: the device's going and coming, sound that stays
// away, blocks that were lost. Each once.
class Notices {
 public:
  Notices(const LiveInput &input, const BlockQueue &queue) : mInput(input), mQueue(queue) {}

  void blockArrived(double now) {
    mQuietSince = now;
    mIsQuietTold = false;
  }

  // Seconds until look() may have something to say that nothing else wakes for.
  double secondsToNext(double now) const {
    return mIsQuietTold ? std::numeric_limits<double>::infinity()
                        : std::max(0.0, mQuietSince + kQuietSeconds - now);
  }

  // The line to print, empty when there is none.
  std::string look(double now) {
    if (mInput.isAlive() != mWasAlive) {
      mWasAlive = !mWasAlive;
      blockArrived(now);
      if (!mWasAlive && mInput.isFile())
        throw CliError(kExitFailed, mInput.title(), "gives no sound");  // a file does not return
      return mInput.title() + (mWasAlive ? ": is back" : ": is gone, waiting for its return");
    }
    // Awake so late, this process was stopped itself, and no block could arrive.
    if (!mIsQuietTold && now - mQuietSince > kQuietSeconds + kLateSeconds)
      blockArrived(now);
    if (!mIsQuietTold && now - mQuietSince >= kQuietSeconds) {
      mIsQuietTold = true;
      if (mWasAlive)
        return mInput.title() + ": no sound arrives, not even silence; still listening";
    }
    if (mQueue.lostBlocks() != mLostBlocks) {
      mLostBlocks = mQueue.lostBlocks();
      return "memory: " + std::to_string(mLostBlocks) + " blocks of sound lost so far";
    }
    return {};
  }

 private:
  static constexpr double kQuietSeconds = 3.0;
  static constexpr double kLateSeconds = 0.1;

  const LiveInput &mInput;
  const BlockQueue &mQueue;
  bool mWasAlive = true;
  double mQuietSince = 0.0;
  bool mIsQuietTold = false;
  std::uint64_t mLostBlocks = 0;
};

// Waits for a block, a signal, the loss of the reader, or the end of the time. False when it is
// time to stop.
bool waitForMore(const WakeUpDescriptor &wakeUp, const EndingSignals &signals, double seconds) {
  const double milliseconds = std::clamp(std::ceil(seconds * 1000.0), 0.0, 86'400'000.0);
  pollfd descriptors[] = {
      {wakeUp.descriptor(), POLLIN, 0}, {signals.descriptor(), POLLIN, 0}, {STDOUT_FILENO, 0, 0}};
  if (::poll(descriptors, 3, static_cast<int>(milliseconds)) < 0 && errno != EINTR)
    throw CliError(kExitFailed, "poll", std::strerror(errno));
  if (descriptors[1].revents != 0)
    return false;
  // Told at once, not only with the next line: there may never be one.
  if (descriptors[2].revents != 0)
    throw CliError(kExitFailed, "standard output", std::strerror(EPIPE));
  return true;
}

int listen(const ListenOptions &options, const Tuning &tuning, double seconds) {
  using Clock = std::chrono::steady_clock;
  const EndingSignals signals;
  const Inputs inputs(options.inputs);
  WakeUpDescriptor wakeUp;
  if (wakeUp.descriptor() < 0)
    throw CliError(kExitFailed, "wake-up", "the system has no descriptor to give");
  TerminalTuner tuner(tuning, &wakeUp);
  std::optional<LiveInput> input;
  try {
    input.emplace(inputs, options.device, tuner, wakeUp);
  } catch (const CliError &) {
    // An end that was asked for while the server kept us waiting is no failure.
    if (signals.isPending())
      return kExitDone;
    throw;
  }

  const auto start = Clock::now();
  const auto now = [start] { return std::chrono::duration<double>(Clock::now() - start).count(); };
  LiveWriter writer(recordForm(options.json, options.csv), signals.descriptor(),
                    start + std::chrono::duration_cast<Clock::duration>(
                                std::chrono::duration<double>(std::min(seconds, kLongestSeconds))));
  Notices notices(*input, tuner.queue());
  try {
    while (now() < seconds &&
           waitForMore(wakeUp, signals, std::min(seconds - now(), notices.secondsToNext(now())))) {
      wakeUp.clear();
      while (const auto reading = tuner.takeReading(now())) {
        notices.blockArrived(reading->time);
        writer.write(*reading);
        if (now() >= seconds)
          break;
      }
      writer.settle(tuner.display());
      for (std::string line; !(line = notices.look(now())).empty();) {
        writer.finish();
        printError(line);
      }
    }
    writer.finish();
  } catch (const Output::Stopped &) {
    // The reader had stopped reading; what it did not take is lost to it.
  }
  return kExitDone;
}

}  // namespace

int runListen(const ListenOptions &options, const CommonOptions &common) {
  const double seconds =
      options.seconds ? parseSeconds(*options.seconds) : std::numeric_limits<double>::infinity();
  return listen(options, resolveTuning(common), seconds);
}

}  // namespace orvane
