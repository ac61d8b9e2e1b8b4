// A unit on hardware with scripted devices, and what the tests of the unit share.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "audio/AUInputUnit.h"
#include "tests/audio/FakeHardware.h"

namespace orvane {

using Lines = std::vector<std::string>;

inline OSStatus ignoreInput(AudioDeviceID, const AudioTimeStamp *, const AudioBufferList *,
                            const AudioTimeStamp *, AudioBufferList *, const AudioTimeStamp *,
                            void *) {
  return noErr;
}

// What a listener was told, and what the unit had already read by then.
struct Heard {
  AUInputUnit *unit = nullptr;
  std::vector<PropertyChange> changes;
  std::vector<Float64> rates;
  OSStatus answer = noErr;
};

inline OSStatus hear(AudioDeviceID device, UInt32 channel, Boolean isInput,
                     AudioDevicePropertyID propertyID, void *clientData) {
  auto *heard = static_cast<Heard *>(clientData);
  heard->changes.push_back({device, channel, isInput, propertyID});
  if (heard->unit != nullptr)
    heard->rates.push_back(heard->unit->sampleRate());
  return heard->answer;
}

inline FakeDevice plainDevice(AudioDeviceID id, const std::string &name = "Mic") {
  FakeDevice device;
  device.id = id;
  device.name = name;
  device.manufacturer = "Acme";
  return device;
}

inline FakeDevice sourceDevice(AudioDeviceID id) {
  FakeDevice device = plainDevice(id, "Card");
  device.isDataSourceSettable = true;
  device.dataSources = {{11, "Line"}, {12, "Front"}, {13, "Rear"}};
  return device;
}

inline Lines titlesOf(const AUInputUnit &unit) {
  Lines titles;
  for (const AudioInputSource &source : unit.audioInputSources())
    titles.push_back(source.name);
  return titles;
}

inline Lines operator+(Lines first, const Lines &second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// Names what the unit passes to the hardware, so that calls can be written out.
struct Rig {
  explicit Rig(std::vector<FakeDevice> devices) : hardware(std::move(devices)), unit(hardware) {
    hardware.setName(&ignoreInput, "proc");
    hardware.setName(&AUInputUnitPropertyListener, "listener");
    hardware.setName(&unit, "unit");
    hardware.setName(&heard, "refCon");
    hardware.setName(static_cast<void *>(nullptr), "null");
    unit.setIOProc(ignoreInput, &heard);
    unit.setListenerProc(hear, &heard);
    heard.unit = &unit;
    hardware.takeCalls();
  }
  FakeHardware hardware;
  AUInputUnit unit;
  Heard heard;
};

}  // namespace orvane
