// A started tuner whose hardware can be made to sound.
#pragma once

#include <utility>
#include <vector>

#include <QApplication>

#include "tests/app/ControllerWatch.h"
#include "tests/core/CaptureFeed.h"

namespace orvane::test {

class SoundingHardware : public FakeHardware {
 public:
  using FakeHardware::FakeHardware;

  OSStatus AudioDeviceAddIOProc(AudioDeviceID inDevice, AudioDeviceIOProc inProc,
                                void *inClientData) override {
    mDevice = inDevice;
    mProc = inProc;
    mClientData = inClientData;
    return FakeHardware::AudioDeviceAddIOProc(inDevice, inProc, inClientData);
  }

  // One callback of the input thread, whichever thread that is.
  OSStatus sound(std::vector<Buffer> buffers) const {
    BufferList list(std::move(buffers));
    const AudioTimeStamp time{1.0};
    return mProc(mDevice, &time, list.list(), &time, nullptr, nullptr, mClientData);
  }

  // The device runs at another rate from now on, and says so. Any thread, while no other one calls
  // the hardware.
  void setSampleRate(double hertz) {
    devices.front().sampleRate = hertz;
    notify(devices.front().id, 0, 1, kAudioDevicePropertyStreamFormat);
  }

 private:
  AudioDeviceID mDevice = 0;
  AudioDeviceIOProc mProc = nullptr;
  void *mClientData = nullptr;
};

class SoundingTuner {
 public:
  explicit SoundingTuner(std::vector<FakeDevice> devices = {microphone()})
      : hardware(std::move(devices)) {
    tuner.awakeFromNib();
    // The cursor of a field would blink among the paints.
    tuner.mWindow->makeFirstResponder(nullptr);
    QApplication::processEvents();
    hardware.takeCalls();
  }
  ~SoundingTuner() { tuner.applicationWillTerminate(); }
  SoundingTuner(const SoundingTuner &) = delete;
  SoundingTuner &operator=(const SoundingTuner &) = delete;

  // Through the hardware, the queue and the event loop.
  void play(std::vector<float> samples) {
    hardware.sound({{1, std::move(samples)}});
    QApplication::processEvents();
  }
  // A block of hertz × period samples a second.
  void playTone(double hertz, std::size_t period = 100, float peak = 0.5F) {
    const double rate = hertz * static_cast<double>(period);
    hardware.setSampleRate(rate);
    play(pulses(rate, period, peak));
  }
  void playSilence() { play(std::vector<float>(blockFrames(hardware.devices.front().sampleRate))); }

  // Of the hardware and the system since the last time.
  Lines takeCalls() {
    QApplication::processEvents();
    return hardware.takeCalls();
  }

  TemporaryFolder folder;
  SoundingHardware hardware;
  FakeSystem system{hardware};
  UserDefaults defaults{{}, folder / "Orvane.ini"};
  Controller tuner{{hardware, defaults, system,
                    std::filesystem::path(ORVANE_RESOURCES_DIR) / "Temperaments.txt"}};
};

}  // namespace orvane::test
