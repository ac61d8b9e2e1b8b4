// Runs selectors on the main thread for threads that must not wait for it. What is still waiting
// when this is destroyed never runs.
#pragma once

#include <QObject>

#include "audio/MainThread.h"

namespace orvane {

class MainRunLoop : public MainThread {
 public:
  // Any thread but the input thread. The event loop runs selectors in every mode, so also while a
  // menu, a drag or a modal alert has it.
  void performSelectorOnMainThread(std::function<void()> selector,
                                   const std::vector<std::string> & /*modes*/) override {
    QMetaObject::invokeMethod(&mReceiver, std::move(selector), Qt::QueuedConnection);
  }

 private:
  QObject mReceiver;
};

}  // namespace orvane
