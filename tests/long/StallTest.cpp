// The main thread away for long, while input and notification thread go on: no block is lost, none
// is out of order, and what is shown is of now right afterwards. Real threads, in real time.
// ./stall repeats it.
#include <gtest/gtest.h>

#include <poll.h>

#include <iostream>
#include <thread>

#include "audio/AUInputUnit.h"
#include "audio/RecordingHardware.h"
#include "audio/WakeUpDescriptor.h"
#include "cli/TerminalTuner.h"
#include "tests/long/LongRun.h"
#include "tests/long/TellingRecording.h"

namespace orvane::test {
namespace {

class StallTest : public testing::Test {
 protected:
  StallTest() {
    mUnit.setIOProc(input, this);
    mUnit.setListenerProc(listen, this);
    mTuner.capture().setSampleRate(TellingRecording::kRate);
    mUnit.setInputDeviceAtIndex(0);
  }
  ~StallTest() override { mUnit.stop(); }

  // Blocks that the input thread has completed.
  std::uint64_t delivered() const {
    return mDeliveredFrames.load() / TellingRecording::kBlockFrames;
  }

  // The event loop, until that many blocks have been shown or the seconds are over.
  void showUntil(std::uint64_t block, double seconds) {
    const auto start = std::chrono::steady_clock::now();
    while (mShown < block && secondsSince(start) < seconds) {
      pollfd descriptor = {mWakeUp.descriptor(), POLLIN, 0};
      ::poll(&descriptor, 1, 10);
      mWakeUp.clear();
      while (const auto reading = mTuner.takeReading(now())) {
        ASSERT_TRUE(reading->detected);
        ASSERT_EQ(*reading->detected, TellingRecording::frequencyOf(mShown)) << "block " << mShown;
        ASSERT_EQ(reading->display.frequency, *reading->detected);
        ++mShown;
      }
    }
  }

  static double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
  }

  static OSStatus input(AudioDeviceID device, const AudioTimeStamp *nowTime,
                        const AudioBufferList *list, const AudioTimeStamp *time,
                        AudioBufferList *output, const AudioTimeStamp *outputTime, void *self) {
    auto *test = static_cast<StallTest *>(self);
    const IOProcCall call{device, nowTime, list, time, output, outputTime};
    const OSStatus status = test->mTuner.capture().inputIOProc(&call);
    test->mDeliveredFrames += list->mBuffers[0].mDataByteSize / sizeof(float);
    return status;
  }
  static OSStatus listen(AudioDeviceID, UInt32, Boolean, AudioDevicePropertyID, void *self) {
    auto *test = static_cast<StallTest *>(self);
    test->mTuner.capture().updateSampleRate(test->mUnit.sampleRate());
    return noErr;
  }

  const TellingRecording mRecording;
  const Tuning mTuning{};
  WakeUpDescriptor mWakeUp;
  TerminalTuner mTuner{mTuning, &mWakeUp};
  RecordingHardware mHardware{{mRecording.file()}};
  AUInputUnit mUnit{mHardware};
  std::atomic<std::uint64_t> mDeliveredFrames{0};
  std::uint64_t mShown = 0;  // blocks
};

TEST_F(StallTest, NoBlockIsLostAndWhatIsShownIsOfNowRightAfterTheStall) {
  double longest = 0.0;
  const std::uint64_t count = longRunCount(1);
  for (std::uint64_t n = 0; n < count; ++n) {
    showUntil(mShown + 5, 30.0);
    std::this_thread::sleep_for(kStall);
    const auto end = std::chrono::steady_clock::now();
    const std::uint64_t newest = delivered();
    ASSERT_GT(newest, mShown + 30) << "the input thread went on meanwhile";
    showUntil(newest, 30.0);
    longest = std::max(longest, secondsSince(end));
    ASSERT_GE(mShown, newest);
    ASSERT_LE(longest, kCurrentWithin);
    showUntil(mShown + 5, 30.0);
    ASSERT_EQ(mTuner.queue().lostBlocks(), 0U);
    if (HasFatalFailure())
      return;
  }
  std::cout << count << " stalls of 5 s, " << mShown << " blocks in order, current at the latest "
            << longest * 1000.0 << " ms after a stall\n";
}

}  // namespace
}  // namespace orvane::test
