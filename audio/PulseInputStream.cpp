#include "audio/PulseInputStream.h"

#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <system_error>

#include "audio/BackgroundThread.h"

namespace orvane {

namespace {

// Low: enough to be ahead of ordinary work, below the sound server.
constexpr int kInputPriority = 5;

// A fragment of 20 ms: every one wakes the machine, and a block takes three of them anyway. The
// server keeps 240 ms for a reader that has stalled, and what is on its way besides, lest the
// reader is long late afterwards.
constexpr std::uint32_t kFragmentsPerSecond = 50;
constexpr std::uint32_t kFragmentsAtMost = 12;
// The server drops whole what is longer than it may keep, and a pipe comes in pieces of 4096 bytes:
// as many frames at most, of 4 bytes each.
constexpr std::uint32_t kLargestPiece = 4096 * 4;

void askForRealTimePriority() {
  sched_param parameters{};
  parameters.sched_priority = kInputPriority;
  // Children of the process must not inherit it.
  pthread_setschedparam(pthread_self(), SCHED_FIFO | SCHED_RESET_ON_FORK, &parameters);
}

std::size_t framesPerFragment(const pa_sample_spec &spec) {
  return std::max<std::uint32_t>(spec.rate / kFragmentsPerSecond, 1);
}

}  // namespace

void PulseInputStream::StreamCloser::operator()(pa_stream *stream) const {
  pa_stream_set_state_callback(stream, nullptr, nullptr);
  pa_stream_set_moved_callback(stream, nullptr, nullptr);
  pa_stream_set_read_callback(stream, nullptr, nullptr);
  pa_stream_disconnect(stream);
  pa_stream_unref(stream);
}

PulseInputStream::PulseInputStream(PulseStreamSpec spec, AudioDeviceIOProc proc, void *clientData,
                                   std::function<void()> onFailure)
    : mSpec(std::move(spec)),
      mFrameBytes(pa_frame_size(&mSpec.sampleSpec)),
      mProc(proc),
      mClientData(clientData),
      mOnFailure(std::move(onFailure)),
      mSilence(framesPerFragment(mSpec.sampleSpec) * mSpec.sampleSpec.channels, 0.0F) {
  if (!mLoop.isValid())
    throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
  mThread = startBackgroundThread([this] { run(); });
}

PulseInputStream::~PulseInputStream() {
  mLoop.quit();
  mThread.join();
}

void PulseInputStream::run() {
  askForRealTimePriority();
  while (!mLoop.isQuitting()) {
    listenOnce();
    if (mLoop.isQuitting())
      return;
    mOnFailure();
    mLoop.runFor(mRetryDelay.next());
  }
}

void PulseInputStream::listenOnce() {
  mIsFailed = false;
  // A connection that has failed never revives, so each attempt takes a new one.
  mContext.reset(pa_context_new(mLoop.api(), kPulseClientName));
  if (mContext != nullptr) {
    pa_context_set_state_callback(mContext.get(), contextStateChanged, this);
    if (pa_context_connect(mContext.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
      fail();
    while (!mIsFailed && !mLoop.isQuitting())
      mLoop.iterate();
  }
  mIsDelivering = false;
  mStream.reset();
  mContext.reset();
}

void PulseInputStream::openStream() {
  mStream.reset(pa_stream_new(mContext.get(), "Input", &mSpec.sampleSpec, &mSpec.channelMap));
  if (mStream == nullptr)
    return fail();
  pa_stream_set_state_callback(mStream.get(), streamStateChanged, this);
  pa_stream_set_moved_callback(mStream.get(), streamMoved, this);
  pa_stream_set_read_callback(mStream.get(), streamReadable, this);

  constexpr auto kServersChoice = static_cast<std::uint32_t>(-1);
  pa_buffer_attr attributes{};
  attributes.fragsize =
      static_cast<std::uint32_t>(framesPerFragment(mSpec.sampleSpec) * mFrameBytes);
  attributes.maxlength = std::max(attributes.fragsize * kFragmentsAtMost, kLargestPiece);
  attributes.tlength = attributes.prebuf = attributes.minreq = kServersChoice;
  // Without the first flag the server moves the stream to some other source when its own goes.
  const auto flags = static_cast<pa_stream_flags_t>(PA_STREAM_DONT_MOVE | PA_STREAM_ADJUST_LATENCY);
  if (pa_stream_connect_record(mStream.get(), mSpec.source.c_str(), &attributes, flags) < 0)
    fail();
}

void PulseInputStream::streamIsReady() {
  // The number too: a monitor may carry the name of a source.
  const char *source = pa_stream_get_device_name(mStream.get());
  if (source == nullptr || source != mSpec.source ||
      pa_stream_get_device_index(mStream.get()) != mSpec.index)
    return fail();
  mIsDelivering = true;
}

void PulseInputStream::fail() {
  mIsDelivering = false;
  mIsFailed = true;
}

void PulseInputStream::readAll() {
  while (mIsDelivering && !mLoop.isQuitting()) {
    const void *samples = nullptr;
    std::size_t bytes = 0;
    if (pa_stream_peek(mStream.get(), &samples, &bytes) < 0)
      return fail();
    if (bytes == 0)
      return;
    mRetryDelay.reset();
    if (samples != nullptr)
      deliver(samples, bytes / mFrameBytes);
    else
      deliverSilence(bytes / mFrameBytes);
    pa_stream_drop(mStream.get());
  }
}

void PulseInputStream::deliver(const void *samples, std::size_t frames) {
  if (frames == 0)
    return;
  AudioBufferList input{};
  input.mNumberBuffers = 1;
  input.mBuffers[0].mNumberChannels = mSpec.sampleSpec.channels;
  input.mBuffers[0].mDataByteSize = static_cast<UInt32>(frames * mFrameBytes);
  input.mBuffers[0].mData = const_cast<void *>(samples);

  AudioTimeStamp inputTime;
  inputTime.mSampleTime = mSampleTime;
  mSampleTime += static_cast<Float64>(frames);
  AudioTimeStamp now;
  now.mSampleTime = mSampleTime;
  AudioBufferList output{};
  const AudioTimeStamp outputTime;
  mProc(mSpec.device, &now, &input, &inputTime, &output, &outputTime, mClientData);
}

void PulseInputStream::deliverSilence(std::size_t frames) {
  const std::size_t atOnce = mSilence.size() / mSpec.sampleSpec.channels;
  while (frames > 0 && !mLoop.isQuitting()) {
    const std::size_t count = std::min(frames, atOnce);
    deliver(mSilence.data(), count);
    frames -= count;
  }
}

void PulseInputStream::contextStateChanged(pa_context *context, void *self) {
  auto *stream = static_cast<PulseInputStream *>(self);
  const pa_context_state_t state = pa_context_get_state(context);
  if (state == PA_CONTEXT_READY)
    stream->openStream();
  else if (!PA_CONTEXT_IS_GOOD(state))
    stream->fail();
}

void PulseInputStream::streamStateChanged(pa_stream *stream, void *self) {
  const pa_stream_state_t state = pa_stream_get_state(stream);
  if (state == PA_STREAM_READY)
    static_cast<PulseInputStream *>(self)->streamIsReady();
  else if (!PA_STREAM_IS_GOOD(state))
    static_cast<PulseInputStream *>(self)->fail();
}

void PulseInputStream::streamMoved(pa_stream * /*stream*/, void *self) {
  static_cast<PulseInputStream *>(self)->fail();
}

void PulseInputStream::streamReadable(pa_stream * /*stream*/, std::size_t /*bytes*/, void *self) {
  static_cast<PulseInputStream *>(self)->readAll();
}

}  // namespace orvane
