#include "app/FontLoading.h"

#include <fontconfig/fontconfig.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <ucontext.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace orvane {
namespace {

constexpr itimerval kInterval{{1, 0}, {1, 0}};
constexpr int kMostLooks = 3;

int looksWhileWaiting = 0;

template <std::size_t Size>
bool standsAt(unsigned long long code, const std::array<unsigned char, Size> &instruction) {
  return std::memcmp(std::bit_cast<const void *>(code), instruction.data(), Size) == 0;
}

// Whether the signal came while the thread waited for a lock. A call that goes on after the handler
// has been made ready by then: the thread stands at it again, with its number in the register.
bool waitsForALock([[maybe_unused]] const mcontext_t &thread) {
#if defined(__x86_64__)
  constexpr std::array<unsigned char, 2> kCall{0x0F, 0x05};  // syscall
  return thread.gregs[REG_RAX] == SYS_futex &&
         standsAt(static_cast<unsigned long long>(thread.gregs[REG_RIP]), kCall);
#elif defined(__aarch64__)
  constexpr std::array<unsigned char, 4> kCall{0x01, 0x00, 0x00, 0xD4};  // svc #0
  return thread.regs[8] == SYS_futex && standsAt(thread.pc, kCall);
#else
  return false;
#endif
}

// Nothing but what a handler of signals may call.
void look(int /*number*/, siginfo_t * /*alarm*/, void *context) {
  const bool isWaiting = waitsForALock(static_cast<ucontext_t *>(context)->uc_mcontext);
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
    sigset_t alarm;
    ::sigemptyset(&alarm);
    ::sigaddset(&alarm, SIGALRM);
    ::pthread_sigmask(SIG_UNBLOCK, &alarm, &mMask);  // whoever started the program may block it
    ::setitimer(ITIMER_REAL, &kInterval, &mInterval);
  }
  ~Watch() {
    constexpr itimerval kOff{};
    ::setitimer(ITIMER_REAL, &kOff, nullptr);
    ::pthread_sigmask(SIG_SETMASK, &mMask, nullptr);
    ::sigaction(SIGALRM, &mAction, nullptr);
    ::setitimer(ITIMER_REAL, &mInterval, nullptr);
  }
  Watch(const Watch &) = delete;
  Watch &operator=(const Watch &) = delete;

 private:
  struct sigaction mAction {};
  sigset_t mMask{};
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
