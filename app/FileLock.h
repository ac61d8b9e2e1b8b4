// The right of one program at a time to change something, held through a file. The system takes it
// back when its holder ends, however that happens; what a crash leaves is an empty file, which is
// in nobody's way. Any one thread.
#pragma once

#include <chrono>
#include <filesystem>
#include <utility>

namespace orvane {

class FileLock {
 public:
  // The file is made, and removed with the lock.
  explicit FileLock(std::filesystem::path file) : mFile(std::move(file)) {}
  ~FileLock();
  FileLock(const FileLock &) = delete;
  FileLock &operator=(const FileLock &) = delete;

  enum class Answer { Taken, HeldByAnother, Impossible };
  // Waits for another holder at most that long.
  Answer take(std::chrono::milliseconds longest);

 private:
  Answer tryOnce();

  std::filesystem::path mFile;
  int mDescriptor = -1;
};

}  // namespace orvane
