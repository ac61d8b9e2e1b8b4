// One random life of a tuner on hardware that breaks at random, and what must hold at every step of
// it, kept track of apart from the tuner: which device the user chose, whether the tuner is hidden,
// and which of the hardware's refusals excuse a stream that does not run, or does not end.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>

#include "tests/long/FaultedTuner.h"
#include "tests/long/RandomFaultHardware.h"

namespace orvane::test {

class FaultSequence {
 public:
  using MakeTuner = std::function<std::unique_ptr<FaultedTuner>(RandomFaultHardware &)>;

  FaultSequence(std::uint64_t seed, MakeTuner makeTuner);

  // That many steps, then the faults end, what is gone returns, and the tuner must be well.
  void run(int steps);

  std::size_t faults() const { return mHardware.faults(); }
  int launches() const { return mLaunches; }

 private:
  static std::vector<FakeDevice> randomDevices(Random &random);

  // isCalm: without faults, so that the whole list must be there.
  void launch(bool isCalm);
  void quit();
  void step();
  void choose(std::int64_t index);
  void chooseDevice(AudioDeviceID device);
  void toggleHidden();
  void changeDevice();
  void soundAll();

  // What the tuner is now supposed to have done; takes the refusals of the hardware into account.
  void startedDevice(AudioDeviceID device, const RandomFaultHardware::Refused &refused);
  void stoppedDevice(AudioDeviceID device, const RandomFaultHardware::Refused &refused);

  void checkMenu();
  void checkStreams() const;
  void checkReadings();
  void recover();
  void checkVolume();
  void checkIsHeard();
  double toneOf(AudioDeviceID device);  // hertz

  Random mRandom;
  RandomFaultHardware mHardware;
  const MakeTuner mMakeTuner;
  std::unique_ptr<FaultedTuner> mTuner;
  int mLaunches = 0;
  bool mIsCalm = false;  // no faults in this step

  AudioDeviceID mChosen = 0;
  bool mIsHidden = false;
  std::set<AudioDeviceID> mExcused;  // may run or not
  bool mIsDeaf = false;              // a listener of the chosen device was refused
  std::map<AudioDeviceID, std::uint64_t> mFramesSounded;
};

}  // namespace orvane::test
