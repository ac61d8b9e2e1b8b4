// While it lives, the toolkit tells assistive programs nothing: for changes that it would tell in
// several steps, or in signs. What there is to tell is then told by whoever asked for silence. Main
// thread.
#pragma once

#include <QAccessible>

namespace orvane {

class AccessibleSilence {
 public:
  AccessibleSilence() : mHandler(QAccessible::installUpdateHandler([](QAccessibleEvent *) {})) {}
  ~AccessibleSilence() { QAccessible::installUpdateHandler(mHandler); }
  AccessibleSilence(const AccessibleSilence &) = delete;
  AccessibleSilence &operator=(const AccessibleSilence &) = delete;

 private:
  const QAccessible::UpdateHandler mHandler;
};

}  // namespace orvane
