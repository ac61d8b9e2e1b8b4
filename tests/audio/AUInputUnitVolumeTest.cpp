#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "audio/AUInputUnit.h"
#include "tests/audio/FakeMainThread.h"
#include "tests/audio/InputUnitRig.h"

namespace orvane {
namespace {

// The bits of 0.37 in single precision, 0x3EBD70A4.
const std::string kThirtySeven = "1052602532";

class FakeSlider : public VolumeSlider {
 public:
  explicit FakeSlider(Lines &actions) : mActions(actions) {}
  void setEnabled(bool isEnabled) override {
    mActions.push_back(isEnabled ? "enable slider" : "disable slider");
  }
  void setIntValue(int percent) override {
    mActions.push_back("slider " + std::to_string(percent));
  }

 private:
  Lines &mActions;
};

class FakeText : public VolumeText {
 public:
  explicit FakeText(Lines &actions) : mActions(actions) {}
  void setIntValue(int percent) override { mActions.push_back("text " + std::to_string(percent)); }
  void setStringValue(const std::string &text) override { mActions.push_back("text " + text); }

 private:
  Lines &mActions;
};

// A unit with volume controls that write down what is done to them.
struct VolumeRig {
  explicit VolumeRig(std::vector<FakeDevice> devices) : hardware(std::move(devices)) {
    unit.emplace(hardware, &mainThread);
    unit->setIOProc(ignoreInput, nullptr);
    unit->setupVolumeSlider(&slider, &text);
    hardware.takeCalls();
  }
  Lines shown() {
    mainThread.run();
    return std::exchange(actions, {});
  }

  FakeHardware hardware;
  FakeMainThread mainThread;
  Lines actions;
  FakeSlider slider{actions};
  FakeText text{actions};
  std::optional<AUInputUnit> unit;
};

FakeDevice volumeDevice(std::vector<bool> isVolumeSettable, Float32 volume = 0.5F) {
  FakeDevice device = plainDevice(41);
  device.bufferChannels = {static_cast<UInt32>(isVolumeSettable.size())};
  device.isVolumeSettable = std::move(isVolumeSettable);
  device.volume = volume;
  return device;
}

const Lines kNotAvailable = {"disable slider", "slider 100", "text n/a"};

TEST(AUInputUnitVolume, AnActivationReadsTheVolumeBetweenTheConfigurationAndTheStart) {
  VolumeRig rig({volumeDevice({true, true, true})});
  rig.unit->setInputDeviceAtIndex(0);
  const Lines first(rig.hardware.calls.begin(), rig.hardware.calls.begin() + 8);
  EXPECT_EQ(first,
            (Lines{"Get 41 0 in sfmt 40", "Info 41 0 in slay size?", "Get 41 0 in slay 24",
                   "Info 41 1 in volm writable?", "Info 41 2 in volm writable?",
                   "Info 41 3 in volm writable?", "Get 41 1 in volm 4", "AddIOProc 41 ? ?"}));
}

TEST(AUInputUnitVolume, AnActivationPostsOneRefreshInAllFourModes) {
  VolumeRig rig({volumeDevice({true})});
  rig.unit->setInputDeviceAtIndex(0);
  EXPECT_TRUE(rig.actions.empty());
  EXPECT_EQ(rig.mainThread.modes,
            (std::vector<Lines>{{"NSDefaultRunLoopMode", "NSConnectionReplyMode",
                                 "NSModalPanelRunLoopMode", "NSEventTrackingRunLoopMode"}}));
  EXPECT_EQ(rig.shown(), (Lines{"enable slider", "slider 50", "text 50"}));
}

TEST(AUInputUnitVolume, IsCutToAWholePercentage) {
  const struct {
    Float32 volume;
    std::string percent;
  } rows[] = {
      {0.0F, "0"},
      {0.5F, "50"},
      {0.499F, "49"},
      {0.999F, "99"},
      {1.0F, "100"},
      {0.0099F, "0"},
      // Less than 0.29, but the product rounds up to 29 in single precision; 28 in double.
      {0.29F, "29"},
      // The next smaller one stays below.
      {std::nextafter(0.29F, 0.0F), "28"},
      {-0.5F, "-50"},
      {1.5F, "150"},
  };
  for (const auto &row : rows) {
    VolumeRig rig({volumeDevice({true}, row.volume)});
    rig.unit->setInputDeviceAtIndex(0);
    EXPECT_EQ(rig.shown(),
              (Lines{"enable slider", "slider " + row.percent, "text " + row.percent}));
  }
}

// Their hundredths are a little small in single precision, and so are the products.
TEST(AUInputUnitVolume, SetToAWholePercentageShowsItButForFiftyThreeAndFiftyNine) {
  VolumeRig rig({volumeDevice({true}, 2.0F)});
  rig.unit->setInputDeviceAtIndex(0);
  Lines astray;
  for (int percent = 0; percent <= 100; ++percent) {
    rig.unit->setVolume(percent);
    rig.unit->setupVolumeSlider(nullptr, &rig.text);
    rig.shown();
    rig.unit->updateVolumeState();
    const Lines shown = rig.shown();
    if (shown != Lines{"text " + std::to_string(percent)})
      astray.insert(astray.end(), shown.begin(), shown.end());
  }
  EXPECT_EQ(astray, (Lines{"text 52", "text 58"}));
}

TEST(AUInputUnitVolume, ThatIsNoNumberIsShownAsOneAllTheSame) {
  VolumeRig rig({volumeDevice({true}, std::numeric_limits<Float32>::quiet_NaN())});
  rig.unit->setInputDeviceAtIndex(0);
  EXPECT_EQ(rig.shown(), (Lines{"enable slider", "slider -2147483648", "text -2147483648"}));
}

TEST(AUInputUnitVolume, ThatASecondChannelCannotSetIsNotAvailable) {
  VolumeRig rig({volumeDevice({true, false})});
  rig.unit->setInputDeviceAtIndex(0);
  EXPECT_EQ(rig.shown(), kNotAvailable);
  rig.hardware.takeCalls();
  rig.unit->setVolume(37);
  EXPECT_TRUE(rig.hardware.calls.empty());
  EXPECT_EQ(rig.unit->inputVolume(), 0.5F);
}

TEST(AUInputUnitVolume, OfADeviceWithoutChannelsIsNotAvailable) {
  FakeDevice device = volumeDevice({true});
  device.bufferChannels = {};
  VolumeRig rig({device});
  rig.unit->setInputDeviceAtIndex(0);
  EXPECT_EQ(rig.shown(), kNotAvailable);
}

TEST(AUInputUnitVolume, IsNotAvailableBeforeTheFirstDevice) {
  VolumeRig rig({volumeDevice({true})});
  rig.unit->updateVolumeState();
  EXPECT_EQ(rig.actions, kNotAvailable);
  rig.unit->setVolume(37);
  EXPECT_TRUE(rig.hardware.calls.empty());
}

TEST(AUInputUnitVolume, IsWrittenToEveryInputChannelAndToNoOther) {
  VolumeRig rig({volumeDevice({true, true, true})});
  rig.unit->setInputDeviceAtIndex(0);
  rig.hardware.takeCalls();
  rig.unit->setVolume(37);
  EXPECT_EQ(rig.hardware.calls,
            (Lines{"Set 41 1 in volm 4 " + kThirtySeven, "Set 41 2 in volm 4 " + kThirtySeven,
                   "Set 41 3 in volm 4 " + kThirtySeven}));
  EXPECT_EQ(rig.unit->inputVolume(), 0.37F);
}

TEST(AUInputUnitVolume, ThatIsHeldAlreadyIsNotWrittenAgain) {
  VolumeRig rig({volumeDevice({true})});
  rig.unit->setInputDeviceAtIndex(0);
  rig.hardware.takeCalls();
  rig.unit->setVolume(50);
  EXPECT_TRUE(rig.hardware.calls.empty());
  rig.unit->setVolume(37);
  rig.unit->setVolume(37);
  EXPECT_EQ(rig.hardware.calls, (Lines{"Set 41 1 in volm 4 " + kThirtySeven}));
}

TEST(AUInputUnitVolume, IsWrittenWithoutARefreshOfItsOwn) {
  VolumeRig rig({volumeDevice({true})});
  rig.unit->setInputDeviceAtIndex(0);
  rig.shown();
  rig.unit->setVolume(37);
  EXPECT_TRUE(rig.shown().empty());
}

TEST(AUInputUnitVolume, ThatChangesElsewhereIsShownAfterItsNotification) {
  VolumeRig rig({volumeDevice({true})});
  rig.unit->setInputDeviceAtIndex(0);
  rig.shown();
  rig.hardware.devices[0].volume = 0.75F;
  rig.hardware.notify(41, 1, 1, kAudioDevicePropertyVolumeScalar);
  EXPECT_EQ(rig.shown(), (Lines{"enable slider", "slider 75", "text 75"}));
  rig.hardware.devices[0].isVolumeSettable = {false};
  rig.hardware.notify(41, 0, 1, kAudioDevicePropertyDataSource);
  EXPECT_EQ(rig.shown(), kNotAvailable);
}

TEST(AUInputUnitVolume, OnlyThreeKindsOfNotificationRefreshItEachOnce) {
  const struct {
    AudioDevicePropertyID propertyID;
    std::size_t refreshes;
  } rows[] = {
      {kAudioDevicePropertyDeviceHasChanged, 1},    {kAudioDevicePropertyDataSource, 1},
      {kAudioDevicePropertyVolumeScalar, 1},        {kAudioDevicePropertyStreamFormat, 0},
      {kAudioDevicePropertyStreamConfiguration, 0}, {kAudioDevicePropertyDeviceIsAlive, 0},
      {kAudioDevicePropertyVolumeRangeDecibels, 0}, {kAudioDevicePropertyDeviceName, 0},
  };
  VolumeRig rig({volumeDevice({true})});
  rig.unit->setInputDeviceAtIndex(0);
  rig.mainThread.run();
  for (const auto &row : rows) {
    AUInputUnitPropertyListener(41, 0, 1, row.propertyID, &*rig.unit);
    EXPECT_EQ(rig.mainThread.run(), row.refreshes) << row.propertyID;
  }
}

TEST(AUInputUnitVolume, ThatCannotBeReadStaysAsItWasAndIsShownSo) {
  VolumeRig rig({volumeDevice({true})});
  rig.unit->setInputDeviceAtIndex(0);
  rig.shown();
  rig.hardware.devices[0].volume = 0.75F;
  // The first call asks whether the volume can be set, the second reads it.
  rig.hardware.firstFailing = rig.hardware.lastFailing = rig.hardware.numberOfCalls + 2;
  rig.unit->setVolumeState();
  EXPECT_EQ(rig.unit->inputVolume(), 0.5F);
  EXPECT_EQ(rig.shown(), (Lines{"enable slider", "slider 50", "text 50"}));
}

TEST(AUInputUnitVolume, IsNotAvailableWhenTheFirstChannelDoesNotAnswer) {
  VolumeRig rig({volumeDevice({true, true})});
  rig.unit->setInputDeviceAtIndex(0);
  rig.shown();
  rig.hardware.firstFailing = rig.hardware.lastFailing = rig.hardware.numberOfCalls + 1;
  rig.unit->setVolumeState();
  EXPECT_EQ(rig.shown(), kNotAvailable);
}

TEST(AUInputUnitVolume, IsSetOnTheOtherChannelsWhenOneRefuses) {
  VolumeRig rig({volumeDevice({true, true})});
  rig.unit->setInputDeviceAtIndex(0);
  rig.hardware.takeCalls();
  rig.hardware.firstFailing = rig.hardware.lastFailing = rig.hardware.numberOfCalls + 1;
  rig.unit->setVolume(37);
  EXPECT_EQ(rig.hardware.calls.size(), 2U);
  EXPECT_EQ(rig.unit->inputVolume(), 0.37F);
}

TEST(AUInputUnitVolume, OfAnAbsurdNumberOfChannelsIsWrittenWithoutHanging) {
  FakeDevice device = volumeDevice(std::vector<bool>(5000, true));
  device.bufferChannels = {0xFFFFFFFFU};
  VolumeRig rig({device});
  rig.unit->setInputDeviceAtIndex(0);
  rig.hardware.takeCalls();
  rig.unit->setVolume(37);
  EXPECT_EQ(rig.hardware.calls.size(), 4096U);
}

TEST(AUInputUnitVolume, IsRefreshedInTheControlsGivenLast) {
  VolumeRig rig({volumeDevice({true})});
  Lines others;
  FakeSlider slider(others);
  rig.unit->setInputDeviceAtIndex(0);
  rig.unit->setupVolumeSlider(&slider, &rig.text);
  EXPECT_EQ(rig.shown(), (Lines{"text 50"}));
  EXPECT_EQ(others, (Lines{"enable slider", "slider 50"}));
}

TEST(AUInputUnitVolume, NeedsNeitherControlsNorAMainThread) {
  VolumeRig rig({volumeDevice({true})});
  rig.unit->setupVolumeSlider(nullptr, nullptr);
  rig.unit->setInputDeviceAtIndex(0);
  EXPECT_TRUE(rig.shown().empty());

  FakeHardware hardware({volumeDevice({true})});
  AUInputUnit unit(hardware);
  unit.setupVolumeSlider(&rig.slider, &rig.text);
  unit.setInputDeviceAtIndex(0);
  EXPECT_TRUE(rig.actions.empty());
  EXPECT_EQ(unit.inputVolume(), 0.5F);
}

TEST(AUInputUnitVolume, IsNotRefreshedOnceTheUnitIsGone) {
  VolumeRig rig({volumeDevice({true})});
  rig.unit->setInputDeviceAtIndex(0);
  rig.unit->stop();
  rig.unit.reset();
  EXPECT_EQ(rig.mainThread.run(), 1U);
  EXPECT_TRUE(rig.actions.empty());
}

// The table of devices, for two threads at once.
class LockedHardware : public FakeHardware {
 public:
  using FakeHardware::FakeHardware;

  OSStatus AudioDeviceGetPropertyInfo(AudioDeviceID device, UInt32 channel, Boolean isInput,
                                      AudioDevicePropertyID propertyID, UInt32 *size,
                                      Boolean *writable) override {
    const std::lock_guard lock(mMutex);
    return FakeHardware::AudioDeviceGetPropertyInfo(device, channel, isInput, propertyID, size,
                                                    writable);
  }
  OSStatus AudioDeviceGetProperty(AudioDeviceID device, UInt32 channel, Boolean isInput,
                                  AudioDevicePropertyID propertyID, UInt32 *size,
                                  void *data) override {
    const std::lock_guard lock(mMutex);
    return FakeHardware::AudioDeviceGetProperty(device, channel, isInput, propertyID, size, data);
  }
  OSStatus AudioDeviceSetProperty(AudioDeviceID device, const AudioTimeStamp *when, UInt32 channel,
                                  Boolean isInput, AudioDevicePropertyID propertyID, UInt32 size,
                                  const void *data) override {
    const std::lock_guard lock(mMutex);
    return FakeHardware::AudioDeviceSetProperty(device, when, channel, isInput, propertyID, size,
                                                data);
  }

 private:
  std::mutex mMutex;
};

TEST(AUInputUnitVolume, MayBeSetAndShownWhileNotificationsAreTakenIn) {
  LockedHardware hardware({volumeDevice({true, true})});
  FakeMainThread mainThread;
  Lines actions;
  FakeSlider slider(actions);
  FakeText text(actions);
  AUInputUnit unit(hardware, &mainThread);
  unit.setIOProc(ignoreInput, nullptr);
  unit.setupVolumeSlider(&slider, &text);
  unit.setInputDeviceAtIndex(0);

  std::atomic<bool> isOver = false;
  std::thread notifier([&] {
    for (int i = 0; i < 1000; ++i)
      hardware.notify(41, 1, 1, kAudioDevicePropertyVolumeScalar);
    isOver = true;
  });
  std::size_t refreshes = 0;
  for (int percent = 0; !isOver; percent = (percent + 1) % 101) {
    unit.setVolume(percent);
    refreshes += mainThread.run();
  }
  notifier.join();
  unit.stop();
  refreshes += mainThread.run();
  EXPECT_EQ(refreshes, 1001U);  // one more for the activation
  EXPECT_EQ(actions.size(), 3 * refreshes);
  EXPECT_EQ(actions.back(), "text 50");
}

}  // namespace
}  // namespace orvane
