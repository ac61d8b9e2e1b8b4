// Puts itself between the program and its C library, and has the kernel hand every system call of a
// watched thread to a signal handler (syscall user dispatch). Not for a program with a sanitizer,
// which does the first itself.
#include <dlfcn.h>
#include <pthread.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>

#include "tests/realtime/RealTimeScope.h"

// Newer than the headers of some systems whose kernels have it.
#ifndef PR_SET_SYSCALL_USER_DISPATCH
#define PR_SET_SYSCALL_USER_DISPATCH 59
#define PR_SYS_DISPATCH_ON 1
#endif

namespace orvane::test {

namespace {

using Kind = RealTimeEvent::Kind;

constexpr char kAllow = 0;
constexpr char kBlock = 1;

// Plain words of the thread's, so that reading them allocates nothing.
constinit thread_local RealTimeScope *tScope = nullptr;
constinit thread_local int tAllocatorDepth = 0;
constinit thread_local volatile char tSelector = kAllow;
constinit thread_local bool tIsDispatching = false;

void noteHere(Kind kind, std::size_t number = 0) {
  if (tScope != nullptr && tAllocatorDepth == 0)
    tScope->note({kind, static_cast<long>(number), 0, false});
}

class InAllocator {
 public:
  InAllocator(Kind kind, std::size_t bytes) {
    noteHere(kind, bytes);
    ++tAllocatorDepth;
  }
  ~InAllocator() { --tAllocatorDepth; }
  InAllocator(const InAllocator &) = delete;
  InAllocator &operator=(const InAllocator &) = delete;
};

#if defined(__x86_64__)

// Carries out the system call that was held up, and notes it.
void systemCallHeld(int, siginfo_t *info, void *context) {
  tSelector = kAllow;
  const int savedErrno = errno;
  greg_t *registers = static_cast<ucontext_t *>(context)->uc_mcontext.gregs;
  const long result =
      syscall(info->si_syscall, registers[REG_RDI], registers[REG_RSI], registers[REG_RDX],
              registers[REG_R10], registers[REG_R8], registers[REG_R9]);
  registers[REG_RAX] = result == -1 ? -errno : result;
  errno = savedErrno;
  tScope->note({Kind::kSystemCall, info->si_syscall, static_cast<long>(registers[REG_RDI]),
                tAllocatorDepth > 0});
  tSelector = kBlock;
}

// As the kernel knows a signal's action.
struct KernelAction {
  void (*handler)(int, siginfo_t *, void *);
  unsigned long flags;
  void (*restorer)();
  unsigned long mask;
};

// Only the return from the handler may pass: the few bytes of the library's code for it.
constexpr unsigned long kRestorerBytes = 16;

bool beginDispatching() {
  static KernelAction installed = [] {
    struct sigaction action = {};
    action.sa_sigaction = systemCallHeld;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGSYS, &action, nullptr);
    KernelAction kernel = {};
    syscall(SYS_rt_sigaction, SIGSYS, nullptr, &kernel, sizeof kernel.mask);
    return kernel;
  }();
  // The tuner's threads take no signals.
  sigset_t held;
  sigemptyset(&held);
  sigaddset(&held, SIGSYS);
  pthread_sigmask(SIG_UNBLOCK, &held, nullptr);
  return installed.restorer != nullptr && prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_ON,
                                                reinterpret_cast<unsigned long>(installed.restorer),
                                                kRestorerBytes, &tSelector) == 0;
}

#else

bool beginDispatching() {
  return false;
}

#endif

// The C library's own function of that name.
template <typename Function>
Function *theirs(std::atomic<Function *> &known, const char *name) {
  Function *function = known.load(std::memory_order_relaxed);
  if (function == nullptr) {
    function = reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
    known.store(function, std::memory_order_relaxed);
  }
  return function;
}

}  // namespace

RealTimeScope::RealTimeScope() {
  if (!tIsDispatching)
    tIsDispatching = beginDispatching();
  tScope = this;
  tSelector = kBlock;
}

std::span<const RealTimeEvent> RealTimeScope::end() {
  if (mIsOpen) {
    tSelector = kAllow;
    tScope = nullptr;
    mIsOpen = false;
  }
  return {mEvents.data(), mCount};
}

RealTimeScope::~RealTimeScope() {
  end();
}

bool RealTimeScope::sees(Kind kind) {
  return kind != Kind::kSystemCall || tIsDispatching || (tIsDispatching = beginDispatching());
}

bool RealTimeScope::endsTheProgram() {
  return false;
}

}  // namespace orvane::test

using orvane::test::InAllocator;
using orvane::test::noteHere;
using orvane::test::theirs;
using Kind = orvane::test::RealTimeEvent::Kind;

extern "C" {

void *__libc_malloc(std::size_t bytes);
void *__libc_calloc(std::size_t count, std::size_t bytes);
void *__libc_realloc(void *memory, std::size_t bytes);
void *__libc_memalign(std::size_t alignment, std::size_t bytes);
void __libc_free(void *memory);

void *malloc(std::size_t bytes) noexcept {
  const InAllocator in(Kind::kAllocation, bytes);
  return __libc_malloc(bytes);
}

void *calloc(std::size_t count, std::size_t bytes) noexcept {
  const InAllocator in(Kind::kAllocation, count * bytes);
  return __libc_calloc(count, bytes);
}

void *realloc(void *memory, std::size_t bytes) noexcept {
  const InAllocator in(Kind::kReallocation, bytes);
  return __libc_realloc(memory, bytes);
}

void *aligned_alloc(std::size_t alignment, std::size_t bytes) noexcept {
  const InAllocator in(Kind::kAllocation, bytes);
  return __libc_memalign(alignment, bytes);
}

int posix_memalign(void **memory, std::size_t alignment, std::size_t bytes) noexcept {
  const InAllocator in(Kind::kAllocation, bytes);
  *memory = __libc_memalign(alignment, bytes);
  return *memory != nullptr ? 0 : ENOMEM;
}

void free(void *memory) noexcept {
  // Of nothing, it does nothing.
  if (memory == nullptr)
    return;
  const InAllocator in(Kind::kFree, 0);
  __libc_free(memory);
}

int pthread_mutex_lock(pthread_mutex_t *mutex) noexcept {
  static constinit std::atomic<int (*)(pthread_mutex_t *)> known{nullptr};
  noteHere(Kind::kLock);
  return theirs(known, "pthread_mutex_lock")(mutex);
}

int pthread_mutex_trylock(pthread_mutex_t *mutex) noexcept {
  static constinit std::atomic<int (*)(pthread_mutex_t *)> known{nullptr};
  noteHere(Kind::kLock);
  return theirs(known, "pthread_mutex_trylock")(mutex);
}

int pthread_rwlock_rdlock(pthread_rwlock_t *lock) noexcept {
  static constinit std::atomic<int (*)(pthread_rwlock_t *)> known{nullptr};
  noteHere(Kind::kLock);
  return theirs(known, "pthread_rwlock_rdlock")(lock);
}

int pthread_rwlock_wrlock(pthread_rwlock_t *lock) noexcept {
  static constinit std::atomic<int (*)(pthread_rwlock_t *)> known{nullptr};
  noteHere(Kind::kLock);
  return theirs(known, "pthread_rwlock_wrlock")(lock);
}

}  // extern "C"
