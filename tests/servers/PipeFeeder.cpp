#include "tests/servers/PipeFeeder.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <vector>

namespace orvane::test {

PipeFeeder::PipeFeeder(std::string pipe, std::function<float(std::uint64_t)> signal, int rate,
                       int channels, std::chrono::milliseconds tick)
    : mPipe(std::move(pipe)),
      mSignal(std::move(signal)),
      mRate(rate),
      mChannels(channels),
      mTick(tick) {
  ::signal(SIGPIPE, SIG_IGN);
  mThread = std::thread([this] { run(); });
}

PipeFeeder::~PipeFeeder() {
  mQuit = true;
  mThread.join();
}

void PipeFeeder::run() {
  using Clock = std::chrono::steady_clock;
  const auto framesPerTick = static_cast<int>(mRate * mTick.count() / 1000);
  std::vector<float> block;
  int pipe = -1;
  auto next = Clock::now();
  std::uint64_t sample = 0;
  while (!mQuit) {
    next += mTick;
    std::this_thread::sleep_until(next);
    if (pipe < 0)
      pipe = open(mPipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    block.clear();
    for (int frame = 0; frame < framesPerTick; ++frame, ++sample)
      block.insert(block.end(), static_cast<std::size_t>(mChannels), mSignal(sample));
    if (pipe < 0)
      continue;
    // Within the pipe's atomic size or not at all, so frames stay whole.
    const ssize_t count = write(pipe, block.data(), block.size() * sizeof(float));
    if (count < 0 && errno != EAGAIN) {
      close(pipe);
      pipe = -1;
    }
    mWritten = sample;
  }
  if (pipe >= 0)
    close(pipe);
}

}  // namespace orvane::test
