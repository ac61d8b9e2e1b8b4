// Writes a signal into a named pipe at its own pace, for as long as the object lives, however often
// the reader comes and goes.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>

namespace orvane::test {

class PipeFeeder {
 public:
  // signal(n) is sample n, the same on every channel; called on the feeder's thread. Each tick
  // writes what is due by then, at most 4096 bytes.
  PipeFeeder(std::string pipe, std::function<float(std::uint64_t)> signal, int rate = 48000,
             int channels = 1, std::chrono::milliseconds tick = std::chrono::milliseconds(10));
  ~PipeFeeder();

  PipeFeeder(const PipeFeeder &) = delete;
  PipeFeeder &operator=(const PipeFeeder &) = delete;

  // Any thread. Frames written so far.
  std::uint64_t written() const { return mWritten.load(); }

 private:
  void run();

  const std::string mPipe;
  const std::function<float(std::uint64_t)> mSignal;
  const int mRate;
  const int mChannels;
  const std::chrono::milliseconds mTick;
  std::atomic<bool> mQuit{false};
  std::atomic<std::uint64_t> mWritten{0};
  std::thread mThread;
};

}  // namespace orvane::test
