#include "app/FontLoading.h"

#include <fontconfig/fontconfig.h>
#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <string_view>

namespace orvane {
namespace {

constexpr time_t kInterval = 5;  // seconds
// Of the processor's time, below which nothing else than the looks was done: many times what they
// take, and a small part of what one font takes.
constexpr long kNothing = 200'000;  // nanoseconds
constexpr int kMostLooks = 2;       // after one the process may have been stopped itself

timespec timeSpent{};
int idleLooks = 0;

// Nothing but what a handler of signals may call.
void look(int /*number*/) {
  timespec now{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  const bool isIdle = now.tv_sec == timeSpent.tv_sec && now.tv_nsec - timeSpent.tv_nsec < kNothing;
  timeSpent = now;
  idleLooks = isIdle ? idleLooks + 1 : 0;
  if (idleLooks < kMostLooks)
    return;
  constexpr std::string_view kLine = "orvane: fonts: waited for them in vain\n";
  [[maybe_unused]] const ssize_t told = ::write(STDERR_FILENO, kLine.data(), kLine.size());
  std::_Exit(EXIT_FAILURE);
}

class Watch {
 public:
  Watch() {
    struct sigaction action {};
    action.sa_handler = look;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGALRM, &action, &mBefore);
    constexpr itimerval kTimes{{kInterval, 0}, {kInterval, 0}};
    ::setitimer(ITIMER_REAL, &kTimes, nullptr);
  }
  ~Watch() {
    constexpr itimerval kOff{};
    ::setitimer(ITIMER_REAL, &kOff, nullptr);
    ::sigaction(SIGALRM, &mBefore, nullptr);
  }
  Watch(const Watch &) = delete;
  Watch &operator=(const Watch &) = delete;

 private:
  struct sigaction mBefore {};
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
