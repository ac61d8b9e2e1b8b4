#include "audio/RecordingPlayer.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <utility>
#include <vector>

#include "audio/BackgroundThread.h"

namespace orvane {

namespace {

using std::chrono::nanoseconds;

constexpr std::int64_t kCallbacksPerSecond = 100;
// After a longer stall the time that was lost is let go instead of being made up in a burst.
constexpr nanoseconds kLongestDelay = std::chrono::milliseconds(250);

// Exact to the nanosecond for as long as anyone listens.
nanoseconds durationOf(std::int64_t frames, std::int64_t rate) {
  constexpr std::int64_t kSecond = 1000000000;
  return nanoseconds(frames / rate * kSecond + frames % rate * kSecond / rate);
}

// Fills samples with count frames, from the start again at the end. Fewer only when the file has
// nothing more to give.
std::int64_t fill(SoundFile &file, float *samples, std::int64_t count,
                  const std::stop_token &stop) {
  std::int64_t done = file.readFrames(samples, count);
  while (done < count && !stop.stop_requested()) {
    if (!file.rewind())
      break;
    const std::int64_t got = file.readFrames(samples + done * file.channels(), count - done);
    if (got == 0)
      break;
    done += got;
  }
  return done;
}

}  // namespace

RecordingPlayer::RecordingPlayer(SoundFile &file, PlaybackClock &clock, AudioDeviceID device,
                                 std::function<void()> onDead)
    : mFile(file), mClock(clock), mDevice(device), mOnDead(std::move(onDead)) {}

void RecordingPlayer::start(AudioDeviceIOProc proc, void *clientData) {
  stop();
  mStop = std::stop_source();
  mThread = startBackgroundThread(
      [this, proc, clientData, token = mStop.get_token()] { run(proc, clientData, token); });
}

void RecordingPlayer::stop() {
  mStop.request_stop();
  if (mThread.joinable())
    mThread.join();
}

void RecordingPlayer::run(AudioDeviceIOProc proc, void *clientData, const std::stop_token &stop) {
  const std::int64_t rate = mFile.rate();
  const std::int64_t channels = mFile.channels();
  const std::int64_t framesPerCallback = std::max<std::int64_t>(rate / kCallbacksPerSecond, 1);
  std::vector<float> samples(static_cast<std::size_t>(framesPerCallback * channels));

  nanoseconds anchor = mClock.now();
  std::int64_t framesSinceAnchor = 0;
  std::int64_t sampleTime = 1;
  bool canPlay = mFile.rewind();
  while (canPlay && !stop.stop_requested()) {
    const std::int64_t frames = fill(mFile, samples.data(), framesPerCallback, stop);
    if (frames == 0) {
      canPlay = false;
      break;
    }
    // As from a real input: a sample cannot be handed out before it has sounded.
    framesSinceAnchor += frames;
    const nanoseconds due = anchor + durationOf(framesSinceAnchor, rate);
    if (!mClock.waitUntil(due, stop))
      break;
    const nanoseconds now = mClock.now();
    if (now - due > kLongestDelay) {
      anchor = now;
      framesSinceAnchor = 0;
    }

    AudioBufferList input;
    input.mNumberBuffers = 1;
    input.mBuffers[0].mNumberChannels = static_cast<UInt32>(channels);
    input.mBuffers[0].mDataByteSize =
        static_cast<UInt32>(static_cast<std::size_t>(frames * channels) * sizeof(float));
    input.mBuffers[0].mData = samples.data();
    AudioBufferList output;
    const AudioTimeStamp inputTime{static_cast<Float64>(sampleTime)};
    sampleTime += frames;
    const AudioTimeStamp nowTime{static_cast<Float64>(sampleTime)};
    const AudioTimeStamp outputTime;
    proc(mDevice, &nowTime, &input, &inputTime, &output, &outputTime, clientData);
  }
  if (!canPlay && !stop.stop_requested())
    mOnDead();
}

}  // namespace orvane
