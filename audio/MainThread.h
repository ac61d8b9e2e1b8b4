// The way from any thread to the main thread. Every thread but the input thread may post: posting
// allocates and may lock.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace orvane {

class MainThread {
 public:
  virtual ~MainThread() = default;

  // Returns at once; the selector runs later on the main thread, once, in the order of posting, or
  // never when the program ends before. Posted on the main thread it runs later too, never within
  // this call. modes: the modes of the main thread's event loop in which it may run, by name; an
  // event loop without modes runs it in all of them, also while a dialog is up, a menu is open or
  // a control is being dragged.
  virtual void performSelectorOnMainThread(std::function<void()> selector,
                                           const std::vector<std::string> &modes) = 0;
};

}  // namespace orvane
