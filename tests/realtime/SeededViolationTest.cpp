// What the watch over the input procedure is worth: procedures that do one thing too many, on a
// real backend's thread.
#include <gtest/gtest.h>
#include <sndfile.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <new>
#include <thread>

#include "audio/RecordingHardware.h"
#include "audio/WakeUpDescriptor.h"
#include "tests/TemporaryFolder.h"
#include "tests/audio/SoundFileMaker.h"
#include "tests/realtime/GuardedHardware.h"
#include "tests/realtime/RealTimeScope.h"

namespace orvane::test {
namespace {

using Fault = void (*)();

struct FaultyTuner {
  WakeUpDescriptor wakeUp;
  BlockQueue queue{&wakeUp};
  CaptureBuffer capture{queue};
  Fault fault = nullptr;
  std::atomic<int> calls{0};
};

OSStatus faultyProc(AudioDeviceID device, const AudioTimeStamp *now, const AudioBufferList *input,
                    const AudioTimeStamp *inputTime, AudioBufferList *output,
                    const AudioTimeStamp *outputTime, void *clientData) {
  auto *tuner = static_cast<FaultyTuner *>(clientData);
  if (tuner->calls.fetch_add(1) == 3)
    tuner->fault();
  const IOProcCall call{device, now, input, inputTime, output, outputTime};
  return tuner->capture.inputIOProc(&call);
}

// What the watch finds when the fourth call of the procedure does that.
ProcedureWatch::Totals watchedWith(Fault fault) {
  const TemporaryFolder folder;
  const auto file =
      writeTestSound(folder / "a.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 48000, 1, 48000);
  ProcedureWatch watch;
  FaultyTuner tuner;
  tuner.fault = fault;
  tuner.capture.setSampleRate(48000.0);
  watch.setCapture(&tuner.capture, tuner.wakeUp.descriptor());
  GuardedHardware hardware(
      std::make_unique<RecordingHardware>(std::vector<std::filesystem::path>{file}), watch);
  hardware.AudioDeviceAddIOProc(1, faultyProc, &tuner);
  hardware.AudioDeviceStart(1, faultyProc);
  while (tuner.calls < 8)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  hardware.AudioDeviceStop(1, faultyProc);
  return watch.totals();
}

void allocate() {
  void *volatile memory = std::malloc(24);
  std::free(memory);
}

void lock() {
  static std::mutex mutex;
  const std::lock_guard held(mutex);
}

void sleepShortly() {
  usleep(1);
}

void callTheSystem() {
  syscall(SYS_getppid);
}

// One that the allow-list would let pass, were it not for its place and its number.
void copyOnceMore() {
  static std::unique_ptr<float[]> kept;
  constexpr std::size_t kFramesOfABlock = 2618;  // 54.5 ms at 48 kHz
  kept.reset(new (std::nothrow) float[kFramesOfABlock]);
}

class SeededViolationTest : public testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  static void expectCaught(Fault fault, const std::string &found, const std::string &lastWords) {
    if (RealTimeScope::endsTheProgram()) {
      // A program that ends so leaves its folders behind.
      const TemporaryFolder left;
      const std::string before = std::filesystem::temp_directory_path();
      setenv("TMPDIR", (left / "").c_str(), 1);
      EXPECT_DEATH(watchedWith(fault), lastWords);
      setenv("TMPDIR", before.c_str(), 1);
      return;
    }
    const ProcedureWatch::Totals totals = watchedWith(fault);
    EXPECT_GT(totals.violations, 0U);
    ASSERT_FALSE(totals.firstViolations.empty());
    EXPECT_EQ(totals.firstViolations.front(), found);
  }
};

TEST_F(SeededViolationTest, AProcedureWithoutFaultsHasNone) {
  const ProcedureWatch::Totals totals = watchedWith([] {});
  EXPECT_EQ(totals.violations, 0U) << testing::PrintToString(totals.firstViolations);
  EXPECT_EQ(totals.buffers, 1U);
  // Eight calls of 480 frames, and a block of 2618.
  EXPECT_GE(totals.blocks, 1U);
}

TEST_F(SeededViolationTest, AnAllocationIsSeen) {
  expectCaught(allocate, "allocation of 24 bytes", "unsafe function `malloc`");
}

TEST_F(SeededViolationTest, ALockIsSeen) {
  expectCaught(lock, "lock", "unsafe function `pthread_mutex_lock`");
}

TEST_F(SeededViolationTest, ASleepIsSeen) {
  if (!RealTimeScope::endsTheProgram() && !RealTimeScope::sees(RealTimeEvent::Kind::kSystemCall))
    GTEST_SKIP() << "this system does not hand system calls over";
  expectCaught(sleepShortly, "system call " + std::to_string(SYS_clock_nanosleep) + "(0, …)",
               "unsafe function `usleep`");
}

TEST_F(SeededViolationTest, ASystemCallIsSeen) {
  if (!RealTimeScope::sees(RealTimeEvent::Kind::kSystemCall))
    GTEST_SKIP() << "this program does not see system calls";
  const ProcedureWatch::Totals totals = watchedWith(callTheSystem);
  ASSERT_EQ(totals.violations, 1U);
  EXPECT_TRUE(
      totals.firstViolations.front().starts_with("system call " + std::to_string(SYS_getppid)))
      << totals.firstViolations.front();
}

TEST_F(SeededViolationTest, ASecondCopyIsSeen) {
  const ProcedureWatch::Totals totals = watchedWith(copyOnceMore);
  ASSERT_GT(totals.violations, 0U);
}

}  // namespace
}  // namespace orvane::test
