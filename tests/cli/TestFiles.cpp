#include "tests/cli/TestFiles.h"

#include <cmath>
#include <fstream>
#include <numbers>
#include <stdexcept>

#include <sndfile.h>

namespace orvane::test {

std::string TestFolder::write(const std::string &name, std::string_view bytes) const {
  std::ofstream file(*this / name, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!file.flush())
    throw std::runtime_error("cannot write " + name);
  return path(name);
}

std::string TestFolder::writeSound(const std::string &name, const std::vector<float> &samples,
                                   int rate, int channels) const {
  SF_INFO info{};
  info.samplerate = rate;
  info.channels = channels;
  info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
  SNDFILE *file = sf_open(path(name).c_str(), SFM_WRITE, &info);
  if (file == nullptr)
    throw std::runtime_error("cannot write " + name);
  const auto count = static_cast<sf_count_t>(samples.size());
  const bool whole = sf_write_float(file, samples.data(), count) == count;
  sf_close(file);
  if (!whole)
    throw std::runtime_error("cannot write " + name);
  return path(name);
}

std::vector<float> sine(double hertz, int rate, double seconds, double amplitude) {
  std::vector<float> samples(static_cast<std::size_t>(seconds * rate));
  for (std::size_t i = 0; i < samples.size(); ++i)
    samples[i] = static_cast<float>(
        amplitude * std::sin(2.0 * std::numbers::pi * hertz * static_cast<double>(i) / rate));
  return samples;
}

std::string utf16(std::string_view text) {
  std::string bytes = "\xff\xfe";
  for (const char c : text) {
    bytes += c;
    bytes += '\0';
  }
  return bytes;
}

}  // namespace orvane::test
