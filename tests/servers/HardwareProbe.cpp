#include "tests/servers/HardwareProbe.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <thread>
#include <utility>

namespace orvane::test {

namespace {

constexpr std::size_t kMostFrames = 60 * 48000;

constexpr std::pair<UInt32, AudioDevicePropertyID> kSubjects[] = {
    {0, kAudioDevicePropertyDeviceIsAlive},
    {0, kAudioDevicePropertyStreamConfiguration},
    {0, kAudioDevicePropertyStreamFormat},
    {0, kAudioDevicePropertyDataSource},
    {0, kAudioDevicePropertyDeviceHasChanged},
    {kAudioPropertyWildcardChannel, kAudioDevicePropertyVolumeScalar},
    {kAudioPropertyWildcardChannel, kAudioDevicePropertyVolumeRangeDecibels}};

template <typename Value>
std::optional<Value> valueOf(AudioHardware &hardware, AudioDeviceID device, UInt32 channel,
                             AudioDevicePropertyID property) {
  Value value{};
  UInt32 size = sizeof value;
  if (hardware.AudioDeviceGetProperty(device, channel, 1, property, &size, &value) != noErr)
    return std::nullopt;
  return value;
}

}  // namespace

bool eventually(const std::function<bool()> &condition, std::chrono::milliseconds longest) {
  const auto end = std::chrono::steady_clock::now() + longest;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end)
      return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

std::vector<AudioDeviceID> deviceIDs(AudioHardware &hardware) {
  UInt32 size = 0;
  hardware.AudioHardwareGetPropertyInfo(kAudioHardwarePropertyDevices, &size, nullptr);
  std::vector<AudioDeviceID> ids(size / sizeof(AudioDeviceID));
  hardware.AudioHardwareGetProperty(kAudioHardwarePropertyDevices, &size, ids.data());
  ids.resize(size / sizeof(AudioDeviceID));
  return ids;
}

std::string textProperty(AudioHardware &hardware, AudioDeviceID device,
                         AudioDevicePropertyID property) {
  UInt32 size = 0;
  if (hardware.AudioDeviceGetPropertyInfo(device, 0, 1, property, &size, nullptr) != noErr)
    return {};
  std::vector<char> text(size + 1, '\0');
  if (hardware.AudioDeviceGetProperty(device, 0, 1, property, &size, text.data()) != noErr)
    return {};
  return text.data();
}

AudioDeviceID deviceNamed(AudioHardware &hardware, const std::string &name) {
  for (const AudioDeviceID id : deviceIDs(hardware)) {
    if (textProperty(hardware, id, kAudioDevicePropertyDeviceName) == name)
      return id;
  }
  return 0;
}

bool isAlive(AudioHardware &hardware, AudioDeviceID device) {
  return valueOf<UInt32>(hardware, device, 0, kAudioDevicePropertyDeviceIsAlive).value_or(0) == 1;
}

std::optional<AudioStreamBasicDescription> streamFormat(AudioHardware &hardware,
                                                        AudioDeviceID device) {
  return valueOf<AudioStreamBasicDescription>(hardware, device, 0,
                                              kAudioDevicePropertyStreamFormat);
}

std::optional<UInt32> dataSource(AudioHardware &hardware, AudioDeviceID device) {
  return valueOf<UInt32>(hardware, device, 0, kAudioDevicePropertyDataSource);
}

std::vector<UInt32> dataSources(AudioHardware &hardware, AudioDeviceID device) {
  std::vector<UInt32> ids(16);
  auto size = static_cast<UInt32>(ids.size() * sizeof(UInt32));
  if (hardware.AudioDeviceGetProperty(device, 0, 1, kAudioDevicePropertyDataSources, &size,
                                      ids.data()) != noErr)
    return {};
  ids.resize(size / sizeof(UInt32));
  return ids;
}

std::string dataSourceName(AudioHardware &hardware, AudioDeviceID device, UInt32 source) {
  AudioStringRef name = nullptr;
  AudioValueTranslation translation{&source, sizeof source, &name, sizeof name};
  UInt32 size = sizeof translation;
  hardware.AudioDeviceGetProperty(device, 0, 1, kAudioDevicePropertyDataSourceNameForIDCFString,
                                  &size, &translation);
  const std::unique_ptr<const std::string> owned(name);
  return owned != nullptr ? *owned : std::string();
}

std::optional<Float32> volume(AudioHardware &hardware, AudioDeviceID device, UInt32 channel) {
  return valueOf<Float32>(hardware, device, channel, kAudioDevicePropertyVolumeScalar);
}

OSStatus setVolume(AudioHardware &hardware, AudioDeviceID device, UInt32 channel, Float32 scalar) {
  return hardware.AudioDeviceSetProperty(device, nullptr, channel, 1,
                                         kAudioDevicePropertyVolumeScalar, sizeof scalar, &scalar);
}

Ear::Ear(AudioHardware &hardware, AudioDeviceID device)
    : mHardware(hardware), mDevice(device), mSamples(kMostFrames) {
  mHardware.AudioDeviceAddIOProc(mDevice, heard, this);
  mHardware.AudioDeviceStart(mDevice, heard);
}

Ear::~Ear() {
  mHardware.AudioDeviceStop(mDevice, heard);
  mHardware.AudioDeviceRemoveIOProc(mDevice, heard);
}

std::vector<float> Ear::samplesFrom(std::size_t frame) const {
  const auto at = [this](std::size_t i) { return mSamples.begin() + static_cast<long>(i); };
  const std::size_t end = frames();
  return {at(std::min(frame, end)), at(end)};
}

bool Ear::hears(float value, std::size_t from, std::size_t atLeast) const {
  const std::vector<float> samples = samplesFrom(from);
  const auto count = std::ranges::count_if(
      samples, [value](float sample) { return std::abs(sample - value) < 0.01F; });
  return static_cast<std::size_t>(count) >= atLeast;
}

OSStatus Ear::heard(AudioDeviceID /*device*/, const AudioTimeStamp * /*now*/,
                    const AudioBufferList *input, const AudioTimeStamp *inputTime,
                    AudioBufferList * /*output*/, const AudioTimeStamp * /*outputTime*/,
                    void *self) {
  auto *ear = static_cast<Ear *>(self);
  const AudioBuffer &buffer = input->mBuffers[0];
  const UInt32 channels = buffer.mNumberChannels;
  const std::size_t count = buffer.mDataByteSize / sizeof(float) / channels;
  const std::size_t before = ear->mFrames.load(std::memory_order_relaxed);
  ear->mChannels = channels;
  if (before == 0)
    ear->mFirstTime = inputTime->mSampleTime;
  else if (inputTime->mSampleTime != ear->mNextTime)
    ++ear->mClockBreaks;
  ear->mNextTime = inputTime->mSampleTime + static_cast<Float64>(count);
  const auto *samples = static_cast<const float *>(buffer.mData);
  const std::size_t kept = std::min(count, ear->mSamples.size() - before);
  for (std::size_t i = 0; i < kept; ++i)
    ear->mSamples[before + i] = samples[i * channels];
  ear->mFrames.store(before + kept, std::memory_order_release);
  if (const std::int64_t stall = ear->mStallMilliseconds.exchange(0); stall > 0) {
    ear->mIsStalling = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(stall));
    ear->mIsStalling = false;
  }
  return noErr;
}

PropertyLog::PropertyLog(AudioHardware &hardware, AudioDeviceID device)
    : mHardware(hardware), mDevice(device) {
  for (const auto &[channel, property] : kSubjects)
    mHardware.AudioDeviceAddPropertyListener(mDevice, channel, 1, property, told, this);
}

PropertyLog::~PropertyLog() {
  for (const auto &[channel, property] : kSubjects)
    mHardware.AudioDeviceRemovePropertyListener(mDevice, channel, 1, property, told);
}

int PropertyLog::count(AudioDevicePropertyID property, UInt32 channel) const {
  const std::lock_guard lock(mMutex);
  return static_cast<int>(std::ranges::count_if(mNotices, [&](const Notice &notice) {
    return notice.property == property && notice.channel == channel;
  }));
}

OSStatus PropertyLog::told(AudioDeviceID /*device*/, UInt32 channel, Boolean /*isInput*/,
                           AudioDevicePropertyID property, void *self) {
  auto *log = static_cast<PropertyLog *>(self);
  const std::lock_guard lock(log->mMutex);
  log->mNotices.push_back({channel, property});
  return noErr;
}

}  // namespace orvane::test
