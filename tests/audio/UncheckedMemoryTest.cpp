#include "audio/UncheckedMemory.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>

#include "audio/BackgroundThread.h"
#include "tests/Sanitized.h"

namespace orvane::test {
namespace {

// A field of what is not there.
constexpr std::uintptr_t kField = 16;
// No memory either, but no field of any.
constexpr std::uintptr_t kElsewhere = 0x7000000000;

void use(std::uintptr_t address) {
  *reinterpret_cast<volatile char *>(address) = 1;
}

// More than there is anywhere; fails with the allocator's own error.
void allocateTooMuch() {
  volatile std::size_t size = PTRDIFF_MAX - 4096;
  EXPECT_EQ(std::malloc(size), nullptr);
}

// Sanitizers have an allocator, faults, and an errno within handlers of their own.
class UncheckedMemory : public testing::Test {
 protected:
  void SetUp() override {
    if (kIsSanitized)
      GTEST_SKIP() << "a sanitizer tells of faults in its own way";
  }
};

TEST_F(UncheckedMemory, UsedWithoutALookEndsTheProgramWithALineThatSaysWhy) {
  const auto useIt = [] {
    reportUncheckedMemory("tuner");
    errno = 0;
    allocateTooMuch();
    use(kField);
  };
  EXPECT_EXIT(useIt(), testing::ExitedWithCode(1), "^tuner: memory: not enough\n$");
}

constexpr const char *kTold = "^tuner: used memory that is not there\n$";

TEST_F(UncheckedMemory, OtherFaultsAreToldOfAndGoTheirWay) {
  const auto fault = [](int error, std::uintptr_t address) {
    reportUncheckedMemory("tuner");
    errno = error;
    use(address);
  };
  const auto bySignal = testing::KilledBySignal(SIGSEGV);
  EXPECT_EXIT(fault(0, kField), bySignal, kTold) << "there was memory";
  EXPECT_EXIT(fault(ENOMEM, kElsewhere), bySignal, kTold) << "no field of what is not there";
#ifdef __x86_64__
  // No address at all, such as freed memory is often filled with; the system tells none then.
  EXPECT_EXIT(fault(ENOMEM, 0x8000000000000000), bySignal, kTold) << "of no address";
#endif
  const auto callNothing = [] {
    reportUncheckedMemory("tuner");
    void (*volatile nothing)() = nullptr;
    errno = 0;
    nothing();
  };
  EXPECT_EXIT(callNothing(), bySignal, kTold) << "where there is no code";
  const auto send = [] {
    reportUncheckedMemory("tuner");
    errno = ENOMEM;
    raise(SIGSEGV);
  };
  EXPECT_EXIT(send(), bySignal, "^$") << "sent by somebody";
}

TEST_F(UncheckedMemory, FaultsOfBackgroundThreadsAreToldOfToo) {
  const auto fault = [] {
    reportUncheckedMemory("tuner");
    startBackgroundThread([] {
      errno = 0;
      use(kElsewhere);
    }).join();
  };
  EXPECT_EXIT(fault(), testing::KilledBySignal(SIGSEGV), kTold);
}

TEST_F(UncheckedMemory, TheLibraryThatUsedWhatIsNotThereIsNamed) {
  const auto useInALibrary = [] {
    reportUncheckedMemory("tuner");
    volatile std::uintptr_t address = kElsewhere;
    std::qsort(reinterpret_cast<void *>(address), 2, 1,
               [](const void *, const void *) { return 1; });
  };
  EXPECT_EXIT(useInALibrary(), testing::KilledBySignal(SIGSEGV),
              "^tuner: libc\\.so\\.6: used memory that is not there\n$");
}

#ifdef __x86_64__
TEST_F(UncheckedMemory, ATrapIsToldOfAndEndsTheProgram) {
  const auto trap = [] {
    reportUncheckedMemory("tuner");
    __asm__("int3");
    std::_Exit(3);
  };
  EXPECT_EXIT(trap(), testing::KilledBySignal(SIGTRAP), "^tuner: ended the program\n$");
}
#endif

// What comes after the call keeps it from being a loop.
int fillStack(std::uint64_t times) {
  volatile char here[4096] = {};
  if (times == 0)
    return 0;
  const int rest = fillStack(times - 1);
  return rest + here[0];
}

TEST_F(UncheckedMemory, AFullStackIsToldOf) {
  const auto fill = [] {
    // It may be allowed to grow over everything.
    rlimit size{};
    ::getrlimit(RLIMIT_STACK, &size);
    size.rlim_cur = 1 << 20;
    ::setrlimit(RLIMIT_STACK, &size);
    reportUncheckedMemory("tuner");
    errno = 0;
    std::_Exit(fillStack(UINT64_MAX));
  };
  EXPECT_EXIT(fill(), testing::KilledBySignal(SIGSEGV), kTold);
}

}  // namespace
}  // namespace orvane::test
