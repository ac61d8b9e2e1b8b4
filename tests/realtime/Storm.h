// Trouble of several kinds in random order, the same for the same seed: acts are drawn by their
// weights, with the event loop running between them. Main thread only.
//
// A long run says how many seconds it lasts.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "tests/long/LongRun.h"

namespace orvane::test {

class Storm {
 public:
  // weight: at least 1.
  void add(const std::string &name, int weight, std::function<void()> act);
  // ordinary: how long it lasts in the ordinary run.
  void rage(std::chrono::seconds ordinary);

  // Evenly among the numbers below count, which is at least 1.
  int below(int count);

  // How often each was done.
  std::string account() const;

 private:
  struct Act {
    std::string name;
    int weight = 1;
    std::function<void()> act;
    int count = 0;
  };

  Random mRandom{longRunSeed()};
  std::vector<Act> mActs;
};

// Runs the event loop for so long.
void runEventLoop(std::chrono::milliseconds time);
// Until the condition holds; false when it does not come to hold.
bool comesTrue(const std::function<bool()> &condition,
               std::chrono::milliseconds longest = std::chrono::seconds(20));

}  // namespace orvane::test
