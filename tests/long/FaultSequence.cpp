#include "tests/long/FaultSequence.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "tests/core/CaptureFeed.h"

namespace orvane::test {
namespace {

using StreamCall = RandomFaultHardware::StreamCall;

constexpr std::array kRates = {8000.0, 22050.0, 44100.0, 48000.0, 96000.0};

// A volume and how it is shown: cut to whole percent.
struct Volume {
  Float32 scalar;
  int percent;
};
constexpr std::array<Volume, 6> kVolumes = {
    {{0.0F, 0}, {0.125F, 12}, {0.25F, 25}, {0.5F, 50}, {0.999F, 99}, {1.0F, 100}}};

// Whose scalars are among those above.
constexpr std::array kSliderStops = {0, 25, 50, 100};

constexpr UInt32 kMostBuffers = 3;
constexpr UInt32 kMostChannels = 3;  // of a buffer

void setRandomChannels(Random &random, FakeDevice &device) {
  device.bufferChannels.resize(random.below(kMostBuffers + 1));
  for (UInt32 &channels : device.bufferChannels)
    channels = static_cast<UInt32>(random.below(kMostChannels + 1));
  const UInt32 channels =
      std::accumulate(device.bufferChannels.begin(), device.bufferChannels.end(), UInt32{0});
  device.isVolumeSettable.assign(channels, true);
  if (channels > 0 && random.chance(30))
    device.isVolumeSettable[random.below(channels)] = false;
}

// What is taken for an input, its titles in order. No two are alike: the second of a name is "(2)".
std::vector<std::string> expectedTitles(const std::vector<FakeDevice> &devices) {
  std::vector<std::string> titles;
  std::map<std::string, int> uses;
  const auto add = [&](const FakeDevice &device, const std::string &name) {
    const std::string title = device.manufacturer + " : " + name;
    const int use = ++uses[title];
    titles.push_back(use == 1 ? title : title + " (" + std::to_string(use) + ")");
  };
  for (const FakeDevice &device : devices) {
    if (!device.hasInput)
      continue;
    if (!device.isDataSourceSettable || device.dataSources.empty())
      add(device, device.name);
    else
      for (const auto &source : device.dataSources)
        add(device, source.second);
  }
  return titles;
}

}  // namespace

FaultSequence::FaultSequence(std::uint64_t seed, MakeTuner makeTuner)
    : mRandom(seed), mHardware(mRandom, randomDevices(mRandom)), mMakeTuner(std::move(makeTuner)) {}

std::vector<FakeDevice> FaultSequence::randomDevices(Random &random) {
  const std::vector<std::string> names = {"Mic", "Line", "", "Flöte ♪", "Mic"};
  std::vector<FakeDevice> devices(1 + random.below(4));
  for (std::size_t i = 0; i < devices.size(); ++i) {
    FakeDevice &device = devices[i];
    device.id = static_cast<AudioDeviceID>(i + 1);
    device.name = random.pick(names);
    device.manufacturer = random.chance(70) ? "Acme" : "";
    device.hasInput = random.chance(85);
    device.sampleRate = random.pick(kRates);
    device.volume = random.pick(kVolumes).scalar;
    device.isDataSourceSettable = random.chance(40);
    for (UInt32 source = 0; source < random.below(4); ++source)
      device.dataSources.emplace_back(100 * device.id + source, random.pick(names));
    setRandomChannels(random, device);
  }
  return devices;
}

void FaultSequence::run(int steps) {
  launch(mRandom.chance(50));
  for (int n = 1; n <= steps && !testing::Test::HasFailure(); ++n) {
    SCOPED_TRACE("step " + std::to_string(n));
    if (mRandom.chance(3)) {
      quit();
      launch(mRandom.chance(50));
    }
    mIsCalm = mRandom.chance(40);
    mHardware.setFaultRate(mIsCalm ? 0 : static_cast<unsigned>(1 + mRandom.below(40)));
    mHardware.calls.clear();
    step();
    if (mTuner->hasInputs()) {
      checkMenu();
      checkStreams();
      checkReadings();
    }
  }
  if (testing::Test::HasFailure())
    return;
  SCOPED_TRACE("after the last step");
  recover();
}

void FaultSequence::launch(bool isCalm) {
  mHardware.setFaultRate(isCalm ? 0 : 10);
  mExcused.clear();
  mIsHidden = mIsDeaf = false;
  mChosen = 0;
  const std::vector<std::string> expected = expectedTitles(mHardware.devices);
  mTuner = mMakeTuner(mHardware);
  ++mLaunches;
  if (isCalm) {
    ASSERT_EQ(mTuner->titles(), expected);
  }
  const auto refused = mHardware.takeRefused();
  if (mTuner->hasInputs())
    startedDevice(mTuner->unit().audioInputSources().front().deviceID, refused);
  else
    ASSERT_TRUE(mHardware.running().empty());
}

void FaultSequence::quit() {
  mTuner.reset();
  const auto refused = mHardware.takeRefused();
  if (!mIsHidden)
    stoppedDevice(mChosen, refused);
  if (!mExcused.contains(mChosen)) {
    EXPECT_FALSE(mHardware.isRunning(mChosen));
  }
  mHardware.forgetClients();
}

void FaultSequence::step() {
  if (mTuner->hasInputs()) {
    const std::uint64_t size = mTuner->titles().size();
    switch (mRandom.below(6)) {
      case 0:
      case 1:
        choose(static_cast<std::int64_t>(mRandom.below(size)));
        break;
      case 2:
        toggleHidden();
        break;
      case 3:
        mTuner->moveSlider(mRandom.pick(kSliderStops));
        break;
      case 4:
        for (const std::int64_t nowhere :
             {std::int64_t{-1}, std::int64_t{-7}, static_cast<std::int64_t>(size),
              std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()})
          mTuner->unit().setInputDeviceAtIndex(nowhere);
        break;
      default:
        soundAll();
        break;
    }
  }
  switch (mRandom.below(5)) {
    case 0:
      if (!mHardware.devices.empty())
        mHardware.vanish(mRandom.below(mHardware.devices.size()));
      break;
    case 1:
      if (mHardware.numberOfVanished() > 0)
        mHardware.returnOne();
      break;
    case 2:
      changeDevice();
      break;
    case 3:
      for (std::uint64_t n = mRandom.below(5); n > 0; --n)
        mHardware.notifyAtRandom();
      break;
    default:
      break;
  }
  if (mRandom.chance(60))
    mHardware.sendNotifications();
  if (mRandom.chance(60))
    mTuner->settle();
  mHardware.takeRefused();  // of nothing that changes a stream
}

void FaultSequence::choose(std::int64_t index) {
  const AudioDeviceID device =
      mTuner->unit().audioInputSources().at(static_cast<std::size_t>(index)).deviceID;
  mHardware.takeRefused();
  mTuner->choose(index);
  const auto refused = mHardware.takeRefused();
  if (device != mChosen) {
    stoppedDevice(mChosen, refused);
    startedDevice(device, refused);
    if (mIsCalm && mHardware.isThere(device)) {
      EXPECT_EQ(mTuner->unit().sampleRate(), mHardware.at(device).sampleRate);
    }
  } else if (mIsHidden) {
    startedDevice(device, refused);
  }
  if (mIsHidden)
    stoppedDevice(device, refused);
  EXPECT_EQ(mTuner->selected(), index);
}

void FaultSequence::chooseDevice(AudioDeviceID device) {
  const auto &sources = mTuner->unit().audioInputSources();
  const auto found = std::find_if(sources.begin(), sources.end(), [device](const auto &source) {
    return source.deviceID == device;
  });
  ASSERT_NE(found, sources.end());
  choose(found - sources.begin());
}

void FaultSequence::toggleHidden() {
  mHardware.takeRefused();
  mIsHidden = !mIsHidden;
  if (mIsHidden) {
    mTuner->hide();
    stoppedDevice(mChosen, mHardware.takeRefused());
  } else {
    mTuner->unhide();
    startedDevice(mChosen, mHardware.takeRefused());
  }
}

// Another program, or a hand on the device.
void FaultSequence::changeDevice() {
  if (mHardware.devices.empty())
    return;
  FakeDevice &device = mHardware.devices[mRandom.below(mHardware.devices.size())];
  switch (mRandom.below(3)) {
    case 0:
      device.sampleRate = mRandom.pick(kRates);
      break;
    case 1:
      device.volume = mRandom.pick(kVolumes).scalar;
      break;
    default:
      setRandomChannels(mRandom, device);
      break;
  }
  mHardware.tellAll(device.id);
}

void FaultSequence::soundAll() {
  for (const AudioDeviceID device : mHardware.running()) {
    const double rate = mHardware.at(device).sampleRate;
    const auto period = static_cast<std::uint64_t>(std::lround(rate / toneOf(device)));
    std::vector<float> samples(blockFrames(rate));
    for (float &sample : samples)
      sample = mFramesSounded[device]++ % period == 0 ? 0.5F : -0.5F;
    mHardware.sound(device, samples);
  }
}

double FaultSequence::toneOf(AudioDeviceID device) {
  return 150.0 + 100.0 * device;
}

void FaultSequence::startedDevice(AudioDeviceID device,
                                  const RandomFaultHardware::Refused &refused) {
  mChosen = device;
  mIsDeaf = refused.contains({StreamCall::kListen, device});
  if (refused.contains({StreamCall::kAdd, device}) ||
      refused.contains({StreamCall::kStart, device}))
    mExcused.insert(device);
  else
    mExcused.erase(device);
}

void FaultSequence::stoppedDevice(AudioDeviceID device,
                                  const RandomFaultHardware::Refused &refused) {
  if (refused.contains({StreamCall::kStop, device}) &&
      refused.contains({StreamCall::kRemove, device}))
    mExcused.insert(device);
  else
    mExcused.erase(device);
}

void FaultSequence::checkMenu() {
  const std::vector<AudioInputSource> &sources = mTuner->unit().audioInputSources();
  const std::vector<std::string> titles = mTuner->titles();
  ASSERT_EQ(titles.size(), sources.size());
  for (std::size_t i = 0; i < titles.size(); ++i)
    ASSERT_EQ(titles[i], sources[i].name);
  ASSERT_EQ(std::set<std::string>(titles.begin(), titles.end()).size(), titles.size());
  const std::int64_t selected = mTuner->selected();
  ASSERT_GE(selected, 0);
  ASSERT_LT(selected, static_cast<std::int64_t>(sources.size()));
  ASSERT_EQ(sources[static_cast<std::size_t>(selected)].deviceID, mChosen);
  ASSERT_EQ(mTuner->unit().inputDevice(), mChosen);
}

void FaultSequence::checkStreams() const {
  for (AudioDeviceID device = 1; device <= 4; ++device) {
    if (mExcused.contains(device))
      continue;
    ASSERT_EQ(mHardware.isRunning(device), device == mChosen && !mIsHidden) << "device " << device;
  }
}

// Whatever half-written values it was handed: a rate and a volume are some that a device has had.
void FaultSequence::checkReadings() {
  const double rate = mTuner->unit().sampleRate();
  ASSERT_TRUE(rate == 0.0 || std::find(kRates.begin(), kRates.end(), rate) != kRates.end()) << rate;
  const Float32 volume = mTuner->unit().inputVolume();
  const auto isVolume = [volume](const Volume &known) { return known.scalar == volume; };
  ASSERT_TRUE(std::any_of(kVolumes.begin(), kVolumes.end(), isVolume)) << volume;
  ASSERT_LE(mTuner->unit().channels(), kMostBuffers * kMostChannels);
}

// The faults are over. What the hardware refused takes what a user would do about it, and nothing
// takes more than that.
void FaultSequence::recover() {
  mHardware.setFaultRate(0);
  mHardware.returnAll();
  mHardware.sendNotifications();
  if (!mTuner->hasInputs()) {
    quit();
    for (FakeDevice &device : mHardware.devices)
      device.hasInput = true;
    launch(true);
  }
  if (mIsHidden)
    toggleHidden();
  const AudioDeviceID wanted = mChosen;
  for (const AudioDeviceID device : mHardware.running()) {
    if (device != wanted)
      chooseDevice(device);
  }
  if (mChosen != wanted)
    chooseDevice(wanted);
  if (mExcused.contains(wanted) || mIsDeaf) {
    toggleHidden();
    toggleHidden();
  }
  mHardware.tellAll(wanted);
  mHardware.sendNotifications();
  mTuner->settle();
  checkMenu();
  ASSERT_EQ(mHardware.running(), std::vector<AudioDeviceID>{wanted});
  checkVolume();
  checkIsHeard();
  quit();
}

void FaultSequence::checkVolume() {
  const FakeDevice &device = mHardware.at(mChosen);
  const auto &settable = device.isVolumeSettable;
  ASSERT_EQ(mTuner->unit().channels(), settable.size());
  if (settable.empty() || std::find(settable.begin(), settable.end(), false) != settable.end()) {
    EXPECT_FALSE(mTuner->isSliderEnabled());
    EXPECT_EQ(mTuner->volumeText(), "n/a");
    EXPECT_EQ(mTuner->sliderValue(), 100);
    return;
  }
  const Volume &volume = mRandom.pick(kVolumes);
  mHardware.at(mChosen).volume = volume.scalar;
  mHardware.tellAll(mChosen);
  mHardware.sendNotifications();
  mTuner->settle();
  EXPECT_TRUE(mTuner->isSliderEnabled());
  EXPECT_EQ(mTuner->volumeText(), std::to_string(volume.percent));
  EXPECT_EQ(mTuner->sliderValue(), volume.percent);
}

void FaultSequence::checkIsHeard() {
  const double rate = mHardware.at(mChosen).sampleRate;
  ASSERT_EQ(mTuner->unit().sampleRate(), rate);
  for (int block = 0; block < 4; ++block) {
    soundAll();
    mTuner->settle();
  }
  // The period is a whole number of samples; the way to the first peak counts as one, too.
  const double tone = rate / std::round(rate / toneOf(mChosen));
  EXPECT_NEAR(static_cast<double>(mTuner->frequency()), tone, tone * 0.02);
}

}  // namespace orvane::test
