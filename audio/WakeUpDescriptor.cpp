#include "audio/WakeUpDescriptor.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace orvane {

WakeUpDescriptor::WakeUpDescriptor() noexcept
    : mDescriptor(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

WakeUpDescriptor::~WakeUpDescriptor() {
  if (mDescriptor >= 0)
    close(mDescriptor);
}

void WakeUpDescriptor::signal() noexcept {
  const int savedErrno = errno;
  const std::uint64_t one = 1;
  // A full counter refuses the write, but then the descriptor is readable already.
  [[maybe_unused]] const ssize_t written = write(mDescriptor, &one, sizeof(one));
  errno = savedErrno;
}

void WakeUpDescriptor::clear() noexcept {
  const int savedErrno = errno;
  std::uint64_t count = 0;
  [[maybe_unused]] const ssize_t taken = read(mDescriptor, &count, sizeof(count));
  errno = savedErrno;
}

}  // namespace orvane
