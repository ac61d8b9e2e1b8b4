#include "audio/SoundHeader.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string>

namespace orvane {

namespace {

constexpr std::uint64_t kChunkHeader = 8;
constexpr std::uint64_t kWaveHeader = 12;
// A file of nothing but chunks of no length must not keep the scan busy.
constexpr int kMostChunks = 1000;
constexpr int kMostTags = 16;
// Of an Ogg page.
constexpr std::size_t kPageHeader = 27;
constexpr std::size_t kLongestPage = kPageHeader + 255 + 255 * 255;

class HeaderReader {
 public:
  HeaderReader(int descriptor, bool isBigEndian)
      : mDescriptor(descriptor), mIsBigEndian(isBigEndian) {}

  template <std::size_t length>
  bool read(std::uint64_t offset, std::array<unsigned char, length> &bytes) const {
    return pread(mDescriptor, bytes.data(), length, static_cast<off_t>(offset)) ==
           static_cast<ssize_t>(length);
  }

  std::uint32_t word(const unsigned char *bytes) const {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
      value = value << 8 | bytes[mIsBigEndian ? i : 3 - i];
    return value;
  }

  std::uint32_t halfWord(const unsigned char *bytes) const {
    return mIsBigEndian ? static_cast<std::uint32_t>(bytes[0] << 8 | bytes[1])
                        : static_cast<std::uint32_t>(bytes[1] << 8 | bytes[0]);
  }

 private:
  int mDescriptor;
  bool mIsBigEndian;
};

bool isCode(const unsigned char *bytes, const char *code) {
  return std::memcmp(bytes, code, 4) == 0;
}

// The lengths that writers of streams put in place of one they do not know: the largest number of
// either signedness, rounded down to a block or less a header.
bool isOpenLength(std::uint32_t length) {
  return length == 0 || (length >= 0x7FFFF000U && length <= 0x80000000U) || length >= 0xFFFFF000U;
}

SoundHeader readWave(const HeaderReader &reader, std::uint32_t riffLength,
                     std::uint64_t fileBytes) {
  SoundHeader header;
  std::uint64_t offset = kWaveHeader;
  std::array<unsigned char, kChunkHeader> chunk{};
  for (int i = 0; i < kMostChunks && reader.read(offset, chunk); ++i) {
    const std::uint32_t length = reader.word(chunk.data() + 4);
    const std::uint64_t start = offset + kChunkHeader;
    if (isCode(chunk.data(), "fmt ")) {
      std::array<unsigned char, 8> format{};
      if (reader.read(start, format)) {
        header.channels = reader.halfWord(format.data() + 2);
        header.sampleRate = reader.word(format.data() + 4);
      }
    } else if (isCode(chunk.data(), "data")) {
      // The file may have grown since it was measured.
      const std::uint64_t present = fileBytes - std::min(fileBytes, start);
      // Where the file as a whole knows its length, an empty chunk is what it says.
      const bool isUnfilled = length == 0 && present > 0 &&
                              (isOpenLength(riffLength) || riffLength + kChunkHeader <= start);
      if (isUnfilled)
        header.unfilledLengthOffset = offset + 4;
      if (!isOpenLength(length))
        header.length = {length, std::min<std::uint64_t>(length, present)};
      break;
    }
    offset = start + length + length % 2;
  }
  return header;
}

// The decoder looks for one behind tags too.
bool isSampleDump(const HeaderReader &reader) {
  std::uint64_t offset = 0;
  std::array<unsigned char, 10> start{};
  for (int i = 0; i < kMostTags && reader.read(offset, start); ++i) {
    if (std::memcmp(start.data(), "ID3", 3) != 0)
      return start[0] == 0xF0 && start[1] == 0x7E && (start[2] & 0x80) == 0 && start[3] == 0x01;
    std::uint64_t length = 0;  // seven bits a byte
    for (std::size_t k = 6; k < 10; ++k)
      length = length << 7 | (start[k] & 0x7FU);
    offset += start.size() + length;
  }
  return false;
}

}  // namespace

SoundHeader readSoundHeader(int descriptor, std::uint64_t fileBytes) {
  std::array<unsigned char, kWaveHeader> start{};
  const HeaderReader littleEndian(descriptor, false);
  const HeaderReader bigEndian(descriptor, true);
  if (!littleEndian.read(0, start))
    return {};
  if (isCode(start.data() + 8, "WAVE")) {
    if (isCode(start.data(), "RIFF"))
      return readWave(littleEndian, littleEndian.word(start.data() + 4), fileBytes);
    if (isCode(start.data(), "RIFX"))
      return readWave(bigEndian, bigEndian.word(start.data() + 4), fileBytes);
  }
  if (isCode(start.data(), ".snd")) {
    SoundHeader header;
    const std::uint64_t offset = bigEndian.word(start.data() + 4);
    const std::uint32_t length = bigEndian.word(start.data() + 8);
    if (!isOpenLength(length))
      header.length = {
          length, offset < fileBytes ? std::min<std::uint64_t>(length, fileBytes - offset) : 0};
    return header;
  }
  SoundHeader header;
  header.isSampleDump = isSampleDump(littleEndian);
  return header;
}

bool hasEndOfOggStream(int descriptor, std::uint64_t fileBytes) {
  std::string tail(std::min<std::uint64_t>(fileBytes, kLongestPage), '\0');
  const ssize_t got =
      pread(descriptor, tail.data(), tail.size(), static_cast<off_t>(fileBytes - tail.size()));
  tail.resize(static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
  const std::size_t start = tail.rfind(std::string("OggS\0", 5));
  if (start == std::string::npos || tail.size() - start < kPageHeader)
    return false;
  const auto byte = [&](std::size_t offset) {
    return static_cast<unsigned char>(tail[start + offset]);
  };
  const std::size_t segments = byte(26);
  std::size_t length = kPageHeader + segments;
  if (tail.size() - start < length)
    return false;
  for (std::size_t i = 0; i < segments; ++i)
    length += byte(kPageHeader + i);
  constexpr int kEndOfStream = 4;
  return (byte(5) & kEndOfStream) != 0 && length <= tail.size() - start;
}

}  // namespace orvane
