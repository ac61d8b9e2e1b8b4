#include "audio/RecordingHardware.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "audio/AUInputUnit.h"
#include "tests/audio/RecordingRig.h"
#include "tests/audio/SoundFileMaker.h"

namespace orvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr int kFloatWave = SF_FORMAT_WAV | SF_FORMAT_FLOAT;

OSStatus listenToo(AudioDeviceID, const AudioTimeStamp *, const AudioBufferList *,
                   const AudioTimeStamp *, AudioBufferList *, const AudioTimeStamp *, void *) {
  return noErr;
}

OSStatus notice(AudioDeviceID, UInt32, Boolean, AudioDevicePropertyID inPropertyID,
                void *inClientData) {
  auto *ear = static_cast<Ear *>(inClientData);
  const std::lock_guard lock(ear->mutex);
  ear->notifications.push_back(inPropertyID);
  ear->changed.notify_all();
  return noErr;
}

void startListening(RecordingHardware &hardware, AudioDeviceID device, Ear &ear) {
  EXPECT_EQ(hardware.AudioDeviceAddIOProc(device, listen, &ear), noErr);
  EXPECT_EQ(hardware.AudioDeviceAddPropertyListener(device, 0, 1, kAudioDevicePropertyDeviceIsAlive,
                                                    notice, &ear),
            noErr);
  EXPECT_EQ(hardware.AudioDeviceStart(device, listen), noErr);
}

UInt32 isAlive(RecordingHardware &hardware, AudioDeviceID device) {
  UInt32 alive = 99;
  UInt32 size = sizeof(alive);
  EXPECT_EQ(hardware.AudioDeviceGetProperty(device, 0, 1, kAudioDevicePropertyDeviceIsAlive, &size,
                                            &alive),
            noErr);
  return alive;
}

TEST(RecordingHardware, FilesAreListedInTheOrderGivenUnderTheirNames) {
  const TemporaryFolder folder;
  const auto second = writeTestSound(folder / "b.wav", kFloatWave, 44100, 2, 10);
  const auto first =
      writeTestSound(folder / "a note.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 48000, 1, 10);
  RecordingHardware hardware({second, first, second});
  EXPECT_TRUE(hardware.refusals().empty());
  AUInputUnit unit(hardware);
  const auto &sources = unit.audioInputSources();
  ASSERT_EQ(sources.size(), 3U);
  EXPECT_EQ(sources[0].name, "Recording : b.wav");
  EXPECT_EQ(sources[1].name, "Recording : a note.flac");
  EXPECT_EQ(sources[2].name, "Recording : b.wav (2)");
  for (UInt32 i = 0; i < 3; ++i) {
    EXPECT_EQ(sources[i].deviceID, i + 1);
    EXPECT_FALSE(sources[i].dataSource.has_value());
  }
}

TEST(RecordingHardware, FilesThatCannotBePlayedAreLeftOutAndTold) {
  const TemporaryFolder folder;
  const auto good = writeTestSound(folder / "good.wav", kFloatWave, 44100, 2, 10);
  const auto text = writeBytes(folder / "text.wav", "no sound\n");
  RecordingHardware hardware({folder / "missing.wav", good, text});
  ASSERT_EQ(hardware.refusals().size(), 2U);
  EXPECT_EQ(hardware.refusals()[0].file, folder / "missing.wav");
  EXPECT_EQ(hardware.refusals()[0].reason, "no such file");
  EXPECT_EQ(hardware.refusals()[1].file, text);
  EXPECT_EQ(hardware.refusals()[1].reason, "is not a sound file");
  AUInputUnit unit(hardware);
  ASSERT_EQ(unit.audioInputSources().size(), 1U);
  EXPECT_EQ(unit.audioInputSources()[0].deviceID, 1U);
}

TEST(RecordingHardware, WithoutFilesThereAreNoDevices) {
  RecordingHardware hardware({});
  EXPECT_TRUE(AUInputUnit(hardware).audioInputSources().empty());
}

TEST(RecordingHardware, ADeviceHasTheRateAndChannelsOfItsFile) {
  const TemporaryFolder folder;
  RecordingHardware hardware({writeTestSound(folder / "a.wav", kFloatWave, 44100, 2, 10)});
  AUInputUnit unit(hardware);
  unit.setIOProc(listenToo, nullptr);
  unit.setInputDeviceAtIndex(0);
  EXPECT_EQ(unit.sampleRate(), 44100.0);
  EXPECT_EQ(unit.channels(), 2U);
  EXPECT_FALSE(unit.isVolumeWritable());
  unit.stop();
}

TEST(RecordingHardware, PlaysTenMillisecondsACallbackAtTheFilesPace) {
  const TemporaryFolder folder;
  ManualClock clock;
  RecordingHardware hardware({writeTestSound(folder / "a.wav", kFloatWave, 8000, 2, 400)}, &clock);
  Ear ear;
  startListening(hardware, 1, ear);
  EXPECT_EQ(clock.nextDue(), milliseconds(5010));
  EXPECT_TRUE(ear.heard().empty());
  clock.step();
  EXPECT_EQ(clock.nextDue(), milliseconds(5020));
  clock.step();
  const std::vector<Callback> heard = ear.heard();
  ASSERT_EQ(heard.size(), 2U);
  EXPECT_EQ(heard[0].device, 1U);
  EXPECT_EQ(heard[0].channels, 2U);
  EXPECT_EQ(heard[0].sampleTime, 1.0);
  ASSERT_EQ(heard[0].samples.size(), 160U);
  EXPECT_EQ(heard[0].samples[0], 0.001F);
  EXPECT_EQ(heard[0].samples[1], -0.001F);
  EXPECT_EQ(heard[0].samples[158], 0.080F);
  EXPECT_EQ(heard[1].sampleTime, 81.0);
  EXPECT_EQ(heard[1].samples[0], 0.081F);
  EXPECT_EQ(hardware.AudioDeviceStop(1, listen), noErr);
}

TEST(RecordingHardware, PlaysFromTheStartAgainWhileTheSampleClockGoesOn) {
  const TemporaryFolder folder;
  ManualClock clock;
  RecordingHardware hardware({writeTestSound(folder / "a.wav", kFloatWave, 8000, 1, 100)}, &clock);
  Ear ear;
  startListening(hardware, 1, ear);
  clock.step();
  clock.step();
  clock.step();
  const std::vector<Callback> heard = ear.heard();
  ASSERT_EQ(heard.size(), 3U);
  EXPECT_EQ(heard[1].sampleTime, 81.0);
  ASSERT_EQ(heard[1].samples.size(), 80U);
  EXPECT_EQ(heard[1].samples[19], 0.100F);
  EXPECT_EQ(heard[1].samples[20], 0.001F);
  EXPECT_EQ(heard[2].sampleTime, 161.0);
  EXPECT_EQ(heard[2].samples[0], 0.061F);
}

TEST(RecordingHardware, AFileOfOneFrameFillsItsCallbacks) {
  const TemporaryFolder folder;
  ManualClock clock;
  RecordingHardware hardware({writeTestSound(folder / "a.wav", kFloatWave, 8000, 1, 1)}, &clock);
  Ear ear;
  startListening(hardware, 1, ear);
  clock.step();
  EXPECT_EQ(ear.heard()[0].samples, std::vector<float>(80, 0.001F));
}

TEST(RecordingHardware, AtRatesBelowOneHundredACallbackHasOneFrame) {
  const TemporaryFolder folder;
  ManualClock clock;
  RecordingHardware hardware({writeTestSound(folder / "a.wav", kFloatWave, 20, 1, 10)}, &clock);
  Ear ear;
  startListening(hardware, 1, ear);
  EXPECT_EQ(clock.nextDue(), milliseconds(5050));
  clock.step();
  EXPECT_EQ(ear.heard()[0].samples.size(), 1U);
}

TEST(RecordingHardware, ALongStallIsLetGoInsteadOfMadeUp) {
  const TemporaryFolder folder;
  ManualClock clock;
  RecordingHardware hardware({writeTestSound(folder / "a.wav", kFloatWave, 8000, 1, 4000)}, &clock);
  Ear ear;
  startListening(hardware, 1, ear);
  EXPECT_EQ(clock.nextDue(), milliseconds(5010));
  clock.moveTo(milliseconds(5261));
  EXPECT_EQ(clock.nextDue(), milliseconds(5271));
  EXPECT_EQ(ear.heard().size(), 1U);
  // No sample is lost over it.
  clock.step();
  EXPECT_EQ(ear.heard()[1].sampleTime, 81.0);
  EXPECT_EQ(ear.heard()[1].samples[0], 0.081F);
}

TEST(RecordingHardware, AShortStallIsMadeUp) {
  const TemporaryFolder folder;
  ManualClock clock;
  RecordingHardware hardware({writeTestSound(folder / "a.wav", kFloatWave, 8000, 1, 4000)}, &clock);
  Ear ear;
  startListening(hardware, 1, ear);
  EXPECT_EQ(clock.nextDue(), milliseconds(5010));
  clock.moveTo(milliseconds(5260));
  EXPECT_EQ(clock.nextDue(), milliseconds(5270));
  EXPECT_EQ(ear.heard().size(), 26U);
}

TEST(RecordingHardware, StopEndsAWaitAndNothingIsPlayedAfterIt) {
  const TemporaryFolder folder;
  ManualClock clock;
  RecordingHardware hardware({writeTestSound(folder / "a.wav", kFloatWave, 8000, 1, 400)}, &clock);
  Ear ear;
  startListening(hardware, 1, ear);
  clock.step();
  EXPECT_EQ(hardware.AudioDeviceStop(1, listen), noErr);
  clock.moveTo(milliseconds(9000));
  EXPECT_EQ(ear.heard().size(), 1U);
  EXPECT_EQ(hardware.AudioDeviceStop(1, listen), noErr);
  EXPECT_EQ(hardware.AudioDeviceRemoveIOProc(1, listen), noErr);
}

TEST(RecordingHardware, StartingAgainPlaysFromTheFirstFrame) {
  const TemporaryFolder folder;
  ManualClock clock;
  RecordingHardware hardware({writeTestSound(folder / "a.wav", kFloatWave, 8000, 1, 400)}, &clock);
  Ear ear;
  startListening(hardware, 1, ear);
  clock.step();
  clock.step();
  hardware.AudioDeviceStop(1, listen);
  hardware.AudioDeviceStart(1, listen);
  clock.step();
  ASSERT_EQ(ear.heard().size(), 3U);
  EXPECT_EQ(ear.heard()[2].sampleTime, 1.0);
  EXPECT_EQ(ear.heard()[2].samples[0], 0.001F);
}

TEST(RecordingHardware, RemovingAProcedureStopsIt) {
  const TemporaryFolder folder;
  ManualClock clock;
  RecordingHardware hardware({writeTestSound(folder / "a.wav", kFloatWave, 8000, 1, 400)}, &clock);
  Ear ear;
  startListening(hardware, 1, ear);
  clock.nextDue();
  EXPECT_EQ(hardware.AudioDeviceRemoveIOProc(1, listen), noErr);
  EXPECT_EQ(hardware.AudioDeviceStart(1, listen), kAudioHardwareIllegalOperationError);
  clock.moveTo(milliseconds(9000));
  EXPECT_TRUE(ear.heard().empty());
}

TEST(RecordingHardware, TwoFilesPlayAtOnceEachAtItsPace) {
  const TemporaryFolder folder;
  ManualClock clock;
  RecordingHardware hardware({writeTestSound(folder / "a.wav", kFloatWave, 8000, 1, 400),
                              writeTestSound(folder / "b.wav", kFloatWave, 20, 1, 400)},
                             &clock);
  Ear fast;
  Ear slow;
  startListening(hardware, 1, fast);
  startListening(hardware, 2, slow);
  EXPECT_EQ(clock.nextDue(2), milliseconds(5010));
  clock.moveTo(milliseconds(5100));
  EXPECT_EQ(clock.nextDue(2), milliseconds(5110));
  EXPECT_EQ(fast.heard().size(), 10U);
  ASSERT_EQ(slow.heard().size(), 2U);
  EXPECT_EQ(slow.heard()[1].device, 2U);
}

TEST(RecordingHardware, AFileWithoutAFrameIsReportedDead) {
  const TemporaryFolder folder;
  ManualClock clock;
  RecordingHardware hardware({writeTestSound(folder / "a.wav", kFloatWave, 8000, 1, 0)}, &clock);
  EXPECT_EQ(isAlive(hardware, 1), 1U);
  Ear ear;
  startListening(hardware, 1, ear);
  ear.waitForNotifications(1);
  EXPECT_EQ(ear.notifications[0], kAudioDevicePropertyDeviceIsAlive);
  EXPECT_EQ(isAlive(hardware, 1), 0U);
  EXPECT_TRUE(ear.heard().empty());
  // Stopping and starting tries again, and tells again.
  EXPECT_EQ(hardware.AudioDeviceStop(1, listen), noErr);
  EXPECT_EQ(hardware.AudioDeviceStart(1, listen), noErr);
  ear.waitForNotifications(3);
  EXPECT_EQ(hardware.AudioDeviceStop(1, listen), noErr);
  EXPECT_EQ(isAlive(hardware, 1), 0U);
}

TEST(RecordingHardware, AFileThatIsEmptiedWhileItPlaysIsReportedDead) {
  const TemporaryFolder folder;
  ManualClock clock;
  const auto path = writeTestSound(folder / "a.wav", kFloatWave, 8000, 1, 60000);
  RecordingHardware hardware({path}, &clock);
  Ear ear;
  startListening(hardware, 1, ear);
  clock.nextDue();
  std::filesystem::resize_file(path, 0);
  // What was read ahead is still played.
  for (int i = 1; ear.numberOfNotifications() == 0; ++i) {
    clock.moveTo(milliseconds(5000 + 10 * i));
    std::this_thread::yield();
  }
  EXPECT_EQ(isAlive(hardware, 1), 0U);
}

TEST(RecordingHardware, RefusesWhatItDoesNotHave) {
  const TemporaryFolder folder;
  ManualClock clock;
  RecordingHardware hardware({writeTestSound(folder / "a.wav", kFloatWave, 8000, 1, 400)}, &clock);
  Ear ear;
  for (const AudioDeviceID device : {0U, 2U, 0xFFFFFFFFU}) {
    EXPECT_EQ(hardware.AudioDeviceAddIOProc(device, listen, &ear), kAudioHardwareBadDeviceError);
    EXPECT_EQ(hardware.AudioDeviceStart(device, listen), kAudioHardwareBadDeviceError);
    EXPECT_EQ(hardware.AudioDeviceStop(device, listen), kAudioHardwareBadDeviceError);
    EXPECT_EQ(hardware.AudioDeviceRemoveIOProc(device, listen), kAudioHardwareBadDeviceError);
  }
  EXPECT_EQ(hardware.AudioDeviceStart(1, listen), kAudioHardwareIllegalOperationError);
  EXPECT_EQ(hardware.AudioDeviceStop(1, listen), kAudioHardwareIllegalOperationError);
  EXPECT_EQ(hardware.AudioDeviceRemoveIOProc(1, listen), kAudioHardwareIllegalOperationError);
  EXPECT_EQ(hardware.AudioDeviceAddIOProc(1, nullptr, &ear), kAudioHardwareIllegalOperationError);
  startListening(hardware, 1, ear);
  EXPECT_EQ(hardware.AudioDeviceAddIOProc(1, listen, &ear), kAudioHardwareIllegalOperationError);
  EXPECT_EQ(hardware.AudioDeviceAddIOProc(1, listenToo, &ear), noErr);
  EXPECT_EQ(hardware.AudioDeviceStart(1, listenToo), kAudioHardwareIllegalOperationError);
  EXPECT_EQ(hardware.AudioDeviceStart(1, listen), noErr);

  const Float32 volume = 0.5F;
  EXPECT_NE(hardware.AudioDeviceSetProperty(1, nullptr, 1, 1, kAudioDevicePropertyVolumeScalar,
                                            sizeof(volume), &volume),
            noErr);
  const UInt32 source = 1;
  EXPECT_NE(hardware.AudioDeviceSetProperty(1, nullptr, 0, 1, kAudioDevicePropertyDataSource,
                                            sizeof(source), &source),
            noErr);
  EXPECT_EQ(hardware.AudioDeviceRemovePropertyListener(1, 0, 1, kAudioDevicePropertyDeviceIsAlive,
                                                       notice),
            noErr);
  EXPECT_EQ(hardware.AudioDeviceRemovePropertyListener(1, 0, 1, kAudioDevicePropertyDeviceIsAlive,
                                                       notice),
            kAudioHardwareIllegalOperationError);
}

TEST(RecordingHardware, ADeviceOfTheUnitIsPlayedThroughItsProcedure) {
  const TemporaryFolder folder;
  ManualClock clock;
  RecordingHardware hardware({writeTestSound(folder / "a.wav", kFloatWave, 8000, 1, 400),
                              writeTestSound(folder / "b.wav", kFloatWave, 16000, 1, 400)},
                             &clock);
  AUInputUnit unit(hardware);
  Ear ear;
  unit.setIOProc(listen, &ear);
  unit.setInputDeviceAtIndex(0);
  clock.step();
  unit.setInputDeviceAtIndex(1);
  clock.step();
  unit.stop();
  const std::vector<Callback> heard = ear.heard();
  ASSERT_EQ(heard.size(), 2U);
  EXPECT_EQ(heard[0].device, 1U);
  EXPECT_EQ(heard[1].device, 2U);
  EXPECT_EQ(heard[1].samples.size(), 160U);
  EXPECT_EQ(unit.sampleRate(), 16000.0);
}

TEST(RecordingHardware, GoingAwayStopsWhatPlays) {
  const TemporaryFolder folder;
  ManualClock clock;
  Ear ear;
  {
    RecordingHardware hardware({writeTestSound(folder / "a.wav", kFloatWave, 8000, 1, 400)},
                               &clock);
    startListening(hardware, 1, ear);
    clock.step();
  }
  clock.moveTo(milliseconds(9000));
  EXPECT_EQ(ear.heard().size(), 1U);
}

TEST(SteadyPlaybackClock, AStopEndsALongWait) {
  SteadyPlaybackClock clock;
  std::stop_source stop;
  bool came = true;
  std::thread waiter(
      [&] { came = clock.waitUntil(clock.now() + std::chrono::hours(24), stop.get_token()); });
  stop.request_stop();
  waiter.join();
  EXPECT_FALSE(came);
}

TEST(SteadyPlaybackClock, AWaitEndsNoEarlierThanItsTime) {
  SteadyPlaybackClock clock;
  const std::stop_source stop;
  const nanoseconds due = clock.now() + milliseconds(3);
  EXPECT_TRUE(clock.waitUntil(due, stop.get_token()));
  EXPECT_GE(clock.now(), due);
  EXPECT_TRUE(clock.waitUntil(due, stop.get_token()));
}

}  // namespace
}  // namespace orvane
