#include "app/FontLoading.h"

#include <fontconfig/fontconfig.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <ucontext.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string_view>

namespace orvane {
namespace {

constexpr itimerval kInterval{{1, 0}, {1, 0}};
constexpr int kMostLooks = 3;

int looksWhileWaiting = 0;

// Whether the signal came while the thread waited for a lock. A call that goes on after the handler
// has its number back in its register by then.
bool waitsForALock([[maybe_unused]] const ucontext_t &context) {
#if defined(__x86_64__)
  return context.uc_mcontext.gregs[REG_RAX] == SYS_futex;
#elif defined(__aarch64__)
  return context.uc_mcontext.regs[8] == SYS_futex;
#else
  return false;
#endif
}

// Nothing but what a handler of signals may call.
void look(int /*number*/, siginfo_t * /*alarm*/, void *context) {
  const bool isWaiting = waitsForALock(*static_cast<ucontext_t *>(context));
  looksWhileWaiting = isWaiting ? looksWhileWaiting + 1 : 0;
  if (looksWhileWaiting < kMostLooks)
    return;
  constexpr std::string_view kLine = "orvane: fonts: their library waits for itself\n";
  [[maybe_unused]] const ssize_t told = ::write(STDERR_FILENO, kLine.data(), kLine.size());
  std::_Exit(EXIT_FAILURE);
}

class Watch {
 public:
  Watch() {
    struct sigaction action {};
    action.sa_sigaction = look;
    action.sa_flags = SA_SIGINFO | SA_RESTART;
    ::sigaction(SIGALRM, &action, &mAction);
    ::setitimer(ITIMER_REAL, &kInterval, &mInterval);
  }
  ~Watch() {
    constexpr itimerval kOff{};
    ::setitimer(ITIMER_REAL, &kOff, nullptr);
    ::sigaction(SIGALRM, &mAction, nullptr);
    ::setitimer(ITIMER_REAL, &mInterval, nullptr);
  }
  Watch(const Watch &) = delete;
  Watch &operator=(const Watch &) = delete;

 private:
  struct sigaction mAction {};
  itimerval mInterval{};
};

}  // namespace

bool loadFonts() {
  const Watch watch;
  FcConfig *const fonts = FcInitLoadConfigAndFonts();
  if (fonts == nullptr)
    return false;
  const bool isDone = FcConfigSetCurrent(fonts) == FcTrue;
  FcConfigDestroy(fonts);  // the library has its own reference
  return isDone;
}

}  // namespace orvane
