// Starts a thread that takes no signals, so that Ctrl-C and the like reach the main thread.
#pragma once

#include <csignal>
#include <thread>
#include <utility>

namespace orvane {

// Any thread. Throws std::system_error where the system refuses a thread.
template <typename Body>
std::thread startBackgroundThread(Body &&body) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  // A fault whose signal is blocked ends the program before it is told of.
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT})
    sigdelset(&all, fault);
  // A new thread inherits the mask, so there is no moment at which it could take one.
  pthread_sigmask(SIG_SETMASK, &all, &before);
  try {
    std::thread thread(std::forward<Body>(body));
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
  } catch (...) {
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    throw;
  }
}

}  // namespace orvane
