#include "core/UncaughtErrors.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>

namespace orvane {
namespace {

const char *programName = "";
thread_local bool endsWithoutMemory = false;

[[noreturn]] void end(const char *thing, const char *reason) noexcept {
  static_cast<void>(std::fprintf(stderr, "%s: %s: %s\n", programName, thing, reason));
  std::_Exit(EXIT_FAILURE);
}

[[noreturn]] void report() noexcept {
  // Where not even an exception finds memory, there is none.
  if (std::current_exception() == nullptr)
    end("memory", "not enough");
  try {
    throw;
  } catch (const std::bad_alloc &) {
    end("memory", "not enough");
  } catch (const std::exception &error) {
    end("internal error", error.what());
  } catch (...) {
    end("internal error", "unknown");
  }
}

void reportNoMemory() {
  if (endsWithoutMemory)
    end("memory", "not enough");
  throw std::bad_alloc();
}

}  // namespace

void reportUncaughtErrors(const char *program) noexcept {
  programName = program;
  std::set_terminate(report);
}

void endWithoutMemory() noexcept {
  endsWithoutMemory = true;
  std::set_new_handler(reportNoMemory);
}

}  // namespace orvane
