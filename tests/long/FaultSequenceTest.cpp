// The device layer under random sequences of faults. ./faults goes the long way.
#include <gtest/gtest.h>

#include <iostream>

#include "tests/long/FaultSequence.h"
#include "tests/long/PlainFaultedTuner.h"

namespace orvane::test {
namespace {

TEST(FaultSequence, TheDeviceLayerIsWellAgainAfterAnySequenceOfFaults) {
  const std::uint64_t count = longRunCount(300);
  std::size_t faults = 0;
  int launches = 0;
  for (std::uint64_t seed = longRunSeed(); seed < longRunSeed() + count; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    FaultSequence sequence(seed, [](RandomFaultHardware &hardware) {
      return std::make_unique<PlainFaultedTuner>(hardware);
    });
    sequence.run(50);
    faults += sequence.faults();
    launches += sequence.launches();
    if (HasFailure())
      return;
  }
  std::cout << count << " sequences of 50 steps, " << faults << " faults, " << launches
            << " launches\n";
  EXPECT_GT(faults, count);
}

}  // namespace
}  // namespace orvane::test
