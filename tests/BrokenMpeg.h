// An MPEG stream none of whose frames can be decoded, whoever decodes it.
#pragma once

#include <string>

namespace orvane::test {

// Frames of 128 kbit/s mono at 44100 Hz, of 417 bytes, which promise more values than there are.
inline std::string brokenMpegFrames(int count) {
  std::string bytes;
  for (int i = 0; i < count; ++i)
    bytes += "\xFF\xFB\x90\xC0" + std::string(413, '\xFE');
  return bytes;
}

}  // namespace orvane::test
