// Folds the input callbacks of a device into mono capture blocks of one and a half periods of
// 27.5 Hz (A0): 54.5 ms at any sample rate. Blocks do not overlap; each sample goes into exactly
// one. Allocates mBuffer when the sample rate changes and one copy per block, nothing else.
#pragma once

#include <atomic>

#include "core/AudioTypes.h"
#include "core/BlockQueue.h"

namespace orvane {

class CaptureBuffer {
 public:
  // The queue must outlive the buffer.
  explicit CaptureBuffer(BlockQueue &queue) : mQueue(queue) {}
  ~CaptureBuffer();
  CaptureBuffer(const CaptureBuffer &) = delete;
  CaptureBuffer &operator=(const CaptureBuffer &) = delete;

  // Input thread, real-time safe but for the copy per block and the buffer after a rate change.
  // Always returns noErr. A sample rate that gives an empty block (not a number, below 18⅓ Hz) or
  // one too long to be counted stores nothing and posts nothing.
  OSStatus inputIOProc(const IOProcCall *call) noexcept;

  // Main or notification thread. Stores the rate in hertz and has the input thread start a new
  // block at its next callback.
  void setSampleRate(double sampleRate) noexcept;
  // The same only when the rate differs from the one in use; a rate that is not a number always
  // does. Returns whether it did.
  bool updateSampleRate(double sampleRate) noexcept;

  // The handshake: the rate is written first, then the flag is set (release); the input thread
  // clears the flag (acquire), then reads the rate.
  std::atomic<float> mSampleRate{0.0F};  // hertz
  std::atomic<bool> mIsBufferInvalid{false};

  // Written by the input thread only. mBufferFrames is read by the main thread too.
  std::atomic<UInt32> mBufferFrames{0};  // samples of a block
  UInt32 mBufferOffset = 0;              // samples of the current block collected so far
  UInt32 mBufferSize = 0;                // bytes of mBuffer: mBufferFrames × 4
  float *mBuffer = nullptr;

 private:
  void deriveBlock() noexcept;

  BlockQueue &mQueue;
};

}  // namespace orvane
