// What the fuzz targets share: values cut from the bytes of an input, the input as a file, and the
// check that ends the run. One thread.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace orvane::fuzz {

// Stays on in every build, unlike assert().
inline void require(bool holds, const char *what) {
  if (holds)
    return;
  static_cast<void>(std::fprintf(stderr, "does not hold: %s\n", what));
  std::abort();
}

class FuzzInput {
 public:
  FuzzInput(const std::uint8_t *bytes, std::size_t size)
      : mBytes(reinterpret_cast<const char *>(bytes), size) {}

  bool isEmpty() const { return mBytes.empty(); }

  // The next bytes as a plain value; zeros once they are used up.
  template <typename Value>
  Value take() {
    Value value{};
    const std::size_t count = std::min(sizeof value, mBytes.size());
    std::memcpy(&value, mBytes.data(), count);
    mBytes.remove_prefix(count);
    return value;
  }

  // At most count bytes.
  std::string_view takeBytes(std::size_t count) {
    const std::string_view bytes = mBytes.substr(0, count);
    mBytes.remove_prefix(bytes.size());
    return bytes;
  }

  std::string_view takeRest() { return takeBytes(mBytes.size()); }

 private:
  std::string_view mBytes;
};

// A regular file that lives in memory and has a path.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view bytes) : mDescriptor(::memfd_create("input", MFD_CLOEXEC)) {
    require(mDescriptor >= 0, "a file can be made in memory");
    while (!bytes.empty()) {
      const ssize_t count = ::write(mDescriptor, bytes.data(), bytes.size());
      require(count > 0, "a file in memory can be written");
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
  }
  ~MemoryFile() { ::close(mDescriptor); }
  MemoryFile(const MemoryFile &) = delete;
  MemoryFile &operator=(const MemoryFile &) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(mDescriptor); }

 private:
  int mDescriptor;
};

}  // namespace orvane::fuzz

// The entry point of every target.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size);
