#include "cli/WholeFile.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cli/CliError.h"

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
  const WithoutSignals withoutSignals;
  std::error_code ignored;
  const std::filesystem::path canonical = std::filesystem::weakly_canonical(file, ignored);
  const std::string target = canonical.empty() ? file : canonical.string();
  const std::string written = target + '.' + std::to_string(::getpid()) + ".new";

  const int descriptor = ::open(written.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  int error = descriptor < 0 ? errno : 0;
  if (descriptor >= 0) {
    struct stat before {};
    if (::stat(target.c_str(), &before) == 0)
      static_cast<void>(::fchmod(descriptor, before.st_mode & 0777));
    if (!writeAll(descriptor, content))
      error = errno;
    if (::close(descriptor) != 0 && error == 0)
      error = errno;
    if (error == 0 && std::rename(written.c_str(), target.c_str()) != 0)
      error = errno;
    if (error != 0)
      ::unlink(written.c_str());
  }
  if (error != 0)
    throw CliError(kExitFailed, file, std::strerror(error));
}

}  // namespace orvane
