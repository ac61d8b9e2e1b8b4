// A folder for the length of a test, and sound files of every good and bad kind in it.
#pragma once

#include <gtest/gtest.h>
#include <sndfile.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/TemporaryFolder.h"

namespace orvane {

using test::TemporaryFolder;

// Frame f of channel c holds f % 1000 + 1 thousandths, negative on odd channels.
inline float testSample(std::int64_t frame, int channel) {
  const float value = static_cast<float>(frame % 1000 + 1) / 1000.0F;
  return channel % 2 == 0 ? value : -value;
}

inline std::filesystem::path writeSound(const std::filesystem::path &path, int format, int rate,
                                        int channels, const std::vector<float> &samples) {
  SF_INFO info = {};
  info.format = format;
  info.samplerate = rate;
  info.channels = channels;
  SNDFILE *file = sf_open(path.c_str(), SFM_WRITE, &info);
  EXPECT_NE(file, nullptr) << path << ": " << sf_strerror(nullptr);
  if (file != nullptr) {
    const auto frames = static_cast<sf_count_t>(samples.size()) / channels;
    EXPECT_EQ(sf_writef_float(file, samples.data(), frames), frames);
    EXPECT_EQ(sf_close(file), 0);
  }
  return path;
}

inline std::filesystem::path writeTestSound(const std::filesystem::path &path, int format, int rate,
                                            int channels, std::int64_t frames) {
  std::vector<float> samples;
  for (std::int64_t frame = 0; frame < frames; ++frame)
    for (int channel = 0; channel < channels; ++channel)
      samples.push_back(testSample(frame, channel));
  return writeSound(path, format, rate, channels, samples);
}

inline std::filesystem::path writeBytes(const std::filesystem::path &path,
                                        const std::string &bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

inline std::string readBytes(const std::filesystem::path &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline std::string littleEndian(std::uint32_t value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i)
    text += static_cast<char>(value >> (8 * i) & 0xFF);
  return text;
}

// A 16-bit WAVE file whose header says what it likes.
struct WaveFile {
  std::uint32_t riffLength = 0;
  std::uint32_t channels = 1;
  std::uint32_t rate = 48000;
  std::uint32_t dataLength = 0;
  std::string data;
  std::string behind;

  explicit WaveFile(std::uint32_t bytesOfSound)
      : riffLength(36 + bytesOfSound), dataLength(bytesOfSound), data(bytesOfSound, '\x10') {}

  std::string bytes() const {
    return "RIFF" + littleEndian(riffLength, 4) + "WAVEfmt " + littleEndian(16, 4) +
           littleEndian(1, 2) + littleEndian(channels, 2) + littleEndian(rate, 4) +
           littleEndian(rate * channels * 2, 4) + littleEndian(channels * 2, 2) +
           littleEndian(16, 2) + "data" + littleEndian(dataLength, 4) + data + behind;
  }
};

}  // namespace orvane
