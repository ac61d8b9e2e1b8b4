#include "audio/PulseMirror.h"

#include <algorithm>
#include <set>

namespace orvane {

namespace {

template <typename Devices>
auto findDevice(Devices &devices, AudioDeviceID id) {
  return std::ranges::find_if(
      devices, [id](const PulseMirror::Device &device) { return device.state.id == id; });
}

}  // namespace

bool PulseStreamSpec::operator==(const PulseStreamSpec &other) const {
  return device == other.device && source == other.source && index == other.index &&
         pa_sample_spec_equal(&sampleSpec, &other.sampleSpec) != 0 &&
         pa_channel_map_equal(&channelMap, &other.channelMap) != 0;
}

PulseMirror::Device PulseMirror::deviceOf(const PulseSource &source) {
  Device device;
  device.index = source.index;
  device.channelMap = source.channelMap;

  DeviceState &state = device.state;
  state.id = mDeviceIDs.try_emplace(source.name, static_cast<AudioDeviceID>(mDeviceIDs.size() + 1))
                 .first->second;
  state.name = source.name;
  state.displayName = source.description;
  state.manufacturer = source.manufacturer;
  state.sampleRate = source.sampleSpec.rate;
  state.channels = source.sampleSpec.channels;
  state.isInput = !source.isMonitor;
  state.volumes.assign(source.volume.values, source.volume.values + source.volume.channels);
  state.volumeWritable = state.isInput;
  state.volumeBase = source.volumeBase;
  state.volumeSteps = source.volumeSteps;
  for (const PulsePort &port : source.ports) {
    const auto [known, isNew] = mDataSourceIDs.try_emplace({state.id, port.name}, 0);
    if (isNew)
      known->second = ++mDataSourceCounts[state.id];
    state.dataSources.push_back({known->second, port.name, port.description});
    if (port.name == source.activePort)
      state.activeDataSource = known->second;
  }
  return device;
}

PulseMirror::Plan PulseMirror::planListing(std::span<const PulseSource> sources) {
  Plan plan;
  std::set<std::string> seen;
  for (const PulseSource &source : sources) {
    // A second source of the same name could not be told from the first.
    if (seen.insert(source.name).second)
      plan.devices.push_back(deviceOf(source));
  }
  for (const Device &after : plan.devices) {
    const auto before = findDevice(mDevices, after.state.id);
    if (before != mDevices.end())
      appendChanges(*before, after, &plan.changes);
  }
  for (const Device &before : mDevices) {
    if (seen.contains(before.state.name))
      continue;
    Device after = before;
    after.state.alive = false;
    appendChanges(before, after, &plan.changes);
    plan.devices.push_back(std::move(after));
  }
  return plan;
}

PulseMirror::Plan PulseMirror::planLoss() const {
  Plan plan;
  for (const Device &before : mDevices) {
    Device after = before;
    after.state.alive = false;
    appendChanges(before, after, &plan.changes);
    plan.devices.push_back(std::move(after));
  }
  return plan;
}

void PulseMirror::commit(std::vector<Device> devices) {
  const std::lock_guard lock(mMutex);
  mDevices = std::move(devices);
}

void PulseMirror::appendChanges(const Device &before, const Device &after,
                                std::vector<Change> *changes) {
  const DeviceState &was = before.state;
  const DeviceState &is = after.state;
  const auto add = [&](bool changed, UInt32 channel, AudioDevicePropertyID property) {
    if (changed)
      changes->push_back({is.id, channel, property});
  };
  const std::size_t countBefore = changes->size();
  // A new number under the same name: it was away between two listings.
  add(was.alive != is.alive || before.index != after.index, 0, kAudioDevicePropertyDeviceIsAlive);
  add(was.sampleRate != is.sampleRate || was.channels != is.channels, 0,
      kAudioDevicePropertyStreamFormat);
  add(was.channels != is.channels, 0, kAudioDevicePropertyStreamConfiguration);
  add(was.activeDataSource != is.activeDataSource, 0, kAudioDevicePropertyDataSource);
  const std::size_t channels = std::max(was.volumes.size(), is.volumes.size());
  for (std::size_t i = 0; i < channels; ++i) {
    const bool same =
        i < was.volumes.size() && i < is.volumes.size() && was.volumes[i] == is.volumes[i];
    add(!same, static_cast<UInt32>(i + 1), kAudioDevicePropertyVolumeScalar);
  }
  const bool isNewRange = was.volumeBase != is.volumeBase || was.volumeSteps != is.volumeSteps;
  for (std::size_t i = 0; i < channels; ++i)
    add(isNewRange, static_cast<UInt32>(i + 1), kAudioDevicePropertyVolumeRangeDecibels);
  const bool anything = changes->size() > countBefore || was != is;
  add(anything, 0, kAudioDevicePropertyDeviceHasChanged);
}

std::vector<AudioDeviceID> PulseMirror::deviceIDs() const {
  const std::lock_guard lock(mMutex);
  std::vector<AudioDeviceID> ids;
  for (const Device &device : mDevices)
    ids.push_back(device.state.id);
  return ids;
}

std::optional<DeviceState> PulseMirror::device(AudioDeviceID id) const {
  const std::lock_guard lock(mMutex);
  const auto found = findDevice(mDevices, id);
  if (found == mDevices.end())
    return std::nullopt;
  return found->state;
}

std::optional<PulseStreamSpec> PulseMirror::streamSpec(AudioDeviceID id) const {
  const std::lock_guard lock(mMutex);
  return streamSpec(mDevices, id);
}

std::optional<PulseStreamSpec> PulseMirror::streamSpec(std::span<const Device> devices,
                                                       AudioDeviceID id) {
  const auto found = findDevice(devices, id);
  if (found == devices.end() || !found->state.isInput || !found->state.alive)
    return std::nullopt;
  PulseStreamSpec spec;
  spec.device = id;
  spec.source = found->state.name;
  spec.index = found->index;
  spec.sampleSpec.format = PA_SAMPLE_FLOAT32NE;
  spec.sampleSpec.rate = static_cast<std::uint32_t>(found->state.sampleRate);
  spec.sampleSpec.channels = static_cast<std::uint8_t>(found->state.channels);
  spec.channelMap = found->channelMap;
  if (pa_sample_spec_valid(&spec.sampleSpec) == 0)
    return std::nullopt;
  return spec;
}

}  // namespace orvane
