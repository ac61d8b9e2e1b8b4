#include "audio/UncheckedMemory.h"

#include <dlfcn.h>
#include <link.h>
#include <ucontext.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <string_view>

namespace orvane {
namespace {

// Where Linux lets no program have memory (vm.mmap_min_addr), and fields of what is not there lie.
constexpr std::uintptr_t kNowhere = 65536;

constexpr std::string_view kNoMemory = ": memory: not enough\n";
constexpr std::string_view kFault = ": used memory that is not there\n";
constexpr std::string_view kTrap = ": ended the program\n";

constinit std::string_view name;
struct sigaction beforeFault;
struct sigaction beforeTrap;

// Of the fault; nullptr where it is not known.
void *codeAt([[maybe_unused]] const ucontext_t &context) {
#if defined(__x86_64__)
  return std::bit_cast<void *>(context.uc_mcontext.gregs[REG_RIP]);
#elif defined(__aarch64__)
  return std::bit_cast<void *>(context.uc_mcontext.pc);
#else
  return nullptr;
#endif
}

// Empty for the program's own code, and where it is not known.
std::string_view libraryOf(void *code) {
  dl_find_object object;
  if (_dl_find_object(code, &object) != 0)
    return {};
  const std::string_view path = object.dlfo_link_map->l_name;
  return path.substr(path.rfind('/') + 1);
}

// In one piece, what does not fit left out.
void tell(std::initializer_list<std::string_view> parts) {
  std::array<char, 256> line;
  std::size_t length = 0;
  for (const std::string_view part : parts)
    length += part.copy(line.data() + length, line.size() - length);
  [[maybe_unused]] const ssize_t told = ::write(STDERR_FILENO, line.data(), length);
}

// By somebody; it does not come again of itself.
bool isSent(const siginfo_t &signal) {
  return signal.si_code <= 0;
}

void tellOf(const siginfo_t &signal, const void *context, std::string_view what) {
  if (isSent(signal))
    return;
  const std::string_view library = libraryOf(codeAt(*static_cast<const ucontext_t *>(context)));
  tell({name, library.empty() ? "" : ": ", library, what});
}

// Nothing but what a handler of signals may call; _dl_find_object is made for it.
void handleFault(int number, siginfo_t *fault, void *context) {
  if (fault->si_code == SEGV_MAPERR && errno == ENOMEM &&
      reinterpret_cast<std::uintptr_t>(fault->si_addr) < kNowhere) {
    tell({name, kNoMemory});
    std::_Exit(EXIT_FAILURE);
  }
  tellOf(*fault, context, kFault);
  // It comes again, and finds what was there before.
  ::sigaction(number, &beforeFault, nullptr);
  if (isSent(*fault))
    static_cast<void>(std::raise(number));
}

// By which a library ends the program that got no memory, at times without a word. It would go on
// after it.
void handleTrap(int number, siginfo_t *trap, void *context) {
  tellOf(*trap, context, kTrap);
  ::sigaction(number, &beforeTrap, nullptr);
  static_cast<void>(std::raise(number));
}

// A full stack is a fault, too. Sanitizers bring one along.
void useAnotherStack() {
  static std::array<char, 1 << 15> stack;
  stack_t there;
  if (::sigaltstack(nullptr, &there) != 0 || (there.ss_flags & SS_DISABLE) == 0)
    return;
  there = {};
  there.ss_sp = stack.data();
  there.ss_size = stack.size();
  ::sigaltstack(&there, nullptr);
}

}  // namespace

void reportUncheckedMemory(const char *program) noexcept {
  name = program;
  useAnotherStack();
  struct sigaction action {};
  action.sa_sigaction = handleFault;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK;
  ::sigaction(SIGSEGV, &action, &beforeFault);
  action.sa_sigaction = handleTrap;
  ::sigaction(SIGTRAP, &action, &beforeTrap);
}

}  // namespace orvane
