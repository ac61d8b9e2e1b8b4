// One running input: a record stream on exactly one source, with a thread, a loop and a connection
// of its own, so that nothing else can delay the samples.
//
// The thread (the input thread) lives as long as the object. It asks for real-time priority and
// goes on without where that is refused. A stream that fails, or that the server would feed from
// any other source, is given up and tried again. Within the callback this class neither allocates,
// locks nor logs.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "audio/AudioHardware.h"
#include "audio/PulseLoop.h"
#include "audio/PulseMirror.h"
#include "audio/RetryDelay.h"

namespace orvane {

class PulseInputStream {
 public:
  // Main or notification thread. Throws std::system_error where the system refuses a thread or a
  // loop. onFailure is called on the input thread, outside the callback, each time the stream
  // fails.
  PulseInputStream(PulseStreamSpec spec, AudioDeviceIOProc proc, void *clientData,
                   std::function<void()> onFailure);
  // Main or notification thread; never waits for the server. Afterwards the procedure does not run.
  ~PulseInputStream();

  PulseInputStream(const PulseInputStream &) = delete;
  PulseInputStream &operator=(const PulseInputStream &) = delete;

  const PulseStreamSpec &spec() const { return mSpec; }

 private:
  struct StreamCloser {
    void operator()(pa_stream *stream) const;
  };
  using StreamPtr = std::unique_ptr<pa_stream, StreamCloser>;

  void run();
  void listenOnce();
  void openStream();
  void streamIsReady();
  void fail();
  void readAll();
  void deliver(const void *samples, std::size_t frames);
  void deliverSilence(std::size_t frames);

  static void contextStateChanged(pa_context *context, void *self);
  static void streamStateChanged(pa_stream *stream, void *self);
  static void streamMoved(pa_stream *stream, void *self);
  static void streamReadable(pa_stream *stream, std::size_t bytes, void *self);

  const PulseStreamSpec mSpec;
  const std::size_t mFrameBytes;
  const AudioDeviceIOProc mProc;
  void *const mClientData;
  const std::function<void()> mOnFailure;
  const std::vector<Float32> mSilence;

  PulseLoop mLoop;

  // Input thread only.
  PulseContextPtr mContext;
  StreamPtr mStream;  // goes before its context
  RetryDelay mRetryDelay;
  bool mIsFailed = false;
  bool mIsDelivering = false;
  Float64 mSampleTime = 1.0;  // of the next frame; above zero from the first callback on

  std::thread mThread;  // last: starts when all else is there
};

}  // namespace orvane
