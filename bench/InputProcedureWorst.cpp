// orvane-input-worst: the longest of a million calls of the input procedure with 512 frames of two
// channels at 192 kHz, while the main thread takes the blocks away and another thread keeps a core
// busy. As in the tuner, the input thread asks for real-time priority. Each call is followed by an
// equally long look at the clock alone: what that takes at its worst is the machine's doing. Prints
// "worst A median B machine C period D priority real-time|ordinary", in microseconds.
#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

#include <poll.h>

#include "audio/KeptMemory.h"
#include "audio/WakeUpDescriptor.h"
#include "core/CaptureBuffer.h"

namespace orvane {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kCalls = 1'000'000;
constexpr UInt32 kFrames = 512;
constexpr UInt32 kChannels = 2;
constexpr double kRate = 192000.0;
// About a block's; then a pause, in which the main thread takes it, as it does in the tuner.
constexpr int kCallsAtOnce = 20;
constexpr std::chrono::microseconds kPause{100};

bool askForRealTimePriority() {
  sched_param parameters{};
  parameters.sched_priority = 5;
  return pthread_setschedparam(pthread_self(), SCHED_FIFO, &parameters) == 0;
}

double microseconds(Clock::duration duration) {
  return std::chrono::duration<double, std::micro>(duration).count();
}

// The longest time between two looks at the clock in that duration.
Clock::duration longestGap(Clock::duration duration) {
  Clock::duration longest{};
  const auto start = Clock::now();
  for (auto last = start; last - start < duration;) {
    const auto now = Clock::now();
    longest = std::max(longest, now - last);
    last = now;
  }
  return longest;
}

// Keeps one core busy.
class BusyThread {
 public:
  BusyThread()
      : mThread([this] {
          while (!mIsEnding.load(std::memory_order_relaxed)) {
          }
        }) {}
  ~BusyThread() {
    mIsEnding = true;
    mThread.join();
  }

 private:
  std::atomic<bool> mIsEnding{false};
  std::thread mThread;
};

void callOften(CaptureBuffer &capture, std::atomic<bool> &isDone) {
  const bool isRealTime = askForRealTimePriority();
  std::vector<float> samples(kFrames * kChannels);
  for (std::size_t i = 0; i < samples.size(); ++i)
    samples[i] = static_cast<float>(i / kChannels % 101) / 101.0F - 0.5F;
  // As from one microphone, until the last frame: nothing takes longer.
  samples.back() += 0.25F;
  AudioBufferList list{};
  list.mNumberBuffers = 1;
  list.mBuffers[0] = {kChannels, static_cast<UInt32>(samples.size() * sizeof(float)),
                      samples.data()};
  const AudioTimeStamp time{1.0};
  const IOProcCall call{1, &time, &list, &time, nullptr, nullptr};
  std::vector<Clock::duration> taken;
  taken.reserve(kCalls);
  Clock::duration machine{};
  for (int number = 0; number < kCalls; ++number) {
    if (number % kCallsAtOnce == 0)
      std::this_thread::sleep_for(kPause);
    const auto before = Clock::now();
    capture.inputIOProc(&call);
    taken.push_back(Clock::now() - before);
    machine = std::max(machine, longestGap(taken.back()));
  }
  std::sort(taken.begin(), taken.end());
  std::printf("worst %.2f median %.2f machine %.2f period %.1f priority %s\n",
              microseconds(taken.back()), microseconds(taken[taken.size() / 2]),
              microseconds(machine), 1e6 * kFrames / kRate, isRealTime ? "real-time" : "ordinary");
  isDone = true;
}

void run() {
  WakeUpDescriptor wakeUp;
  BlockQueue queue(&wakeUp);
  CaptureBuffer capture(queue);
  capture.setSampleRate(kRate);
  const BusyThread busy;
  std::atomic<bool> isDone{false};
  std::thread input([&] { callOften(capture, isDone); });
  pollfd descriptor{wakeUp.descriptor(), POLLIN, 0};
  while (!isDone) {
    poll(&descriptor, 1, 100);
    wakeUp.clear();
    while (queue.take()) {
    }
  }
  input.join();
}

}  // namespace
}  // namespace orvane

int main() {
  orvane::keepFreedMemory();
  orvane::run();
}
