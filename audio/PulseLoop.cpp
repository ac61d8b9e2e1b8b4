#include "audio/PulseLoop.h"

#include <csignal>
#include <thread>

#include "audio/RetryDelay.h"

namespace orvane {
namespace {

// Without memory the library raises SIGQUIT to leave a core dump, and where that is blocked, as in
// the background threads, ends the program with a line and status 1.
pa_mainloop *newLoop() {
  sigset_t quit;
  sigset_t before;
  sigemptyset(&quit);
  sigaddset(&quit, SIGQUIT);
  pthread_sigmask(SIG_BLOCK, &quit, &before);
  pa_mainloop *loop = pa_mainloop_new();
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return loop;
}

}  // namespace

void PulseContextCloser::operator()(pa_context *context) const {
  pa_context_set_state_callback(context, nullptr, nullptr);
  pa_context_set_subscribe_callback(context, nullptr, nullptr);
  pa_context_disconnect(context);
  pa_context_unref(context);
}

PulseLoop::PulseLoop() : mLoop(newLoop()) {}

void PulseLoop::wake() {
  mIsWoken.store(true);
  if (mLoop != nullptr)
    pa_mainloop_wakeup(mLoop.get());
}

void PulseLoop::quit() {
  mQuit.store(true, std::memory_order_release);
  wake();
}

void PulseLoop::runFor(std::chrono::microseconds duration) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + duration;
  while (!isQuitting()) {
    const auto left = std::chrono::ceil<std::chrono::microseconds>(end - Clock::now());
    if (left.count() <= 0)
      return;
    iterateWithin(static_cast<int>(left.count()));
  }
}

void PulseLoop::iterateWithin(int microseconds) {
  pa_mainloop *loop = mLoop.get();
  const bool isPrepared = pa_mainloop_prepare(loop, microseconds) >= 0;
  // Preparing discards the wake-ups that came before it.
  if (mIsWoken.exchange(false))
    pa_mainloop_wakeup(loop);
  if (!isPrepared || pa_mainloop_poll(loop) < 0 || pa_mainloop_dispatch(loop) < 0)
    std::this_thread::sleep_for(RetryDelay::kFirst);  // a loop that cannot wait must not spin
}

}  // namespace orvane
