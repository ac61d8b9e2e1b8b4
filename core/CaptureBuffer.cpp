#include "core/CaptureBuffer.h"

#include <algorithm>
#include <cstdlib>

namespace orvane {
namespace {

constexpr double kLowestNote = 27.5;  // hertz, A0
constexpr double kPeriodsPerBlock = 1.5;

// A buffer with no channels holds no frame.
UInt32 quotient(UInt32 dividend, UInt32 channels) {
  return channels == 0 ? 0 : dividend / channels;
}

const float *samplesOf(const AudioBuffer &buffer) {
  return static_cast<const float *>(buffer.mData);
}

// How many leading buffers have the bytes per channel of the first.
UInt32 countMatchingBuffers(const AudioBufferList &list) {
  const AudioBuffer *buffers = list.mBuffers;
  const UInt32 expected = quotient(buffers[0].mDataByteSize, buffers[0].mNumberChannels);
  UInt32 count = 1;
  while (count < list.mNumberBuffers &&
         quotient(buffers[count].mDataByteSize, buffers[count].mNumberChannels) == expected)
    ++count;
  return count;
}

// A mono source copied into both channels would read 6 dB hot when summed.
bool isDuplicatedStereo(const float *samples, UInt32 frames) {
  for (std::size_t f = 0; f < frames; ++f) {
    if (!(samples[2 * f] == samples[2 * f + 1]))
      return false;
  }
  return true;
}

void addChannels(float *sums, const float *samples, UInt32 frames, UInt32 channels) {
  for (UInt32 f = 0; f < frames; ++f, samples += channels) {
    float sum = sums[f];
    for (UInt32 c = 0; c < channels; ++c)
      sum += samples[c];
    sums[f] = sum;
  }
}

// Not-a-number fails both comparisons and is kept.
float clamped(float x) {
  return x > 1.0F ? 1.0F : x < -1.0F ? -1.0F : x;
}

// What nearly every callback brings, one buffer of one or two channels, in one pass.
template <UInt32 Channels>
void takeSums(float *__restrict mono, const float *__restrict samples, UInt32 frames) {
  for (std::size_t f = 0; f < frames; ++f) {
    float sum = 0.0F;
    for (UInt32 c = 0; c < Channels; ++c)
      sum += samples[f * Channels + c];
    mono[f] = clamped(sum);
  }
}

// Half the sum of two equal channels is the one, to the bit once it is clamped. As a product it
// would take several times as long where the samples are denormal. Added to zero, as every sum is,
// for the sake of minus zero.
void takeOneOfTwo(float *__restrict mono, const float *__restrict samples, UInt32 frames) {
  for (std::size_t f = 0; f < frames; ++f)
    mono[f] = clamped(0.0F + samples[2 * f]);
}

// Frames first to first + frames − 1 of the leading buffers, folded into mono.
void fold(float *mono, const AudioBuffer *buffers, UInt32 count, std::size_t first, UInt32 frames,
          bool halve) {
  const UInt32 channels = buffers[0].mNumberChannels;
  if (count == 1 && channels <= 2 && buffers[0].mData != nullptr) {
    const float *samples = samplesOf(buffers[0]) + first * channels;
    if (halve)
      return takeOneOfTwo(mono, samples, frames);
    return channels == 1 ? takeSums<1>(mono, samples, frames) : takeSums<2>(mono, samples, frames);
  }
  std::fill_n(mono, frames, 0.0F);
  for (UInt32 k = 0; k < count; ++k) {
    const AudioBuffer &buffer = buffers[k];
    if (buffer.mData == nullptr)
      continue;
    addChannels(mono, samplesOf(buffer) + first * buffer.mNumberChannels, frames,
                buffer.mNumberChannels);
  }
  std::transform(mono, mono + frames, mono, clamped);
}

}  // namespace

CaptureBuffer::~CaptureBuffer() {
  std::free(mBuffer);
}

void CaptureBuffer::setSampleRate(double sampleRate) noexcept {
  mSampleRate.store(static_cast<float>(sampleRate), std::memory_order_relaxed);
  mIsBufferInvalid.store(true, std::memory_order_release);
}

bool CaptureBuffer::updateSampleRate(double sampleRate) noexcept {
  if (sampleRate == static_cast<double>(mSampleRate.load(std::memory_order_relaxed)))
    return false;
  setSampleRate(sampleRate);
  return true;
}

void CaptureBuffer::deriveBlock() noexcept {
  // Cleared before the rate is read: a rate that is written from here on sets it again.
  mIsBufferInvalid.exchange(false, std::memory_order_acquire);
  mBufferOffset = 0;
  const double frames = static_cast<double>(mSampleRate.load(std::memory_order_relaxed)) /
                        kLowestNote * kPeriodsPerBlock;
  // The byte size must fit its 32-bit field too; not-a-number fails the first comparison.
  UInt32 bufferFrames = 0;
  if (frames >= 1.0 && frames < 1073741824.0)
    bufferFrames = static_cast<UInt32>(frames);
  if (bufferFrames != 0) {
    void *grown = std::realloc(mBuffer, bufferFrames * sizeof(float));
    if (grown == nullptr) {
      // Lost is what this callback brings; the next one tries again.
      bufferFrames = 0;
      mIsBufferInvalid.store(true, std::memory_order_relaxed);
      mQueue.post(CaptureBlock());
    } else {
      mBuffer = static_cast<float *>(grown);
    }
  }
  mBufferSize = bufferFrames * static_cast<UInt32>(sizeof(float));
  mBufferFrames.store(bufferFrames, std::memory_order_relaxed);
}

OSStatus CaptureBuffer::inputIOProc(const IOProcCall *call) noexcept {
  const AudioBufferList &list = *call->inInputData;
  if (list.mNumberBuffers == 0)
    return noErr;
  if (mIsBufferInvalid.load(std::memory_order_relaxed) || mBuffer == nullptr)
    deriveBlock();
  if (!(call->inInputTime->mSampleTime > 0.0))
    return noErr;

  const AudioBuffer *buffers = list.mBuffers;
  const UInt32 channels = buffers[0].mNumberChannels;
  const UInt32 samples = buffers[0].mDataByteSize / static_cast<UInt32>(sizeof(float));
  const UInt32 frames = quotient(samples, channels);
  const UInt32 count = countMatchingBuffers(list);
  const bool halve = channels == 2 && count == 1 && buffers[0].mData != nullptr &&
                     isDuplicatedStereo(samplesOf(buffers[0]), frames);
  if (channels > samples)
    return noErr;

  const UInt32 bufferFrames = mBufferFrames.load(std::memory_order_relaxed);
  if (bufferFrames == 0)
    return noErr;
  for (UInt32 f = 0; f < frames;) {
    const UInt32 run = std::min(frames - f, bufferFrames - mBufferOffset);
    fold(mBuffer + mBufferOffset, buffers, count, f, run, halve);
    f += run;
    mBufferOffset += run;
    if (mBufferOffset >= bufferFrames) {
      mQueue.post(CaptureBlock::withBytes(mBuffer, mBufferSize));
      mBufferOffset = 0;
    }
  }
  return noErr;
}

}  // namespace orvane
