// A main thread whose waiting selectors the test runs when it likes.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "audio/MainThread.h"

namespace orvane {

class FakeMainThread : public MainThread {
 public:
  // What every selector was posted with.
  std::vector<std::vector<std::string>> modes;

  // Any thread.
  void performSelectorOnMainThread(std::function<void()> selector,
                                   const std::vector<std::string> &selectorModes) override {
    const std::lock_guard lock(mMutex);
    mWaiting.push_back(std::move(selector));
    modes.push_back(selectorModes);
  }

  // Runs what is waiting, and returns how many it were.
  std::size_t run() {
    std::vector<std::function<void()>> selectors;
    {
      const std::lock_guard lock(mMutex);
      selectors.swap(mWaiting);
    }
    for (const std::function<void()> &selector : selectors)
      selector();
    return selectors.size();
  }

 private:
  std::mutex mMutex;
  std::vector<std::function<void()>> mWaiting;
};

}  // namespace orvane
