#include "core/UncaughtErrors.h"

#include <cstdlib>
#include <exception>
#include <new>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

namespace orvane::test {
namespace {

[[noreturn]] void failInAThread(const std::exception_ptr &error) {
  reportUncaughtErrors("tuner");
  std::thread([&] { std::rethrow_exception(error); }).join();
  std::abort();
}

TEST(UncaughtErrors, EndTheProgramWithALineAndAStatusAndNoCoreDump) {
  const auto exited = testing::ExitedWithCode(1);
  EXPECT_EXIT(failInAThread(std::make_exception_ptr(std::bad_alloc())), exited,
              "^tuner: memory: not enough\n$");
  EXPECT_EXIT(failInAThread(std::make_exception_ptr(std::runtime_error("out of order"))), exited,
              "^tuner: internal error: out of order\n$");
  EXPECT_EXIT(failInAThread(std::make_exception_ptr(1)), exited,
              "^tuner: internal error: unknown\n$");
}

TEST(UncaughtErrors, AnEndWithoutAnExceptionMeansThatThereWasNoMemoryForOne) {
  const auto end = [] {
    reportUncaughtErrors("tuner");
    std::terminate();
  };
  EXPECT_EXIT(end(), testing::ExitedWithCode(1), "^tuner: memory: not enough\n$");
}

// What `new` calls when it finds no memory.
void findNoMemory() {
  const std::new_handler handler = std::get_new_handler();
  if (handler == nullptr)
    std::_Exit(3);
  handler();
}

TEST(UncaughtErrors, WantOfMemoryIsNotForAnybodyToCatchOnAThreadThatEndsWithoutIt) {
  const auto allocate = [] {
    reportUncaughtErrors("tuner");
    endWithoutMemory();
    try {
      findNoMemory();
    } catch (...) {
      std::_Exit(2);
    }
  };
  EXPECT_EXIT(allocate(), testing::ExitedWithCode(1), "^tuner: memory: not enough\n$");
}

TEST(UncaughtErrors, WantOfMemoryOnOtherThreadsIsAnExceptionAsEver) {
  const auto allocate = [] {
    reportUncaughtErrors("tuner");
    endWithoutMemory();
    bool isCaught = false;
    std::thread([&] {
      try {
        findNoMemory();
      } catch (const std::bad_alloc &) {
        isCaught = true;
      }
    }).join();
    std::_Exit(isCaught ? 0 : 1);
  };
  EXPECT_EXIT(allocate(), testing::ExitedWithCode(0), "^$");
}

}  // namespace
}  // namespace orvane::test
