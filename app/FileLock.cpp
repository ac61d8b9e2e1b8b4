#include "app/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

namespace orvane {
namespace {

// Whether the path still leads to what the descriptor has open.
bool isNameOf(const std::filesystem::path &file, int descriptor) {
  struct stat named = {};
  struct stat opened = {};
  return ::stat(file.c_str(), &named) == 0 && ::fstat(descriptor, &opened) == 0 &&
         named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
}

}  // namespace

FileLock::~FileLock() {
  if (mDescriptor < 0)
    return;
  // Before the lock goes, so that nobody else's file is removed.
  ::unlink(mFile.c_str());
  ::close(mDescriptor);
}

FileLock::Answer FileLock::take(std::chrono::milliseconds longest) {
  constexpr std::chrono::milliseconds kPause{10};
  const auto end = std::chrono::steady_clock::now() + longest;
  Answer answer = tryOnce();
  while (answer == Answer::HeldByAnother && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(kPause);
    answer = tryOnce();
  }
  return answer;
}

FileLock::Answer FileLock::tryOnce() {
  const int descriptor = ::open(mFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (descriptor < 0)
    return Answer::Impossible;
  const bool isLocked = ::flock(descriptor, LOCK_EX | LOCK_NB) == 0;
  const bool isBusy = !isLocked && (errno == EWOULDBLOCK || errno == EINTR);
  // The former holder may have removed the file between the two calls.
  if (isLocked && isNameOf(mFile, descriptor)) {
    mDescriptor = descriptor;
    return Answer::Taken;
  }
  ::close(descriptor);
  return isLocked || isBusy ? Answer::HeldByAnother : Answer::Impossible;
}

}  // namespace orvane
