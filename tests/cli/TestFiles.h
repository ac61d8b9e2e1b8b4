// Sound files and texts that the tests of the terminal tuner render for themselves.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/TemporaryFolder.h"

namespace orvane::test {

class TestFolder : public TemporaryFolder {
 public:
  std::string path(const std::string &name) const { return (*this / name).string(); }
  // Writes the bytes and returns the path.
  std::string write(const std::string &name, std::string_view bytes) const;
  // A 32-bit float WAV file with interleaved samples.
  std::string writeSound(const std::string &name, const std::vector<float> &samples, int rate,
                         int channels = 1) const;
};

std::vector<float> sine(double hertz, int rate, double seconds, double amplitude = 0.5);

// UTF-16, little endian, with its mark, of ASCII text.
std::string utf16(std::string_view text);

}  // namespace orvane::test
