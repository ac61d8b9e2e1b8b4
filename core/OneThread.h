// Debug builds assert that all calls that say so come from one thread: the first to call. Costs
// nothing otherwise. Not synchronised: a call from a second thread is a race itself, which the
// thread sanitizer reports too.
#pragma once

#include <cassert>
#include <thread>

namespace orvane {

class OneThread {
 public:
  void check() {
#ifndef NDEBUG
    if (mThread == std::thread::id())
      mThread = std::this_thread::get_id();
    assert(mThread == std::this_thread::get_id());
#endif
  }

 private:
#ifndef NDEBUG
  std::thread::id mThread;
#endif
};

}  // namespace orvane
