// Loaded in front of a program's libraries (LD_PRELOAD), makes one call of it fail, or all from
// that one on, as on a machine that has no more memory, disk or descriptors. Told by the
// environment:
//   FAILING_KIND     "memory" or "files": the calls that are counted
//   FAILING_COUNT    a file of sizeof(struct Counters) bytes, which takes what they tell
//   FAILING_FIRST    the number of the call that fails, from 1; none when missing
//   FAILING_FOREVER  set: all later ones fail, too
//   FAILING_ERROR    the error number of files' failures, in place of the one each call has
//   FAILING_QUIT     set: sends SIGTERM to the program once it has nothing to do
//   FAILING_AFTER    counts only from the opening of a file on whose path contains this
// Writing to standard error never fails, as the reason is to be read there. A program that a signal
// ends because of a failure tells first where. Any thread.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <execinfo.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

enum Kind { kNothing, kMemory, kFiles };

struct Counters {
  _Atomic uint64_t calls;
  _Atomic uint64_t failed;
  char caller[112];   // the library, or program, that made the first call that failed
  char endedIn[112];  // and the one in which a signal ended the program
};

static enum Kind kind = kNothing;
static struct Counters *counters;
static uint64_t first;
static bool isForever;
static int forcedError;
static const char *after;
static atomic_bool quitsWhenIdle;
static atomic_bool isCounting;

static uint64_t number(const char *name) {
  const char *text = getenv(name);
  return text == NULL ? 0 : strtoull(text, NULL, 10);
}

static const char *libraryOf(const void *address) {
  Dl_info library;
  if (dladdr(address, &library) == 0)
    return "";
  const char *slash = strrchr(library.dli_fname, '/');
  return slash == NULL ? library.dli_fname : slash + 1;
}

// The languages' own libraries end a program on behalf of another.
static bool isOnBehalf(const char *library) {
  static const char *const kNames[] = {"libc.so", "libstdc++.so", "libgcc_s.so",
                                       "libfailing-calls"};
  for (size_t i = 0; i < sizeof(kNames) / sizeof(kNames[0]); ++i) {
    if (strncmp(library, kNames[i], strlen(kNames[i])) == 0)
      return true;
  }
  return *library == '\0';
}

// Threads may come to their ends together; the first is told of.
static void tellWhereItEnds(int number) {
  static _Atomic pid_t ending;
  pid_t other = 0;
  while (!atomic_compare_exchange_strong(&ending, &other, gettid()) && other != gettid()) {
    other = 0;
    pause();
  }
  signal(number, SIG_DFL);
  void *frames[64];
  const int count = backtrace(frames, 64);
  for (int i = 0; i < count; ++i) {
    const char *library = libraryOf(frames[i]);
    if (isOnBehalf(library))
      continue;
    strncpy(counters->endedIn, library, sizeof(counters->endedIn) - 1);
    break;
  }
  raise(number);
}

// One library asks for memory to say that there is none, until the stack is full. Each thread has
// its own.
static void useAnotherStack(void) {
  static __thread char stack[1 << 15];
  static __thread bool isUsed;
  if (isUsed)
    return;
  isUsed = true;
  const stack_t other = {.ss_sp = stack, .ss_size = sizeof(stack)};
  sigaltstack(&other, NULL);
}

static void watchSignals(void) {
  void *frames[4];
  backtrace(frames, 4);  // takes the memory now that it needs
  static const int kSignals[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP};
  for (size_t i = 0; i < sizeof(kSignals) / sizeof(kSignals[0]); ++i) {
    struct sigaction action = {.sa_handler = tellWhereItEnds, .sa_flags = SA_ONSTACK | SA_NODEFER};
    sigaction(kSignals[i], &action, NULL);
  }
}

__attribute__((constructor)) static void prepare(void) {
  const char *file = getenv("FAILING_COUNT");
  const char *wanted = getenv("FAILING_KIND");
  if (file == NULL || wanted == NULL)
    return;
  const int descriptor = open(file, O_RDWR | O_CLOEXEC);
  void *memory =
      mmap(NULL, sizeof(struct Counters), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
  close(descriptor);
  if (memory == MAP_FAILED)
    return;
  counters = memory;
  first = number("FAILING_FIRST");
  isForever = getenv("FAILING_FOREVER") != NULL;
  forcedError = (int)number("FAILING_ERROR");
  after = getenv("FAILING_AFTER");
  quitsWhenIdle = getenv("FAILING_QUIT") != NULL;
  isCounting = after == NULL;
  // Not the programs that this one starts.
  unsetenv("LD_PRELOAD");
  watchSignals();
  kind = strcmp(wanted, "memory") == 0 ? kMemory : kFiles;
}

// Whether this call is to fail; errno is its reason then.
static bool failsFor(const void *caller, enum Kind called, int error) {
  if (called != kind || !isCounting)
    return false;
  const uint64_t call = atomic_fetch_add(&counters->calls, 1) + 1;
  if (first == 0 || (isForever ? call < first : call != first))
    return false;
  useAnotherStack();
  if (atomic_fetch_add(&counters->failed, 1) == 0)
    strncpy(counters->caller, libraryOf(caller), sizeof(counters->caller) - 1);
  errno = called == kFiles && forcedError != 0 ? forcedError : error;
  return true;
}

#define fails(called, error) failsFor(__builtin_return_address(0), called, error)

static void opening(const char *path) {
  if (kind != kNothing && after != NULL && path != NULL && strstr(path, after) != NULL)
    isCounting = true;
}

// Pipes, sockets and memory that is shared know none of the failures here.
static bool isOnDisk(int file) {
  struct stat64 status;
  return kind == kFiles && syscall(SYS_fstat, file, &status) == 0 && S_ISREG(status.st_mode) &&
         status.st_nlink != 0;
}

// The C library's own, under names that nobody takes the place of.
extern void *__libc_malloc(size_t size);
extern void *__libc_calloc(size_t count, size_t size);
extern void *__libc_realloc(void *old, size_t size);
extern void *__libc_memalign(size_t alignment, size_t size);

void *malloc(size_t size) {
  return fails(kMemory, ENOMEM) ? NULL : __libc_malloc(size);
}

void *calloc(size_t count, size_t size) {
  return fails(kMemory, ENOMEM) ? NULL : __libc_calloc(count, size);
}

void *realloc(void *old, size_t size) {
  return fails(kMemory, ENOMEM) ? NULL : __libc_realloc(old, size);
}

void *aligned_alloc(size_t alignment, size_t size) {
  return fails(kMemory, ENOMEM) ? NULL : __libc_memalign(alignment, size);
}

int posix_memalign(void **memory, size_t alignment, size_t size) {
  if (fails(kMemory, ENOMEM))
    return ENOMEM;
  *memory = __libc_memalign(alignment, size);
  return *memory == NULL ? ENOMEM : 0;
}

// The function of this name further on.
#define REAL(name)               \
  static __typeof__(&name) real; \
  if (real == NULL)              \
  real = (__typeof__(&name))dlsym(RTLD_NEXT, #name)

int poll(struct pollfd *files, nfds_t count, int timeout) {
  REAL(poll);
  if (timeout != 0 && gettid() == getpid() && atomic_exchange(&quitsWhenIdle, false))
    kill(getpid(), SIGTERM);
  return real(files, count, timeout);
}

#define CALL(type, name, parameters, arguments, failure, error) \
  type name parameters {                                        \
    REAL(name);                                                 \
    return fails(kFiles, error) ? (failure) : real arguments;   \
  }

#define OPENING(name)                                            \
  int name(const char *path, int flags, ...) {                   \
    REAL(name);                                                  \
    va_list rest;                                                \
    va_start(rest, flags);                                       \
    const mode_t mode = va_arg(rest, mode_t);                    \
    va_end(rest);                                                \
    opening(path);                                               \
    return fails(kFiles, EMFILE) ? -1 : real(path, flags, mode); \
  }
OPENING(open)
OPENING(open64)

#define OPENING_AT(name)                                                 \
  int name(int folder, const char *path, int flags, ...) {               \
    REAL(name);                                                          \
    va_list rest;                                                        \
    va_start(rest, flags);                                               \
    const mode_t mode = va_arg(rest, mode_t);                            \
    va_end(rest);                                                        \
    opening(path);                                                       \
    return fails(kFiles, EMFILE) ? -1 : real(folder, path, flags, mode); \
  }
OPENING_AT(openat)
OPENING_AT(openat64)

// What the same calls are in libraries that were built with the C library's checks.
#define OPENING_CHECKED(name)                              \
  int name(const char *path, int flags);                   \
  int name(const char *path, int flags) {                  \
    REAL(name);                                            \
    opening(path);                                         \
    return fails(kFiles, EMFILE) ? -1 : real(path, flags); \
  }
OPENING_CHECKED(__open_2)
OPENING_CHECKED(__open64_2)

#define OPENING_STREAM(name)                                \
  FILE *name(const char *path, const char *mode) {          \
    REAL(name);                                             \
    opening(path);                                          \
    return fails(kFiles, EMFILE) ? NULL : real(path, mode); \
  }
OPENING_STREAM(fopen)
OPENING_STREAM(fopen64)

ssize_t read(int file, void *bytes, size_t count) {
  REAL(read);
  return isOnDisk(file) && fails(kFiles, EIO) ? -1 : real(file, bytes, count);
}
CALL(ssize_t, pread, (int file, void *bytes, size_t count, off_t at), (file, bytes, count, at), -1,
     EIO)
CALL(ssize_t, pread64, (int file, void *bytes, size_t count, off64_t at), (file, bytes, count, at),
     -1, EIO)
size_t fread(void *bytes, size_t size, size_t count, FILE *stream) {
  REAL(fread);
  if (!fails(kFiles, EIO))
    return real(bytes, size, count, stream);
  stream->_flags |= _IO_ERR_SEEN;
  return 0;
}

ssize_t write(int file, const void *bytes, size_t count) {
  REAL(write);
  const bool canFail = file == STDOUT_FILENO || isOnDisk(file);
  return canFail && fails(kFiles, ENOSPC) ? -1 : real(file, bytes, count);
}
CALL(ssize_t, pwrite64, (int file, const void *bytes, size_t count, off64_t at),
     (file, bytes, count, at), -1, ENOSPC)
CALL(int, ftruncate64, (int file, off64_t length), (file, length), -1, ENOSPC)
CALL(int, fsync, (int file), (file), -1, EIO)
CALL(int, fdatasync, (int file), (file), -1, EIO)

// The descriptor is gone all the same.
int close(int file) {
  REAL(close);
  const bool canFail = isOnDisk(file);
  const int result = real(file);
  return canFail && fails(kFiles, EIO) ? -1 : result;
}

CALL(int, rename, (const char *from, const char *to), (from, to), -1, EIO)
CALL(int, renameat2, (int folder, const char *from, int other, const char *to, unsigned flags),
     (folder, from, other, to, flags), -1, EIO)
CALL(int, link, (const char *from, const char *to), (from, to), -1, EIO)
CALL(int, mkdir, (const char *path, mode_t mode), (path, mode), -1, ENOSPC)
CALL(int, unlink, (const char *path), (path), -1, EIO)
CALL(int, rmdir, (const char *path), (path), -1, EIO)
CALL(int, stat, (const char *path, struct stat *status), (path, status), -1, EIO)
CALL(int, lstat, (const char *path, struct stat *status), (path, status), -1, EIO)
CALL(int, fstat, (int file, struct stat *status), (file, status), -1, EIO)
CALL(int, stat64, (const char *path, struct stat64 *status), (path, status), -1, EIO)
CALL(int, lstat64, (const char *path, struct stat64 *status), (path, status), -1, EIO)
CALL(int, fstat64, (int file, struct stat64 *status), (file, status), -1, EIO)
CALL(int, statx, (int folder, const char *path, int flags, unsigned mask, struct statx *status),
     (folder, path, flags, mask, status), -1, EIO)
CALL(int, access, (const char *path, int mode), (path, mode), -1, EIO)
