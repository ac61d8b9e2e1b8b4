#include "tests/long/RandomFaultHardware.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "tests/core/CaptureFeed.h"

namespace orvane::test {
namespace {

constexpr std::array kProperties = {
    kAudioDevicePropertyDeviceIsAlive,      kAudioDevicePropertyStreamConfiguration,
    kAudioDevicePropertyStreamFormat,       kAudioDevicePropertyDataSource,
    kAudioDevicePropertyDeviceHasChanged,   kAudioDevicePropertyVolumeScalar,
    kAudioDevicePropertyVolumeRangeDecibels};

constexpr std::array<OSStatus, 6> kStatuses = {kAudioHardwareUnspecifiedError,
                                               kAudioHardwareUnknownPropertyError,
                                               kAudioHardwareBadPropertySizeError,
                                               kAudioHardwareBadDeviceError,
                                               -1,
                                               0x7FFFFFFF};

// Too small, too large, and odd.
constexpr std::array<UInt32, 12> kSizes = {0,  1,  2,   3,    5,          7,
                                           39, 41, 101, 4097, 0x7FFFFFFF, 0xFFFFFFFF};

constexpr AudioDeviceID kNobody = 9999;

}  // namespace

void RandomFaultHardware::vanish(std::size_t place) {
  const AudioDeviceID device = devices[place].id;
  mVanished.push_back(devices[place]);
  devices.erase(devices.begin() + static_cast<std::ptrdiff_t>(place));
  mChanges.push_back({device, 0, kAudioDevicePropertyDeviceIsAlive});
}

void RandomFaultHardware::returnOne() {
  const std::size_t place = mRandom.below(mVanished.size());
  devices.push_back(mVanished[place]);
  mVanished.erase(mVanished.begin() + static_cast<std::ptrdiff_t>(place));
  tellAll(devices.back().id);
}

void RandomFaultHardware::returnAll() {
  while (!mVanished.empty())
    returnOne();
}

void RandomFaultHardware::tellAll(AudioDeviceID device) {
  for (const AudioDevicePropertyID property : kProperties)
    mChanges.push_back({device, property == kAudioDevicePropertyVolumeScalar ? 1U : 0U, property});
}

void RandomFaultHardware::notifyAtRandom() {
  AudioDeviceID device = kNobody;
  if (!devices.empty() && mRandom.chance(60))
    device = mRandom.pick(devices).id;
  else if (!mVanished.empty())
    device = mRandom.pick(mVanished).id;
  const auto channel = static_cast<UInt32>(mRandom.below(4));
  const bool isInput = mRandom.chance(90);
  notify(device, channel, isInput, mRandom.pick(kProperties));
}

void RandomFaultHardware::sendNotifications() {
  for (const Change &change : std::exchange(mChanges, {}))
    notify(change.device, change.channel, 1, change.property);
}

bool RandomFaultHardware::isThere(AudioDeviceID device) const {
  return std::any_of(devices.begin(), devices.end(),
                     [device](const FakeDevice &known) { return known.id == device; });
}

FakeDevice &RandomFaultHardware::at(AudioDeviceID device) {
  for (std::vector<FakeDevice> *list : {&devices, &mVanished}) {
    for (FakeDevice &known : *list) {
      if (known.id == device)
        return known;
    }
  }
  std::abort();  // the tests ask for devices they made
}

bool RandomFaultHardware::isRunning(AudioDeviceID device) const {
  const auto found = mStreams.find(device);
  return found != mStreams.end() && found->second.isStarted;
}

std::vector<AudioDeviceID> RandomFaultHardware::running() const {
  std::vector<AudioDeviceID> started;
  for (const auto &[device, stream] : mStreams) {
    if (stream.isStarted)
      started.push_back(device);
  }
  return started;
}

void RandomFaultHardware::sound(AudioDeviceID device, const std::vector<float> &samples) {
  if (!isThere(device) || !isRunning(device))
    return;
  const Stream &stream = mStreams.at(device);
  BufferList list({{1, samples}});
  const AudioTimeStamp time{1.0};
  stream.proc(device, &time, list.list(), &time, nullptr, nullptr, stream.clientData);
}

void RandomFaultHardware::forgetClients() {
  listeners.clear();
  mStreams.clear();
  mChanges.clear();
  takeRefused();
}

bool RandomFaultHardware::meddle(UInt32 propertyID) {
  if (mFaultRate == 0 || !mRandom.chance(mFaultRate))
    return false;
  ++mFaults;
  if (!mIsMeanwhile && mRandom.chance(50)) {
    mIsMeanwhile = true;
    meanwhile();
    mIsMeanwhile = false;
  }
  lie(propertyID);
  return mRandom.chance(40);
}

// Other programs, other threads and hands on cables, between two calls or in the midst of one.
void RandomFaultHardware::meanwhile() {
  switch (mRandom.below(4)) {
    case 0:
      if (!devices.empty())
        vanish(mRandom.below(devices.size()));
      break;
    case 1:
      if (!mVanished.empty())
        returnOne();
      break;
    case 2:
      notifyAtRandom();
      break;
    default:
      sendNotifications();
      break;
  }
}

void RandomFaultHardware::lie(UInt32 propertyID) {
  switch (mRandom.below(4)) {
    case 0:
      reportedSizes[propertyID] = mRandom.pick(kSizes);
      break;
    case 1:
      claimedReadSize = mRandom.pick(kSizes);
      break;
    case 2:
      longestRead = mRandom.pick(kSizes);
      break;
    default:
      translatesToNothing = true;
      break;
  }
}

template <typename Call>
OSStatus RandomFaultHardware::answer(UInt32 propertyID, Call call) {
  if (meddle(propertyID)) {
    failure = mRandom.pick(kStatuses);
    firstFailing = lastFailing = numberOfCalls + 1;
  }
  const OSStatus status = call();
  firstFailing = lastFailing = kNever;
  reportedSizes.clear();
  claimedReadSize.reset();
  longestRead.reset();
  translatesToNothing = false;
  return status;
}

template <typename Call, typename Effect>
OSStatus RandomFaultHardware::answerStream(StreamCall kind, AudioDeviceID device, Call call,
                                           Effect effect) {
  if (const OSStatus status = answer(0, call); status != noErr) {
    mRefused.insert({kind, device});
    return status;
  }
  return effect() ? noErr : kAudioHardwareIllegalOperationError;
}

OSStatus RandomFaultHardware::AudioHardwareGetPropertyInfo(AudioHardwarePropertyID inPropertyID,
                                                           UInt32 *outSize, Boolean *outWritable) {
  return answer(inPropertyID, [&] {
    return FakeHardware::AudioHardwareGetPropertyInfo(inPropertyID, outSize, outWritable);
  });
}

OSStatus RandomFaultHardware::AudioHardwareGetProperty(AudioHardwarePropertyID inPropertyID,
                                                       UInt32 *ioPropertyDataSize,
                                                       void *outPropertyData) {
  return answer(inPropertyID, [&] {
    return FakeHardware::AudioHardwareGetProperty(inPropertyID, ioPropertyDataSize,
                                                  outPropertyData);
  });
}

OSStatus RandomFaultHardware::AudioDeviceGetPropertyInfo(AudioDeviceID inDevice, UInt32 inChannel,
                                                         Boolean isInput,
                                                         AudioDevicePropertyID inPropertyID,
                                                         UInt32 *outSize, Boolean *outWritable) {
  return answer(inPropertyID, [&] {
    return FakeHardware::AudioDeviceGetPropertyInfo(inDevice, inChannel, isInput, inPropertyID,
                                                    outSize, outWritable);
  });
}

OSStatus RandomFaultHardware::AudioDeviceGetProperty(AudioDeviceID inDevice, UInt32 inChannel,
                                                     Boolean isInput,
                                                     AudioDevicePropertyID inPropertyID,
                                                     UInt32 *ioPropertyDataSize,
                                                     void *outPropertyData) {
  return answer(inPropertyID, [&] {
    return FakeHardware::AudioDeviceGetProperty(inDevice, inChannel, isInput, inPropertyID,
                                                ioPropertyDataSize, outPropertyData);
  });
}

OSStatus RandomFaultHardware::AudioDeviceSetProperty(
    AudioDeviceID inDevice, const AudioTimeStamp *inWhen, UInt32 inChannel, Boolean isInput,
    AudioDevicePropertyID inPropertyID, UInt32 inPropertyDataSize, const void *inPropertyData) {
  const OSStatus status = answer(inPropertyID, [&] {
    return FakeHardware::AudioDeviceSetProperty(inDevice, inWhen, inChannel, isInput, inPropertyID,
                                                inPropertyDataSize, inPropertyData);
  });
  if (status != noErr || !isThere(inDevice))
    return status;
  if (inPropertyID == kAudioDevicePropertyVolumeScalar)
    std::memcpy(&at(inDevice).volume, inPropertyData, sizeof(Float32));
  mChanges.push_back({inDevice, inChannel, inPropertyID});
  return noErr;
}

OSStatus RandomFaultHardware::AudioDeviceAddIOProc(AudioDeviceID inDevice, AudioDeviceIOProc inProc,
                                                   void *inClientData) {
  return answerStream(
      StreamCall::kAdd, inDevice,
      [&] { return FakeHardware::AudioDeviceAddIOProc(inDevice, inProc, inClientData); },
      [&] {
        return mStreams.insert({inDevice, {inProc, inClientData}}).second;
      });
}

OSStatus RandomFaultHardware::AudioDeviceStart(AudioDeviceID inDevice, AudioDeviceIOProc inProc) {
  return answerStream(
      StreamCall::kStart, inDevice,
      [&] { return FakeHardware::AudioDeviceStart(inDevice, inProc); },
      [&] {
        const auto found = mStreams.find(inDevice);
        return found != mStreams.end() && (found->second.isStarted = true);
      });
}

OSStatus RandomFaultHardware::AudioDeviceStop(AudioDeviceID inDevice, AudioDeviceIOProc inProc) {
  return answerStream(
      StreamCall::kStop, inDevice, [&] { return FakeHardware::AudioDeviceStop(inDevice, inProc); },
      [&] {
        const auto found = mStreams.find(inDevice);
        return found != mStreams.end() && !(found->second.isStarted = false);
      });
}

OSStatus RandomFaultHardware::AudioDeviceRemoveIOProc(AudioDeviceID inDevice,
                                                      AudioDeviceIOProc inProc) {
  return answerStream(
      StreamCall::kRemove, inDevice,
      [&] { return FakeHardware::AudioDeviceRemoveIOProc(inDevice, inProc); },
      [&] { return mStreams.erase(inDevice) != 0; });
}

OSStatus RandomFaultHardware::AudioDeviceAddPropertyListener(AudioDeviceID inDevice,
                                                             UInt32 inChannel, Boolean isInput,
                                                             AudioDevicePropertyID inPropertyID,
                                                             AudioDevicePropertyListenerProc inProc,
                                                             void *inClientData) {
  const auto isSame = [&](const Listener &listener) {
    return listener.device == inDevice && listener.channel == inChannel &&
           listener.isInput == isInput && listener.propertyID == inPropertyID &&
           listener.proc == inProc && listener.clientData == inClientData;
  };
  if (std::any_of(listeners.begin(), listeners.end(), isSame))
    return noErr;
  return answerStream(
      StreamCall::kListen, inDevice,
      [&] {
        return FakeHardware::AudioDeviceAddPropertyListener(inDevice, inChannel, isInput,
                                                            inPropertyID, inProc, inClientData);
      },
      [] { return true; });
}

OSStatus RandomFaultHardware::AudioDeviceRemovePropertyListener(
    AudioDeviceID inDevice, UInt32 inChannel, Boolean isInput, AudioDevicePropertyID inPropertyID,
    AudioDevicePropertyListenerProc inProc) {
  return answer(0, [&] {
    return FakeHardware::AudioDeviceRemovePropertyListener(inDevice, inChannel, isInput,
                                                           inPropertyID, inProc);
  });
}

}  // namespace orvane::test
