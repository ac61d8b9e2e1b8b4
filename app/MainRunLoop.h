// Runs selectors on the main thread for threads that must not wait for it. What is still waiting
// when this is destroyed never runs.
#pragma once

#include <deque>
#include <mutex>
#include <utility>

#include <QCoreApplication>
#include <QEvent>

#include "audio/MainThread.h"

namespace orvane {

class MainRunLoop : public MainThread {
 public:
  // Any thread but the input thread. The event loop runs selectors in every mode, so also while a
  // menu, a drag or a modal alert has it.
  void performSelectorOnMainThread(std::function<void()> selector,
                                   const std::vector<std::string> & /*modes*/) override {
    {
      const std::lock_guard held(mMutex);
      mWaiting.push_back(std::move(selector));
    }
    QCoreApplication::postEvent(&mReceiver, new QEvent(QEvent::User));
  }

 private:
  // The selectors wait here and not in the toolkit's events: ThreadSanitizer sees this lock, and so
  // how they are handed over, but none of the toolkit's. Only the toolkit reads the event.
  class Receiver : public QObject {
   public:
    explicit Receiver(MainRunLoop &loop) : mLoop(loop) {}

   protected:
    void customEvent(QEvent * /*event*/) override { mLoop.performOne(); }

   private:
    MainRunLoop &mLoop;
  };

  // As many events come as selectors wait, so that each of them lets the event loop go on.
  void performOne() {
    std::function<void()> selector;
    {
      const std::lock_guard held(mMutex);
      selector = std::move(mWaiting.front());
      mWaiting.pop_front();
    }
    selector();
  }

  std::mutex mMutex;
  std::deque<std::function<void()>> mWaiting;
  Receiver mReceiver{*this};
};

}  // namespace orvane
