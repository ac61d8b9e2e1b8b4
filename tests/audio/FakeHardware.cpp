#include "tests/audio/FakeHardware.h"

#include <algorithm>
#include <cstring>

namespace orvane {

namespace {

std::string codeText(UInt32 code) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8)
    text += static_cast<char>(code >> shift & 0xFF);
  return text;
}

std::string place(AudioDeviceID device, UInt32 channel, Boolean isInput, UInt32 propertyID) {
  const std::string channelText =
      channel == kAudioPropertyWildcardChannel ? "*" : std::to_string(channel);
  return " " + std::to_string(device) + " " + channelText + (isInput != 0 ? " in " : " out ") +
         codeText(propertyID);
}

template <typename T>
void append(std::vector<std::byte> &bytes, const T &value) {
  const auto *first = reinterpret_cast<const std::byte *>(&value);
  bytes.insert(bytes.end(), first, first + sizeof(value));
}

std::vector<std::byte> bytesOf(const std::string &text) {
  std::vector<std::byte> bytes;
  for (const char c : text)
    append(bytes, c);
  append(bytes, '\0');
  return bytes;
}

}  // namespace

const FakeDevice *FakeHardware::find(AudioDeviceID id) const {
  for (const FakeDevice &device : devices)
    if (device.id == id)
      return &device;
  return nullptr;
}

bool FakeHardware::record(const std::string &call) {
  calls.push_back(call);
  ++numberOfCalls;
  const bool isFailing = numberOfCalls >= firstFailing && numberOfCalls <= lastFailing;
  faultsMet += isFailing;
  return isFailing;
}

std::string FakeHardware::nameOf(std::uintptr_t pointer) const {
  const auto found = names.find(pointer);
  return found == names.end() ? "?" : found->second;
}

OSStatus FakeHardware::notify(AudioDeviceID device, UInt32 channel, Boolean isInput,
                              AudioDevicePropertyID propertyID) {
  OSStatus status = noErr;
  for (const Listener &listener : std::vector<Listener>(listeners)) {
    const bool channelMatches =
        listener.channel == channel || listener.channel == kAudioPropertyWildcardChannel;
    if (listener.device == device && channelMatches && listener.isInput == isInput &&
        listener.propertyID == propertyID)
      status = listener.proc(device, channel, isInput, propertyID, listener.clientData);
  }
  return status;
}

std::optional<std::vector<std::byte>> FakeHardware::value(const FakeDevice &device, UInt32 channel,
                                                          Boolean isInput,
                                                          UInt32 propertyID) const {
  if (const auto raw = rawValues.find(propertyID); raw != rawValues.end())
    return raw->second;
  std::vector<std::byte> bytes;
  switch (propertyID) {
    case kAudioDevicePropertyStreamFormat: {
      if (isInput == 0 || !device.hasInput)
        return std::nullopt;
      AudioStreamBasicDescription format;
      format.mSampleRate = device.sampleRate;
      format.mFormatID = kAudioFormatLinearPCM;
      append(bytes, format);
      return bytes;
    }
    case kAudioDevicePropertyStreamConfiguration:
      append(bytes, static_cast<UInt32>(device.bufferChannels.size()));
      append(bytes, UInt32{0});
      for (const UInt32 channels : device.bufferChannels)
        append(bytes, AudioBuffer{channels, 0, nullptr});
      return bytes;
    case kAudioDevicePropertyDeviceName:
      return bytesOf(device.name);
    case kAudioDevicePropertyDeviceManufacturer:
      return bytesOf(device.manufacturer);
    case kAudioDevicePropertyDataSource:
      if (!device.isDataSourceSettable)
        return std::nullopt;
      append(bytes, device.dataSources.empty() ? UInt32{0} : device.dataSources.front().first);
      return bytes;
    case kAudioDevicePropertyDataSources:
      for (const auto &source : device.dataSources)
        append(bytes, source.first);
      return bytes;
    case kAudioDevicePropertyVolumeScalar:
      if (channel == 0 || channel > device.isVolumeSettable.size())
        return std::nullopt;
      append(bytes, device.volume);
      return bytes;
    default:
      return std::nullopt;
  }
}

OSStatus FakeHardware::read(const std::vector<std::byte> &bytes, bool isList, UInt32 *ioSize,
                            void *outData) const {
  std::size_t length = bytes.size();
  if (length > *ioSize && !isList)
    return kAudioHardwareBadPropertySizeError;
  length = std::min<std::size_t>(length, *ioSize);
  if (longestRead)
    length = std::min<std::size_t>(length, *longestRead);
  if (length > 0)
    std::memcpy(outData, bytes.data(), length);
  faultsMet += claimedReadSize || longestRead;
  *ioSize = claimedReadSize.value_or(static_cast<UInt32>(length));
  return noErr;
}

OSStatus FakeHardware::translate(const FakeDevice &device, UInt32 *ioSize, void *outData) const {
  if (*ioSize != sizeof(AudioValueTranslation))
    return kAudioHardwareBadPropertySizeError;
  const auto *translation = static_cast<const AudioValueTranslation *>(outData);
  if (translation->mInputDataSize != sizeof(UInt32) ||
      translation->mOutputDataSize != sizeof(AudioStringRef))
    return kAudioHardwareBadPropertySizeError;
  UInt32 dataSource = 0;
  std::memcpy(&dataSource, translation->mInputData, sizeof(dataSource));
  AudioStringRef cleared = nullptr;
  std::memcpy(&cleared, translation->mOutputData, sizeof(cleared));
  if (cleared != nullptr)
    return kAudioHardwareIllegalOperationError;
  if (translatesToNothing)
    return noErr;
  for (const auto &[id, name] : device.dataSources) {
    if (id != dataSource)
      continue;
    const AudioStringRef string = AudioStringCreate(name);
    std::memcpy(translation->mOutputData, &string, sizeof(string));
    return noErr;
  }
  return kAudioHardwareUnspecifiedError;
}

OSStatus FakeHardware::AudioHardwareGetPropertyInfo(AudioHardwarePropertyID inPropertyID,
                                                    UInt32 *outSize, Boolean *outWritable) {
  if (record("HardwareInfo " + codeText(inPropertyID) + (outSize != nullptr ? " size?" : "") +
             (outWritable != nullptr ? " writable?" : "")))
    return failure;
  const auto reported = reportedSizes.find(inPropertyID);
  faultsMet += reported != reportedSizes.end();
  if (outSize != nullptr)
    *outSize = reported != reportedSizes.end()
                   ? reported->second
                   : static_cast<UInt32>(devices.size() * sizeof(AudioDeviceID));
  if (outWritable != nullptr)
    *outWritable = 0;
  return noErr;
}

OSStatus FakeHardware::AudioHardwareGetProperty(AudioHardwarePropertyID inPropertyID,
                                                UInt32 *ioPropertyDataSize, void *outPropertyData) {
  if (record("HardwareGet " + codeText(inPropertyID) + " " + std::to_string(*ioPropertyDataSize)))
    return failure;
  std::vector<std::byte> bytes;
  for (const FakeDevice &device : devices)
    append(bytes, device.id);
  return read(bytes, true, ioPropertyDataSize, outPropertyData);
}

OSStatus FakeHardware::AudioDeviceGetPropertyInfo(AudioDeviceID inDevice, UInt32 inChannel,
                                                  Boolean isInput,
                                                  AudioDevicePropertyID inPropertyID,
                                                  UInt32 *outSize, Boolean *outWritable) {
  if (record("Info" + place(inDevice, inChannel, isInput, inPropertyID) +
             (outSize != nullptr ? " size?" : "") + (outWritable != nullptr ? " writable?" : "")))
    return failure;
  const FakeDevice *device = find(inDevice);
  if (device == nullptr)
    return kAudioHardwareBadDeviceError;
  const auto bytes = value(*device, inChannel, isInput, inPropertyID);
  if (!bytes)
    return kAudioHardwareUnknownPropertyError;
  const auto reported = reportedSizes.find(inPropertyID);
  faultsMet += reported != reportedSizes.end();
  if (outSize != nullptr)
    *outSize =
        reported != reportedSizes.end() ? reported->second : static_cast<UInt32>(bytes->size());
  if (outWritable != nullptr)
    *outWritable = inPropertyID == kAudioDevicePropertyDataSource ||
                   (inPropertyID == kAudioDevicePropertyVolumeScalar &&
                    device->isVolumeSettable[inChannel - 1]);
  return noErr;
}

OSStatus FakeHardware::AudioDeviceGetProperty(AudioDeviceID inDevice, UInt32 inChannel,
                                              Boolean isInput, AudioDevicePropertyID inPropertyID,
                                              UInt32 *ioPropertyDataSize, void *outPropertyData) {
  if (record("Get" + place(inDevice, inChannel, isInput, inPropertyID) + " " +
             std::to_string(*ioPropertyDataSize)))
    return failure;
  const FakeDevice *device = find(inDevice);
  if (device == nullptr)
    return kAudioHardwareBadDeviceError;
  if (inPropertyID == kAudioDevicePropertyDataSourceNameForIDCFString)
    return translate(*device, ioPropertyDataSize, outPropertyData);
  const auto bytes = value(*device, inChannel, isInput, inPropertyID);
  if (!bytes)
    return kAudioHardwareUnknownPropertyError;
  const bool isList = inPropertyID == kAudioDevicePropertyDataSources ||
                      inPropertyID == kAudioDevicePropertyStreamConfiguration;
  return read(*bytes, isList, ioPropertyDataSize, outPropertyData);
}

OSStatus FakeHardware::AudioDeviceSetProperty(AudioDeviceID inDevice, const AudioTimeStamp *inWhen,
                                              UInt32 inChannel, Boolean isInput,
                                              AudioDevicePropertyID inPropertyID,
                                              UInt32 inPropertyDataSize,
                                              const void *inPropertyData) {
  UInt32 word = 0;
  std::memcpy(&word, inPropertyData, std::min<std::size_t>(inPropertyDataSize, sizeof(word)));
  if (record("Set" + place(inDevice, inChannel, isInput, inPropertyID) + " " +
             std::to_string(inPropertyDataSize) + " " + std::to_string(word) +
             (inWhen != nullptr ? " when" : "")))
    return failure;
  return noErr;
}

OSStatus FakeHardware::AudioDeviceAddIOProc(AudioDeviceID inDevice, AudioDeviceIOProc inProc,
                                            void *inClientData) {
  return record("AddIOProc " + std::to_string(inDevice) + " " +
                nameOf(reinterpret_cast<std::uintptr_t>(inProc)) + " " +
                nameOf(reinterpret_cast<std::uintptr_t>(inClientData)))
             ? failure
             : noErr;
}

OSStatus FakeHardware::AudioDeviceStart(AudioDeviceID inDevice, AudioDeviceIOProc inProc) {
  return record("Start " + std::to_string(inDevice) + " " +
                nameOf(reinterpret_cast<std::uintptr_t>(inProc)))
             ? failure
             : noErr;
}

OSStatus FakeHardware::AudioDeviceStop(AudioDeviceID inDevice, AudioDeviceIOProc inProc) {
  return record("Stop " + std::to_string(inDevice) + " " +
                nameOf(reinterpret_cast<std::uintptr_t>(inProc)))
             ? failure
             : noErr;
}

OSStatus FakeHardware::AudioDeviceRemoveIOProc(AudioDeviceID inDevice, AudioDeviceIOProc inProc) {
  return record("RemoveIOProc " + std::to_string(inDevice) + " " +
                nameOf(reinterpret_cast<std::uintptr_t>(inProc)))
             ? failure
             : noErr;
}

OSStatus FakeHardware::AudioDeviceAddPropertyListener(AudioDeviceID inDevice, UInt32 inChannel,
                                                      Boolean isInput,
                                                      AudioDevicePropertyID inPropertyID,
                                                      AudioDevicePropertyListenerProc inProc,
                                                      void *inClientData) {
  if (record("AddListener" + place(inDevice, inChannel, isInput, inPropertyID) + " " +
             nameOf(reinterpret_cast<std::uintptr_t>(inProc)) + " " +
             nameOf(reinterpret_cast<std::uintptr_t>(inClientData))))
    return failure;
  listeners.push_back({inDevice, inChannel, isInput, inPropertyID, inProc, inClientData});
  return noErr;
}

OSStatus FakeHardware::AudioDeviceRemovePropertyListener(AudioDeviceID inDevice, UInt32 inChannel,
                                                         Boolean isInput,
                                                         AudioDevicePropertyID inPropertyID,
                                                         AudioDevicePropertyListenerProc inProc) {
  if (record("RemoveListener" + place(inDevice, inChannel, isInput, inPropertyID) + " " +
             nameOf(reinterpret_cast<std::uintptr_t>(inProc))))
    return failure;
  std::erase_if(listeners, [&](const Listener &listener) {
    return listener.device == inDevice && listener.channel == inChannel &&
           listener.isInput == isInput && listener.propertyID == inPropertyID &&
           listener.proc == inProc;
  });
  return noErr;
}

}  // namespace orvane
