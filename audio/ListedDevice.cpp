#include "audio/ListedDevice.h"

#include <unicode/unistr.h>

#include <algorithm>
#include <cstddef>

namespace orvane {

namespace {

// Hardware names are not to be trusted to be UTF-8; what is not becomes U+FFFD.
std::string wellFormed(const char *text, std::size_t length) {
  std::string result;
  icu::UnicodeString::fromUTF8(icu::StringPiece(text, static_cast<std::int32_t>(length)))
      .toUTF8String(result);
  return result;
}

std::string nameFromBytes(const std::vector<std::byte> &bytes) {
  const auto end = std::find(bytes.begin(), bytes.end(), std::byte{0});
  const auto length = static_cast<std::size_t>(end - bytes.begin());
  return wellFormed(reinterpret_cast<const char *>(bytes.data()), length);
}

}  // namespace

bool ListedDevice::hasStreamFormat() const {
  AudioStreamBasicDescription description;
  UInt32 size = sizeof(description);
  return mHardware.AudioDeviceGetProperty(mDevice, kMasterChannel, mIsInput,
                                          kAudioDevicePropertyStreamFormat, &size,
                                          &description) == noErr;
}

std::string ListedDevice::name(AudioDevicePropertyID propertyID) const {
  return nameFromBytes(bytes(propertyID, sizeOf(propertyID)).bytes);
}

bool ListedDevice::isDataSourceSettable() const {
  Boolean writable = 0;
  mHardware.AudioDeviceGetPropertyInfo(mDevice, kMasterChannel, mIsInput,
                                       kAudioDevicePropertyDataSource, nullptr, &writable);
  return writable != 0;
}

std::optional<std::vector<UInt32>> ListedDevice::dataSources() const {
  const UInt32 size = sizeOf(kAudioDevicePropertyDataSources);
  if (size == 0)
    return std::nullopt;
  const std::vector<std::byte> list = bytes(kAudioDevicePropertyDataSources, size).bytes;
  if (list.empty())
    return std::nullopt;
  return idsFromBytes(list);
}

std::string ListedDevice::dataSourceName(UInt32 dataSource) const {
  AudioStringRef string = nullptr;
  AudioValueTranslation translation;
  translation.mInputData = &dataSource;
  translation.mInputDataSize = sizeof(dataSource);
  translation.mOutputData = static_cast<void *>(&string);
  translation.mOutputDataSize = sizeof(AudioStringRef);
  UInt32 size = sizeof(translation);
  mHardware.AudioDeviceGetProperty(mDevice, kMasterChannel, mIsInput,
                                   kAudioDevicePropertyDataSourceNameForIDCFString, &size,
                                   &translation);
  if (string == nullptr)
    return {};
  std::string name = wellFormed(string->data(), std::min<std::size_t>(string->size(), 1U << 20));
  AudioStringRelease(string);
  return name;
}

UInt32 ListedDevice::sizeOf(AudioDevicePropertyID propertyID) const {
  UInt32 size = 0;
  mHardware.AudioDeviceGetPropertyInfo(mDevice, kMasterChannel, mIsInput, propertyID, &size,
                                       nullptr);
  return size;
}

PropertyBytes ListedDevice::bytes(AudioDevicePropertyID propertyID, UInt32 size) const {
  return readBytes(size, [&](UInt32 *ioSize, void *buffer) {
    return mHardware.AudioDeviceGetProperty(mDevice, kMasterChannel, mIsInput, propertyID, ioSize,
                                            buffer);
  });
}

}  // namespace orvane
