// Runs a fuzz target once over each of the files and folders that are named: every compiler and
// sanitizer goes over the inputs that were found, and none may take long.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/FuzzInput.h"

namespace {

// Of processor time, so that a busy machine makes no difference.
constexpr double kLongestSeconds = 1.0;

double processorSeconds() {
  timespec time{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// Whether the target was quick enough; what it finds ends the program, and so does a file that
// cannot be read.
bool replay(const std::filesystem::path &file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) {
    std::fprintf(stderr, "%s: cannot be read\n", file.c_str());
    std::exit(1);
  }
  const std::vector<char> bytes(std::istreambuf_iterator<char>(stream), {});
  // Told before, for whoever reads of a crash.
  std::printf("%s: ", file.c_str());
  static_cast<void>(std::fflush(stdout));
  const double start = processorSeconds();
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
  const double seconds = processorSeconds() - start;
  std::printf("%zu bytes, %.3f s\n", bytes.size(), seconds);
  return seconds <= kLongestSeconds;
}

}  // namespace

int main(int argc, char **argv) {
  std::vector<std::filesystem::path> files;
  for (int i = 1; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      files.emplace_back(argv[i]);
      continue;
    }
    for (const auto &entry : std::filesystem::directory_iterator(argv[i]))
      files.push_back(entry.path());
  }
  int slow = 0;
  for (const std::filesystem::path &file : files)
    slow += replay(file) ? 0 : 1;
  std::printf("%zu inputs, %d too slow\n", files.size(), slow);
  return files.empty() || slow != 0 ? 1 : 0;
}
