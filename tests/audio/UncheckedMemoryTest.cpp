#include "audio/UncheckedMemory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>

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

TEST_F(UncheckedMemory, OtherFaultsGoTheirWay) {
  const auto fault = [](int error, std::uintptr_t address) {
    reportUncheckedMemory("tuner");
    errno = error;
    use(address);
  };
  const auto bySignal = testing::KilledBySignal(SIGSEGV);
  EXPECT_EXIT(fault(0, kField), bySignal, "^$") << "there was memory";
  EXPECT_EXIT(fault(ENOMEM, kElsewhere), bySignal, "^$") << "no field of what is not there";
#ifdef __x86_64__
  // No address at all, such as freed memory is often filled with; the system tells none then.
  EXPECT_EXIT(fault(ENOMEM, 0x8000000000000000), bySignal, "^$") << "of no address";
#endif
  const auto send = [] {
    reportUncheckedMemory("tuner");
    errno = ENOMEM;
    raise(SIGSEGV);
  };
  EXPECT_EXIT(send(), bySignal, "^$") << "sent by somebody";
}

}  // namespace
}  // namespace orvane::test
