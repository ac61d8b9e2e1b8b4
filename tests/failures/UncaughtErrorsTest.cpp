#include "core/UncaughtErrors.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <new>
#include <thread>

namespace orvane::test {
namespace {

// More than there is anywhere.
constexpr std::size_t kTooMuch = PTRDIFF_MAX - 4096;

TEST(UncaughtErrors, WantOfMemoryEndsTheProgramBeforeAnybodyCatchesItWhereThatIsWanted) {
  const auto allocate = [] {
    reportUncaughtErrors("tuner");
    endWithoutMemory();
    try {
      static_cast<void>(::operator new(kTooMuch));
    } catch (...) {
      std::_Exit(2);
    }
    std::_Exit(3);
  };
  EXPECT_EXIT(allocate(), testing::ExitedWithCode(1), "^tuner: memory: not enough\n$");
}

TEST(UncaughtErrors, OtherThreadsStillGetNothingWhereTheyAskForNoException) {
  const auto allocate = [] {
    reportUncaughtErrors("tuner");
    endWithoutMemory();
    void *memory = &memory;
    std::thread([&] { memory = ::operator new(kTooMuch, std::nothrow); }).join();
    std::_Exit(memory == nullptr ? 0 : 1);
  };
  EXPECT_EXIT(allocate(), testing::ExitedWithCode(0), "^$");
}

}  // namespace
}  // namespace orvane::test
