#include "audio/AUInputUnit.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <unordered_set>
#include <utility>

#include "audio/ListedDevice.h"
#include "audio/PropertyBytes.h"
#include "core/WholeNumber.h"

namespace orvane {

namespace {

constexpr Boolean kInputSide = 1;

// A device that claims more is broken; this keeps it from taking the time.
constexpr UInt32 kMostVolumeChannels = 4096;

// A value of which a broken device wrote only some bytes is half the old one.
bool isWhole(OSStatus status, UInt32 written, std::size_t size) {
  return status == noErr && written >= size;
}

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

AUInputUnit::AUInputUnit(AudioHardware &hardware, MainThread *mainThread)
    : mHardware(hardware), mMainThread(mainThread) {
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

void AUInputUnit::setupVolumeSlider(VolumeSlider *slider, VolumeText *volumeText) {
  mVolumeSlider = slider;
  mVolumeText = volumeText;
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
  if (!isWhole(status, size, sizeof(description)))
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

UInt32 AUInputUnit::volumeChannels() const {
  return std::min(mChannels.load(std::memory_order_acquire), kMostVolumeChannels);
}

void AUInputUnit::setVolumeState() {
  const UInt32 channels = volumeChannels();
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
  if (isWhole(status, size, sizeof(volume)))
    mInputVolume.store(volume, std::memory_order_release);

  if (mMainThread == nullptr)
    return;
  mMainThread->performSelectorOnMainThread(
      [this, life = std::weak_ptr(mLife)] {
        if (!life.expired())
          updateVolumeState();
      },
      mModes);
}

void AUInputUnit::updateVolumeState() {
  const bool isWritable = isVolumeWritable();
  // The product is one in single precision.
  const int percent = isWritable ? wholeNumber(static_cast<double>(inputVolume() * 100.0F)) : 100;
  if (mVolumeSlider != nullptr) {
    mVolumeSlider->setEnabled(isWritable);
    mVolumeSlider->setIntValue(percent);
  }
  if (mVolumeText == nullptr)
    return;
  if (isWritable)
    mVolumeText->setIntValue(percent);
  else
    mVolumeText->setStringValue("n/a");
}

void AUInputUnit::setVolume(std::int64_t percent) {
  const auto scalar = static_cast<Float32>(static_cast<Float64>(percent) / 100.0);
  if (!isVolumeWritable() || scalar == inputVolume())
    return;
  mInputVolume.store(scalar, std::memory_order_release);
  const UInt32 channels = volumeChannels();
  for (UInt32 channel = 1; channel <= channels; ++channel)
    mHardware.AudioDeviceSetProperty(mInputDevice, nullptr, channel, kInputSide,
                                     kAudioDevicePropertyVolumeScalar, sizeof(scalar), &scalar);
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
