// The audio hardware layer: devices, their properties, their input streams and their change
// notifications, as four-character property codes and plain byte buffers. Backends implement it for
// a sound server and for sound files; tests implement it for faults that no real device can be
// asked for.
//
// Contract of every implementation
//   Threads. Input procedures run on the input thread, one per started device and procedure, with
//     real-time priority where the system grants it (a backend that reads a disk asks for none).
//     Property listeners run on the notification thread. All operations may be called on the main
//     thread; property reads and writes also on the notification thread. None may be called on the
//     input thread; none is real-time safe.
//   Removal. Once AudioDeviceStop or AudioDeviceRemoveIOProc returns, the input procedure is not
//     running and will not run again; once AudioDeviceRemovePropertyListener returns, the same
//     holds for the listener. A listener may remove itself.
//   Reads. Property reads answer from a mirror of the server's state and never wait for the
//     server. Only the first read of kAudioHardwarePropertyDevices waits for it, at most 3 s.
//   Writes. A property write is posted and returns at once; its effect arrives as a notification.
//   Sizes. A read takes the size of the caller's buffer in *ioDataSize and returns the bytes
//     written in it. A buffer that is too small gets kAudioHardwareBadPropertySizeError and is left
//     untouched, except for lists (device IDs, source IDs, stream configuration), which are cut to
//     whole entries that fit. On any other error neither buffer nor size changes.
//   Channels. Channel 0 is the device as a whole, channels 1 to n its input channels.
//   Statuses. noErr, or one of the errors below; nothing throws.
#pragma once

#include <string>
#include <utility>

#include "core/AudioTypes.h"

namespace orvane {

constexpr UInt32 fourCharCode(const char (&code)[5]) {
  UInt32 value = 0;
  for (int i = 0; i < 4; ++i)
    value = value << 8 | static_cast<std::uint8_t>(code[i]);
  return value;
}

using AudioHardwarePropertyID = UInt32;
using AudioDevicePropertyID = UInt32;

// Hardware properties.
inline constexpr AudioHardwarePropertyID kAudioHardwarePropertyDevices = fourCharCode("dev#");

// Device properties. The value's type and size stand behind each.
inline constexpr AudioDevicePropertyID kAudioDevicePropertyStreamFormat =
    fourCharCode("sfmt");  // AudioStreamBasicDescription, 40 bytes
inline constexpr AudioDevicePropertyID kAudioDevicePropertyStreamConfiguration =
    fourCharCode("slay");  // AudioBufferList without samples, variable
inline constexpr AudioDevicePropertyID kAudioDevicePropertyDeviceName =
    fourCharCode("name");  // NUL-terminated UTF-8, variable
inline constexpr AudioDevicePropertyID kAudioDevicePropertyDeviceManufacturer =
    fourCharCode("makr");  // NUL-terminated UTF-8, variable
inline constexpr AudioDevicePropertyID kAudioDevicePropertyDataSource =
    fourCharCode("ssrc");  // UInt32 data source ID; writable where the device has sources
inline constexpr AudioDevicePropertyID kAudioDevicePropertyDataSources =
    fourCharCode("ssc#");  // UInt32 data source IDs, variable
inline constexpr AudioDevicePropertyID kAudioDevicePropertyDataSourceNameForIDCFString =
    fourCharCode("lscn");  // AudioValueTranslation, 32 bytes: UInt32 ID in, AudioStringRef out
inline constexpr AudioDevicePropertyID kAudioDevicePropertyDeviceIsAlive =
    fourCharCode("livn");  // UInt32, 1 while the device is there
inline constexpr AudioDevicePropertyID kAudioDevicePropertyDeviceHasChanged =
    fourCharCode("diff");  // notification only
inline constexpr AudioDevicePropertyID kAudioDevicePropertyVolumeScalar =
    fourCharCode("volm");  // Float32 0..1, per channel
inline constexpr AudioDevicePropertyID kAudioDevicePropertyVolumeRangeDecibels =
    fourCharCode("vdb#");  // notification only

inline constexpr UInt32 kMasterChannel = 0;  // the device as a whole
inline constexpr UInt32 kAudioPropertyWildcardChannel = 0xFFFFFFFF;

inline constexpr OSStatus kAudioHardwareUnspecifiedError = fourCharCode("what");
inline constexpr OSStatus kAudioHardwareUnknownPropertyError = fourCharCode("who?");
inline constexpr OSStatus kAudioHardwareBadPropertySizeError = fourCharCode("!siz");
inline constexpr OSStatus kAudioHardwareIllegalOperationError = fourCharCode("nope");
inline constexpr OSStatus kAudioHardwareBadDeviceError = fourCharCode("!dev");

inline constexpr UInt32 kAudioFormatLinearPCM = fourCharCode("lpcm");
inline constexpr UInt32 kAudioFormatFlagIsFloat = 1U << 0;
inline constexpr UInt32 kAudioFormatFlagIsPacked = 1U << 3;

struct AudioStreamBasicDescription {
  Float64 mSampleRate = 0.0;  // hertz
  UInt32 mFormatID = 0;
  UInt32 mFormatFlags = 0;
  UInt32 mBytesPerPacket = 0;
  UInt32 mFramesPerPacket = 0;
  UInt32 mBytesPerFrame = 0;
  UInt32 mChannelsPerFrame = 0;
  UInt32 mBitsPerChannel = 0;
  UInt32 mReserved = 0;
};
static_assert(sizeof(AudioStreamBasicDescription) == 40);

struct AudioValueTranslation {
  void *mInputData = nullptr;
  UInt32 mInputDataSize = 0;
  void *mOutputData = nullptr;
  UInt32 mOutputDataSize = 0;
};
static_assert(sizeof(AudioValueTranslation) == 32);

// A string handed out by the hardware. The receiver owns it and ends it with AudioStringRelease.
using AudioStringRef = const std::string *;
static_assert(sizeof(AudioStringRef) == 8);
inline AudioStringRef AudioStringCreate(std::string text) {
  return new std::string(std::move(text));
}
inline void AudioStringRelease(AudioStringRef string) {
  delete string;
}

// Called on the notification thread. isInput is non-zero for the input side.
using AudioDevicePropertyListenerProc = OSStatus (*)(AudioDeviceID inDevice, UInt32 inChannel,
                                                     Boolean isInput,
                                                     AudioDevicePropertyID inPropertyID,
                                                     void *inClientData);

class AudioHardware {
 public:
  virtual ~AudioHardware() = default;

  virtual OSStatus AudioHardwareGetPropertyInfo(AudioHardwarePropertyID inPropertyID,
                                                UInt32 *outSize, Boolean *outWritable) = 0;
  virtual OSStatus AudioHardwareGetProperty(AudioHardwarePropertyID inPropertyID,
                                            UInt32 *ioPropertyDataSize, void *outPropertyData) = 0;

  // outSize and outWritable may be null when not wanted.
  virtual OSStatus AudioDeviceGetPropertyInfo(AudioDeviceID inDevice, UInt32 inChannel,
                                              Boolean isInput, AudioDevicePropertyID inPropertyID,
                                              UInt32 *outSize, Boolean *outWritable) = 0;
  virtual OSStatus AudioDeviceGetProperty(AudioDeviceID inDevice, UInt32 inChannel, Boolean isInput,
                                          AudioDevicePropertyID inPropertyID,
                                          UInt32 *ioPropertyDataSize, void *outPropertyData) = 0;
  // inWhen is ignored: every write takes effect as soon as it can.
  virtual OSStatus AudioDeviceSetProperty(AudioDeviceID inDevice, const AudioTimeStamp *inWhen,
                                          UInt32 inChannel, Boolean isInput,
                                          AudioDevicePropertyID inPropertyID,
                                          UInt32 inPropertyDataSize,
                                          const void *inPropertyData) = 0;

  virtual OSStatus AudioDeviceAddIOProc(AudioDeviceID inDevice, AudioDeviceIOProc inProc,
                                        void *inClientData) = 0;
  virtual OSStatus AudioDeviceStart(AudioDeviceID inDevice, AudioDeviceIOProc inProc) = 0;
  virtual OSStatus AudioDeviceStop(AudioDeviceID inDevice, AudioDeviceIOProc inProc) = 0;
  virtual OSStatus AudioDeviceRemoveIOProc(AudioDeviceID inDevice, AudioDeviceIOProc inProc) = 0;

  // inChannel may be kAudioPropertyWildcardChannel: notifications of every channel then match.
  virtual OSStatus AudioDeviceAddPropertyListener(AudioDeviceID inDevice, UInt32 inChannel,
                                                  Boolean isInput,
                                                  AudioDevicePropertyID inPropertyID,
                                                  AudioDevicePropertyListenerProc inProc,
                                                  void *inClientData) = 0;
  virtual OSStatus AudioDeviceRemovePropertyListener(AudioDeviceID inDevice, UInt32 inChannel,
                                                     Boolean isInput,
                                                     AudioDevicePropertyID inPropertyID,
                                                     AudioDevicePropertyListenerProc inProc) = 0;
};

}  // namespace orvane
