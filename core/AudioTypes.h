// The records in which the audio layer hands its samples to an input procedure. Plain data, passed
// by pointer, never owned by the receiver.
#pragma once

#include <cstdint>

namespace orvane {

using Boolean = std::uint8_t;
using UInt32 = std::uint32_t;
using Float32 = float;
using Float64 = double;

using OSStatus = std::int32_t;
inline constexpr OSStatus noErr = 0;

using AudioObjectID = UInt32;
using AudioDeviceID = AudioObjectID;

// A point on the sample clock of a device.
struct AudioTimeStamp {
  Float64 mSampleTime = 0.0;  // frames since the stream began; 0 or less means no valid time
};

// Samples of one buffer: native float32, interleaved by mNumberChannels.
struct AudioBuffer {
  UInt32 mNumberChannels = 0;
  UInt32 mDataByteSize = 0;  // bytes at mData
  void *mData = nullptr;
};

// mNumberBuffers buffers follow one another from mBuffers on; the array is as long as the count
// says, so walk it by pointer.
struct AudioBufferList {
  UInt32 mNumberBuffers = 0;
  AudioBuffer mBuffers[1];
};

// The input procedure of a device, called on the input thread.
using AudioDeviceIOProc = OSStatus (*)(AudioDeviceID inDevice, const AudioTimeStamp *inNow,
                                       const AudioBufferList *inInputData,
                                       const AudioTimeStamp *inInputTime,
                                       AudioBufferList *outOutputData,
                                       const AudioTimeStamp *inOutputTime, void *inClientData);

// The six arguments of one input callback.
struct IOProcCall {
  AudioObjectID inDevice;
  const AudioTimeStamp *inNow;
  const AudioBufferList *inInputData;
  const AudioTimeStamp *inInputTime;
  AudioBufferList *outOutputData;
  const AudioTimeStamp *inOutputTime;
};

}  // namespace orvane
