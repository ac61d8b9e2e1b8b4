#include "cli/WholeFile.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cli/CliError.h"
#include "core/RegularFile.h"

namespace orvane {
namespace {

// Nothing may be left over by a signal that ends the program.
class WithoutSignals {
 public:
  WithoutSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &mBefore);
  }
  ~WithoutSignals() { pthread_sigmask(SIG_SETMASK, &mBefore, nullptr); }
  WithoutSignals(const WithoutSignals &) = delete;
  WithoutSignals &operator=(const WithoutSignals &) = delete;

 private:
  sigset_t mBefore{};
};

bool writeAll(int descriptor, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = ::write(descriptor, content.data(), content.size());
    if (written < 0 && errno != EINTR)
      return false;
    content.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
  }
  // On the disk before it takes the place of the other.
  return ::fsync(descriptor) == 0;
}

}  // namespace

void writeWholeFile(const std::string &file, std::string_view content) {
  const auto fail = [&file](const char *reason) { throw CliError(kExitFailed, file, reason); };
  const WithoutSignals withoutSignals;
  const std::string target = fileBehindLinks(file).string();
  struct stat before {};
  const bool isThere = ::stat(target.c_str(), &before) == 0;
  if (!isThere && errno != ENOENT)
    fail(std::strerror(errno));
  // What is moved there would take the place of a device or a pipe.
  if (isThere && !S_ISREG(before.st_mode))
    fail(S_ISDIR(before.st_mode) ? "is a folder" : "is no regular file");
  // The moving would ask the folder only.
  if (isThere && ::access(target.c_str(), W_OK) != 0)
    fail(std::strerror(errno));

  const std::string written = target + '.' + std::to_string(::getpid()) + ".new";
  const int descriptor = ::open(written.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (descriptor < 0)
    fail(std::strerror(errno));
  if (isThere)
    static_cast<void>(::fchmod(descriptor, before.st_mode & 0777));
  int error = writeAll(descriptor, content) ? 0 : errno;
  if (::close(descriptor) != 0 && error == 0)
    error = errno;
  if (error == 0 && std::rename(written.c_str(), target.c_str()) != 0)
    error = errno;
  if (error != 0) {
    ::unlink(written.c_str());
    fail(std::strerror(error));
  }
}

}  // namespace orvane
