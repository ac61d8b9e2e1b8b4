// A libpulse main loop that one thread runs and any thread may wake or ask to end, and the owning
// pointer of a connection to the server.
#pragma once

#include <pulse/pulseaudio.h>

#include <atomic>
#include <chrono>
#include <memory>

namespace orvane {

inline constexpr const char *kPulseClientName = "Orvane";

// Ends a connection without calling back.
struct PulseContextCloser {
  void operator()(pa_context *context) const;
};
using PulseContextPtr = std::unique_ptr<pa_context, PulseContextCloser>;

class PulseLoop {
 public:
  PulseLoop();

  // False when the system refused the loop; it must not be run then.
  bool isValid() const { return mLoop != nullptr; }

  // Any thread, never waits. After quit the loop's thread is to leave as soon as it can.
  void wake();
  void quit();
  bool isQuitting() const { return mQuit.load(std::memory_order_acquire); }

  // The loop's thread only.
  pa_mainloop_api *api() const { return pa_mainloop_get_api(mLoop.get()); }
  // Waits for something to do and does it.
  void iterate() { iterateWithin(-1); }
  // Runs the loop that long, or until quit.
  void runFor(std::chrono::microseconds duration);

 private:
  struct Closer {
    void operator()(pa_mainloop *loop) const { pa_mainloop_free(loop); }
  };

  void iterateWithin(int microseconds);

  std::unique_ptr<pa_mainloop, Closer> mLoop;
  std::atomic<bool> mQuit{false};
  std::atomic<bool> mIsWoken{false};
};

}  // namespace orvane
