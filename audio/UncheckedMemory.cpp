#include "audio/UncheckedMemory.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace orvane {
namespace {

// Where Linux lets no program have memory (vm.mmap_min_addr), and fields of what is not there lie.
constexpr std::uintptr_t kNowhere = 65536;

std::array<char, 64> line;
std::size_t lineLength = 0;
struct sigaction before;

// Nothing but what a handler of signals may call.
void handleFault(int number, siginfo_t *fault, void * /*context*/) {
  if (fault->si_code == SEGV_MAPERR && errno == ENOMEM &&
      reinterpret_cast<std::uintptr_t>(fault->si_addr) < kNowhere) {
    [[maybe_unused]] const ssize_t told = ::write(STDERR_FILENO, line.data(), lineLength);
    std::_Exit(EXIT_FAILURE);
  }
  // It comes again, and finds what was there before.
  ::sigaction(number, &before, nullptr);
  const bool isSent = fault->si_code <= 0;
  if (isSent)
    static_cast<void>(std::raise(number));
}

}  // namespace

void reportUncheckedMemory(const char *program) noexcept {
  constexpr std::string_view kReason = ": memory: not enough\n";
  const std::string_view name = std::string_view(program).substr(0, line.size() - kReason.size());
  char *const reason = std::ranges::copy(name, line.begin()).out;
  lineLength = static_cast<std::size_t>(std::ranges::copy(kReason, reason).out - line.begin());
  struct sigaction action {};
  action.sa_sigaction = handleFault;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK;
  ::sigaction(SIGSEGV, &action, &before);
}

}  // namespace orvane
