#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <thread>

#include <QElapsedTimer>

#include "tests/app/SoundingTuner.h"
#include "tests/app/UserInput.h"

namespace orvane::test {
namespace {

FakeDevice stereoMicrophone() {
  FakeDevice device = microphone();
  device.bufferChannels = {2};
  device.isVolumeSettable = {true, true};
  return device;
}

FakeDevice slowLine() {
  FakeDevice device = microphone(8, "Line");
  device.sampleRate = 44100.0;
  device.isVolumeSettable = {};
  return device;
}

FakeDevice cardWithSources() {
  FakeDevice device = microphone(9, "Card");
  device.isDataSourceSettable = true;
  device.dataSources = {{11, "Front"}, {12, "Rear"}};
  return device;
}

Lines joined(const std::vector<Lines> &parts) {
  Lines all;
  for (const Lines &part : parts)
    all.insert(all.end(), part.begin(), part.end());
  return all;
}

class ControllerInputTest : public testing::Test {
 protected:
  ControllerInputTest() { tuner.mCapture.mIsBufferInvalid = false; }

  FakeDevice &device() { return rig.hardware.devices.front(); }
  void notify(AudioDevicePropertyID property) { rig.hardware.notify(7, 0, 1, property); }
  // The device, or another program, sets the volume.
  void changeVolume(Float32 volume) {
    device().volume = volume;
    rig.hardware.notify(7, 1, 1, kAudioDevicePropertyVolumeScalar);
  }
  // What the volume's controls show.
  std::string volume() const {
    return std::to_string(tuner.mInputVolumeSlider->intValue()) + " " +
           tuner.mInputVolumeText->stringValue().toStdString() +
           (tuner.mInputVolumeSlider->isEnabled() ? "" : " disabled");
  }
  // Waits, with the event loop running, for what another thread brings about.
  template <typename Condition>
  bool comes(const Condition &condition) {
    QElapsedTimer waiting;
    for (waiting.start(); waiting.elapsed() < 20000; QApplication::processEvents()) {
      if (condition())
        return true;
    }
    return false;
  }

  SoundingTuner rig{{stereoMicrophone(), slowLine(), cardWithSources()}};
  Controller &tuner = rig.tuner;
};

TEST_F(ControllerInputTest, AChangedRateStartsANewCaptureBuffer) {
  rig.hardware.setSampleRate(44100.0);
  EXPECT_EQ(tuner.mCapture.mSampleRate, 44100.0F);
  EXPECT_TRUE(tuner.mCapture.mIsBufferInvalid);
  EXPECT_EQ(rig.takeCalls(), Lines{"Get 7 0 in sfmt 40"});
}

TEST_F(ControllerInputTest, AnUnchangedRateLeavesTheCaptureBufferAlone) {
  for (const AudioDevicePropertyID property :
       {kAudioDevicePropertyStreamFormat, kAudioDevicePropertyStreamConfiguration,
        kAudioDevicePropertyDeviceIsAlive, kAudioDevicePropertyDataSource,
        kAudioDevicePropertyDeviceHasChanged})
    notify(property);
  changeVolume(0.25F);
  EXPECT_FALSE(tuner.mCapture.mIsBufferInvalid);
  EXPECT_EQ(tuner.mCapture.mSampleRate, 48000.0F);
}

TEST_F(ControllerInputTest, ARateThatIsNoNumberCountsAsChangedEveryTime) {
  for (int time = 0; time < 2; ++time) {
    tuner.mCapture.mIsBufferInvalid = false;
    rig.hardware.setSampleRate(std::numeric_limits<double>::quiet_NaN());
    EXPECT_TRUE(tuner.mCapture.mIsBufferInvalid);
  }
}

TEST_F(ControllerInputTest, AnyNotificationOfTheInputSideLooksAtTheRate) {
  device().sampleRate = 44100.0;
  tuner.mAUInputUnit->setStreamFormat();
  notify(kAudioDevicePropertyDeviceIsAlive);
  EXPECT_EQ(tuner.mCapture.mSampleRate, 44100.0F);
  EXPECT_TRUE(tuner.mCapture.mIsBufferInvalid);
}

TEST_F(ControllerInputTest, ANotificationOfTheOutputSideChangesNothing) {
  device().sampleRate = 44100.0;
  tuner.mAUInputUnit->setStreamFormat();
  const PropertyChange change{7, 0, 0, kAudioDevicePropertyStreamFormat};
  EXPECT_EQ(tuner.listenerProc(&change), noErr);
  EXPECT_EQ(tuner.mCapture.mSampleRate, 48000.0F);
  EXPECT_FALSE(tuner.mCapture.mIsBufferInvalid);
}

TEST_F(ControllerInputTest, ChoosingAnotherDeviceStopsTheOldOneFirst) {
  choose(*tuner.mInputDevicePopUpButton, 1);
  EXPECT_EQ(rig.takeCalls(),
            joined({stopCalls("7"),
                    {"Get 8 0 in sfmt 40", "Info 8 0 in slay size?", "Get 8 0 in slay 24",
                     "Info 8 1 in volm writable?", "Get 8 1 in volm 4"},
                    startCalls("8")}));
  EXPECT_EQ(tuner.mCapture.mSampleRate, 44100.0F);
  EXPECT_TRUE(tuner.mCapture.mIsBufferInvalid);
  EXPECT_EQ(volume(), "100 n/a disabled");
}

TEST_F(ControllerInputTest, TheOldDeviceIsNoLongerListenedTo) {
  choose(*tuner.mInputDevicePopUpButton, 1);
  rig.takeCalls();
  changeVolume(0.25F);
  rig.hardware.setSampleRate(96000.0);
  EXPECT_TRUE(rig.takeCalls().empty());
  EXPECT_EQ(tuner.mCapture.mSampleRate, 44100.0F);
}

TEST_F(ControllerInputTest, ChoosingTheSameDeviceAgainOnlyStartsANewCaptureBuffer) {
  choose(*tuner.mInputDevicePopUpButton, 0);
  EXPECT_TRUE(rig.takeCalls().empty());
  EXPECT_TRUE(tuner.mCapture.mIsBufferInvalid);
  EXPECT_EQ(tuner.mCapture.mSampleRate, 48000.0F);
}

TEST_F(ControllerInputTest, ChoosingAnotherSourceOfTheDeviceOnlyWritesTheSource) {
  ASSERT_EQ(tuner.mInputDevicePopUpButton->itemTitleAtIndex(2), "Acme : Front");
  ASSERT_EQ(tuner.mInputDevicePopUpButton->itemTitleAtIndex(3), "Acme : Rear");
  choose(*tuner.mInputDevicePopUpButton, 2);
  Lines calls = rig.takeCalls();
  ASSERT_FALSE(calls.empty());
  EXPECT_EQ(calls.front(), "Stop 7 ?");
  EXPECT_EQ(calls.back(), "Set 9 0 in ssrc 4 11");
  pressKey(*tuner.mInputDevicePopUpButton, Qt::Key_Down);
  EXPECT_EQ(rig.takeCalls(), Lines{"Set 9 0 in ssrc 4 12"});
}

TEST_F(ControllerInputTest, ShowsTheVolumeCutToAWholePercentage) {
  EXPECT_EQ(volume(), "50 50");
  for (const auto &[scalar, shown] :
       {std::pair(0.499F, "49 49"), std::pair(0.999F, "99 99"), std::pair(1.0F, "100 100"),
        std::pair(0.0F, "0 0"), std::pair(0.37F, "37 37")}) {
    changeVolume(scalar);
    QApplication::processEvents();
    EXPECT_EQ(volume(), shown) << scalar;
  }
}

TEST_F(ControllerInputTest, ShowsTheVolumeOnlyWhenTheEventLoopRuns) {
  changeVolume(0.8F);
  EXPECT_EQ(volume(), "50 50");
  // Channel 1 is read, after every channel was asked whether it can be set; nothing is written.
  EXPECT_EQ(rig.hardware.takeCalls(), (Lines{"Info 7 1 in volm writable?",
                                             "Info 7 2 in volm writable?", "Get 7 1 in volm 4"}));
  QApplication::processEvents();
  EXPECT_EQ(volume(), "80 80");
  EXPECT_TRUE(rig.takeCalls().empty());
}

TEST_F(ControllerInputTest, OneChannelThatCannotBeSetDisablesTheVolume) {
  device().isVolumeSettable = {true, false};
  notify(kAudioDevicePropertyDeviceHasChanged);
  QApplication::processEvents();
  EXPECT_EQ(volume(), "100 n/a disabled");
  rig.takeCalls();
  tuner.mInputVolumeSlider->setValue(37);
  EXPECT_TRUE(rig.takeCalls().empty());

  device().isVolumeSettable = {true, true};
  notify(kAudioDevicePropertyDataSource);
  QApplication::processEvents();
  EXPECT_EQ(volume(), "50 50");
}

TEST_F(ControllerInputTest, AStepOfTheSliderWritesEveryChannelInOrder) {
  changeVolume(0.38F);
  rig.takeCalls();
  pressKey(*tuner.mInputVolumeSlider, Qt::Key_Left);
  EXPECT_EQ(volume(), "37 37");
  // 1052602532 is 0x3EBD70A4, 0.37 in single precision.
  EXPECT_EQ(rig.takeCalls(),
            (Lines{"Set 7 1 in volm 4 1052602532", "Set 7 2 in volm 4 1052602532"}));
  pressKey(*tuner.mInputVolumeSlider, Qt::Key_Home);
  EXPECT_EQ(rig.takeCalls(), (Lines{"Set 7 1 in volm 4 0", "Set 7 2 in volm 4 0"}));
  pressKey(*tuner.mInputVolumeSlider, Qt::Key_End);
  EXPECT_EQ(rig.takeCalls(),
            (Lines{"Set 7 1 in volm 4 1065353216", "Set 7 2 in volm 4 1065353216"}));
}

TEST_F(ControllerInputTest, ADragOfTheSliderWritesEveryStopOfTheWay) {
  QWidget &slider = *tuner.mInputVolumeSlider;
  const double middle = slider.height() / 2.0;
  sendMouse(slider, QEvent::MouseButtonPress, {slider.width() / 2.0, middle});
  EXPECT_TRUE(rig.takeCalls().empty());
  int before = 50;
  for (int right = 1; right <= 5; ++right) {
    sendMouse(slider, QEvent::MouseMove, {slider.width() / 2.0 + 6.0 * right, middle});
    const int now = tuner.mInputVolumeSlider->intValue();
    EXPECT_GT(now, std::exchange(before, now));
    EXPECT_EQ(tuner.mInputVolumeText->intValue(), now);
    const Lines calls = rig.takeCalls();
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_TRUE(calls[0].starts_with("Set 7 1 in volm 4 "));
    EXPECT_TRUE(calls[1].starts_with("Set 7 2 in volm 4 "));
    const auto scalarOf = [](const std::string &call) {
      const std::string bits = call.substr(call.rfind(' ') + 1);
      return std::bit_cast<float>(static_cast<std::uint32_t>(std::stoul(bits)));
    };
    EXPECT_FLOAT_EQ(scalarOf(calls[0]) * 100.0F, static_cast<float>(now));
    EXPECT_EQ(scalarOf(calls[1]), scalarOf(calls[0]));
  }
  sendMouse(slider, QEvent::MouseButtonRelease, {slider.width() / 2.0 + 30.0, middle});
  EXPECT_TRUE(rig.takeCalls().empty());
}

TEST_F(ControllerInputTest, AValueThatWasPassedOnLastIsNotPassedOnAgain) {
  tuner.mInputVolumeSlider->setValue(37);
  rig.takeCalls();
  changeVolume(0.8F);
  QApplication::processEvents();
  EXPECT_EQ(volume(), "80 80");
  rig.takeCalls();
  tuner.mInputVolumeSlider->setValue(37);
  EXPECT_EQ(volume(), "37 80");
  EXPECT_TRUE(rig.takeCalls().empty());
}

TEST_F(ControllerInputTest, TheVolumeThatTheDeviceHasAlreadyIsNotWritten) {
  changeVolume(0.63F);
  QApplication::processEvents();
  rig.takeCalls();
  tuner.inputVolumeSliderChanged();
  EXPECT_EQ(volume(), "63 63");
  EXPECT_TRUE(rig.takeCalls().empty());
}

TEST_F(ControllerInputTest, ANotificationComesFromAnotherThreadWhileTheEventLoopRuns) {
  std::thread notifications([this] { changeVolume(0.8F); });
  EXPECT_TRUE(comes([this] { return volume() == "80 80"; }));
  notifications.join();
}

TEST_F(ControllerInputTest, SoundAndNotificationsComeFromThreadsOfTheirOwn) {
  std::thread notifications([this] {
    for (int time = 0; time < 200; ++time) {
      rig.hardware.setSampleRate(time % 2 == 0 ? 44100.0 : 48000.0);
      changeVolume(static_cast<Float32>(time) / 256.0F);
    }
    changeVolume(0.25F);
  });
  std::thread sound([this] {
    for (int block = 0; block < 200; ++block)
      rig.hardware.sound({{2, std::vector<float>(1024, 0.25F)}});
  });
  EXPECT_TRUE(comes([this] { return volume() == "25 25"; }));
  notifications.join();
  sound.join();
  QApplication::processEvents();
  EXPECT_EQ(tuner.mCapture.mSampleRate, 48000.0F);

  rig.hardware.setSampleRate(44100.0);
  rig.play(pulses(44100.0, 100));
  EXPECT_EQ(tuner.mFrequencyText->stringValue(), "440.5Hz");  // half way to 441
}

}  // namespace
}  // namespace orvane::test
