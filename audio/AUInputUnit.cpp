#include "audio/AUInputUnit.h"

#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <unordered_set>
#include <utility>

namespace orvane {

namespace {

constexpr Boolean kInputSide = 1;
constexpr UInt32 kMasterChannel = 0;

// A device that claims more is broken; these keep it from taking the memory or the time.
constexpr UInt32 kLargestProperty = 1U << 20;
constexpr UInt32 kMostVolumeChannels = 4096;

struct ListenedProperty {
  UInt32 channel;
  AudioDevicePropertyID propertyID;
};
constexpr std::array<ListenedProperty, 7> kListenedProperties = {{
    {kMasterChannel, kAudioDevicePropertyDeviceIsAlive},
    {kMasterChannel, kAudioDevicePropertyStreamConfiguration},
    {kMasterChannel, kAudioDevicePropertyStreamFormat},
    {kMasterChannel, kAudioDevicePropertyDataSource},
    {kMasterChannel, kAudioDevicePropertyDeviceHasChanged},
    {kAudioPropertyWildcardChannel, kAudioDevicePropertyVolumeScalar},
    {kAudioPropertyWildcardChannel, kAudioDevicePropertyVolumeRangeDecibels},
}};

// The bytes of a property of variable size.
struct PropertyBytes {
  OSStatus status = noErr;       // of the read
  std::vector<std::byte> bytes;  // what was read; empty when the read failed
};

// read(ioSize, buffer) is the hardware's read. It is called for a size of 0 as well, with a valid
// pointer.
template <typename Read>
PropertyBytes readBytes(UInt32 reportedSize, Read read) {
  PropertyBytes result;
  UInt32 size = std::min(reportedSize, kLargestProperty);
  const std::size_t capacity = size;
  result.bytes.resize(std::max<std::size_t>(capacity, 1));
  result.status = read(&size, result.bytes.data());
  result.bytes.resize(result.status == noErr ? std::min<std::size_t>(size, capacity) : 0);
  return result;
}

// The entries of a list of IDs; an incomplete one at the end is dropped.
std::vector<UInt32> idsFromBytes(const std::vector<std::byte> &bytes) {
  std::vector<UInt32> ids(bytes.size() / sizeof(UInt32));
  if (!ids.empty())
    std::memcpy(ids.data(), bytes.data(), ids.size() * sizeof(UInt32));
  return ids;
}

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

// One device of one side, for listing it.
class ListedDevice {
 public:
  ListedDevice(AudioHardware &hardware, AudioDeviceID device, bool isInput)
      : mHardware(hardware), mDevice(device), mIsInput(isInput ? 1 : 0) {}

  bool hasStreamFormat() const {
    AudioStreamBasicDescription description;
    UInt32 size = sizeof(description);
    return mHardware.AudioDeviceGetProperty(mDevice, kMasterChannel, mIsInput,
                                            kAudioDevicePropertyStreamFormat, &size,
                                            &description) == noErr;
  }

  std::string name(AudioDevicePropertyID propertyID) const {
    return nameFromBytes(bytes(propertyID, sizeOf(propertyID)).bytes);
  }

  bool isDataSourceSettable() const {
    Boolean writable = 0;
    mHardware.AudioDeviceGetPropertyInfo(mDevice, kMasterChannel, mIsInput,
                                         kAudioDevicePropertyDataSource, nullptr, &writable);
    return writable != 0;
  }

  // Nothing when the device has no list of sources; a list too short for one entry is an empty one.
  std::optional<std::vector<UInt32>> dataSources() const {
    const UInt32 size = sizeOf(kAudioDevicePropertyDataSources);
    if (size == 0)
      return std::nullopt;
    const std::vector<std::byte> list = bytes(kAudioDevicePropertyDataSources, size).bytes;
    if (list.empty())
      return std::nullopt;
    return idsFromBytes(list);
  }

  std::string dataSourceName(UInt32 dataSource) const {
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

 private:
  UInt32 sizeOf(AudioDevicePropertyID propertyID) const {
    UInt32 size = 0;
    mHardware.AudioDeviceGetPropertyInfo(mDevice, kMasterChannel, mIsInput, propertyID, &size,
                                         nullptr);
    return size;
  }

  PropertyBytes bytes(AudioDevicePropertyID propertyID, UInt32 size) const {
    return readBytes(size, [&](UInt32 *ioSize, void *buffer) {
      return mHardware.AudioDeviceGetProperty(mDevice, kMasterChannel, mIsInput, propertyID, ioSize,
                                              buffer);
    });
  }

  AudioHardware &mHardware;
  AudioDeviceID mDevice;
  Boolean mIsInput;
};

// The menu finds its items by title, so no two entries may share one.
class UniqueTitles {
 public:
  explicit UniqueTitles(const std::vector<AudioInputSource> &array) {
    for (const AudioInputSource &source : array)
      mTaken.insert(source.name);
  }

  std::string take(const std::string &manufacturer, const std::string &name) {
    const std::string wanted = manufacturer + " : " + name;
    std::string title = wanted;
    for (unsigned number = 2; !mTaken.insert(title).second; ++number)
      title = wanted + " (" + std::to_string(number) + ")";
    return title;
  }

 private:
  std::unordered_set<std::string> mTaken;
};

}  // namespace

AUInputUnit::AUInputUnit(AudioHardware &hardware) : mHardware(hardware) {
  setupAudioSource(mAudioInputSourceArray, true);
}

void AUInputUnit::setupAudioSource(std::vector<AudioInputSource> &array, bool isInput) {
  UInt32 size = 0;
  mHardware.AudioHardwareGetPropertyInfo(kAudioHardwarePropertyDevices, &size, nullptr);
  const PropertyBytes list = readBytes(size, [&](UInt32 *ioSize, void *buffer) {
    return mHardware.AudioHardwareGetProperty(kAudioHardwarePropertyDevices, ioSize, buffer);
  });

  UniqueTitles titles(array);
  for (const AudioDeviceID deviceID : idsFromBytes(list.bytes)) {
    const ListedDevice device(mHardware, deviceID, isInput);
    if (!device.hasStreamFormat())
      continue;
    const std::string name = device.name(kAudioDevicePropertyDeviceName);
    const std::string manufacturer = device.name(kAudioDevicePropertyDeviceManufacturer);

    std::optional<std::vector<UInt32>> dataSources;
    if (device.isDataSourceSettable())
      dataSources = device.dataSources();
    if (!dataSources) {
      array.push_back({titles.take(manufacturer, name), deviceID, std::nullopt});
      continue;
    }
    for (const UInt32 dataSource : *dataSources)
      array.push_back(
          {titles.take(manufacturer, device.dataSourceName(dataSource)), deviceID, dataSource});
  }
}

void AUInputUnit::setupPopUpButton(PopUpButton *button) {
  if (button == mDevicePopUpButton)
    return;
  mDevicePopUpButton = button;
  setupPopUpButton(button, mAudioInputSourceArray);
}

void AUInputUnit::setupPopUpButton(PopUpButton *button,
                                   const std::vector<AudioInputSource> &array) {
  if (button == nullptr)
    return;
  button->removeAllItems();
  for (std::size_t i = 0; i < array.size(); ++i)
    button->insertItemWithTitle(array[i].name, static_cast<std::int64_t>(i));
}

void AUInputUnit::setIOProc(AudioDeviceIOProc proc, void *refCon) {
  mIOProc = proc;
  mIORefCon = refCon;
}

void AUInputUnit::setListenerProc(AudioDevicePropertyListenerProc proc, void *refCon) {
  mListenerProc = proc;
  mListenerRefCon = refCon;
}

void AUInputUnit::setInputDeviceAtIndex(std::int64_t index) {
  if (mAudioInputSourceArray.empty() || index == mIndexOfInputDevice)
    return;
  if (index < 0 || static_cast<std::uint64_t>(index) >= mAudioInputSourceArray.size())
    return;
  const AudioInputSource &source = mAudioInputSourceArray[static_cast<std::size_t>(index)];

  if (source.deviceID != mInputDevice) {
    if (mInputDevice != 0)
      stop();
    mInputDevice = source.deviceID;
    setStreamFormat();
    setStreamConfiguration();
    setVolumeState();
    start();
  }
  if (source.dataSource)
    setDataSource(*source.dataSource);
}

void AUInputUnit::setInputDeviceWithName(const std::optional<std::string> &name) {
  std::int64_t index = -1;
  if (name && mDevicePopUpButton != nullptr)
    index = mDevicePopUpButton->indexOfItemWithTitle(*name);
  if (index < 0)
    index = indexOfDefaultInputDevice();
  // An empty menu has no item to select.
  if (mDevicePopUpButton != nullptr && !mAudioInputSourceArray.empty())
    mDevicePopUpButton->selectItemAtIndex(index);
  setInputDeviceAtIndex(index);
}

void AUInputUnit::setDataSource(UInt32 dataSource) {
  mHardware.AudioDeviceSetProperty(mInputDevice, nullptr, kMasterChannel, kInputSide,
                                   kAudioDevicePropertyDataSource, sizeof(dataSource), &dataSource);
}

void AUInputUnit::start() {
  if (mAudioInputSourceArray.empty())
    return;
  mHardware.AudioDeviceAddIOProc(mInputDevice, mIOProc, mIORefCon);
  for (const ListenedProperty &listened : kListenedProperties)
    mHardware.AudioDeviceAddPropertyListener(mInputDevice, listened.channel, kInputSide,
                                             listened.propertyID, AUInputUnitPropertyListener,
                                             this);
  mHardware.AudioDeviceStart(mInputDevice, mIOProc);
}

void AUInputUnit::stop() {
  if (mAudioInputSourceArray.empty())
    return;
  mHardware.AudioDeviceStop(mInputDevice, mIOProc);
  for (const ListenedProperty &listened : kListenedProperties)
    mHardware.AudioDeviceRemovePropertyListener(mInputDevice, listened.channel, kInputSide,
                                                listened.propertyID, AUInputUnitPropertyListener);
  mHardware.AudioDeviceRemoveIOProc(mInputDevice, mIOProc);
}

void AUInputUnit::setStreamFormat() {
  AudioStreamBasicDescription description = mInputStreamDescription;
  UInt32 size = sizeof(description);
  const OSStatus status =
      mHardware.AudioDeviceGetProperty(mInputDevice, kMasterChannel, kInputSide,
                                       kAudioDevicePropertyStreamFormat, &size, &description);
  if (status != noErr)
    return;
  mInputStreamDescription = description;
  mSampleRate.store(description.mSampleRate, std::memory_order_release);
}

void AUInputUnit::setStreamConfiguration() {
  UInt32 reportedSize = 0;
  const OSStatus sizeStatus = mHardware.AudioDeviceGetPropertyInfo(
      mInputDevice, kMasterChannel, kInputSide, kAudioDevicePropertyStreamConfiguration,
      &reportedSize, nullptr);
  PropertyBytes configuration = readBytes(reportedSize, [&](UInt32 *ioSize, void *buffer) {
    return mHardware.AudioDeviceGetProperty(mInputDevice, kMasterChannel, kInputSide,
                                            kAudioDevicePropertyStreamConfiguration, ioSize,
                                            buffer);
  });
  if (sizeStatus != noErr || configuration.status != noErr)
    return;
  mAudioBufferList = std::move(configuration.bytes);

  UInt32 numberOfBuffers = 0;
  if (mAudioBufferList.size() >= sizeof(numberOfBuffers))
    std::memcpy(&numberOfBuffers, mAudioBufferList.data(), sizeof(numberOfBuffers));
  UInt32 channels = 0;
  std::size_t offset = offsetof(AudioBufferList, mBuffers);
  for (UInt32 i = 0; i < numberOfBuffers; ++i) {
    // A count that the bytes do not bear out ends with them.
    if (offset + sizeof(AudioBuffer) > mAudioBufferList.size())
      break;
    AudioBuffer buffer;
    std::memcpy(&buffer, mAudioBufferList.data() + offset, sizeof(buffer));
    channels += buffer.mNumberChannels;
    offset += sizeof(AudioBuffer);
  }
  mChannels.store(channels, std::memory_order_release);
}

void AUInputUnit::setVolumeState() {
  const UInt32 channels = std::min(mChannels.load(std::memory_order_acquire), kMostVolumeChannels);
  Boolean writable = 0;
  for (UInt32 channel = 1; channel <= channels; ++channel) {
    mHardware.AudioDeviceGetPropertyInfo(mInputDevice, channel, kInputSide,
                                         kAudioDevicePropertyVolumeScalar, nullptr, &writable);
    if (writable == 0)
      break;
  }
  mIsVolumeWritable.store(writable != 0, std::memory_order_release);

  Float32 volume = mInputVolume.load(std::memory_order_acquire);
  UInt32 size = sizeof(volume);
  const OSStatus status = mHardware.AudioDeviceGetProperty(
      mInputDevice, 1, kInputSide, kAudioDevicePropertyVolumeScalar, &size, &volume);
  if (status == noErr)
    mInputVolume.store(volume, std::memory_order_release);
  // Volume controls will be refreshed from here, on the main thread, once there are any.
}

OSStatus AUInputUnit::listenerProc(const PropertyChange *change) {
  switch (change->propertyID) {
    case kAudioDevicePropertyDeviceHasChanged:
    case kAudioDevicePropertyDataSource:
    case kAudioDevicePropertyVolumeScalar:
      setVolumeState();
      break;
    case kAudioDevicePropertyStreamFormat:
      setStreamFormat();
      break;
    case kAudioDevicePropertyStreamConfiguration:
      setStreamConfiguration();
      break;
    default:
      break;
  }
  if (mListenerProc == nullptr)
    return noErr;
  return mListenerProc(change->device, change->channel, change->isInput, change->propertyID,
                       mListenerRefCon);
}

OSStatus AUInputUnitPropertyListener(AudioDeviceID inDevice, UInt32 inChannel, Boolean isInput,
                                     AudioDevicePropertyID inPropertyID, void *inClientData) {
  const PropertyChange change{inDevice, inChannel, isInput, inPropertyID};
  return static_cast<AUInputUnit *>(inClientData)->listenerProc(&change);
}

}  // namespace orvane
