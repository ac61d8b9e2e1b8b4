// Reading hardware properties of variable size into memory of their own. Whatever size the hardware
// reports or claims to have written, no more than kLargestProperty bytes are taken, and none that
// were not written. Any thread; not real-time safe.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "audio/AudioHardware.h"

namespace orvane {

// A device that claims more is broken; this keeps it from taking the memory.
inline constexpr UInt32 kLargestProperty = 1U << 20;  // bytes

// The bytes of a property of variable size.
struct PropertyBytes {
  OSStatus status = noErr;       // of the read
  std::vector<std::byte> bytes;  // what was read; empty when the read failed
};

// read(ioSize, buffer) is the hardware's read. It is called for a size of 0 as well, with a valid
// pointer.
template <typename Read>
PropertyBytes readBytes(UInt32 reportedSize, Read read) {
  PropertyBytes result;
  UInt32 size = std::min(reportedSize, kLargestProperty);
  const std::size_t capacity = size;
  result.bytes.resize(std::max<std::size_t>(capacity, 1));
  result.status = read(&size, result.bytes.data());
  result.bytes.resize(result.status == noErr ? std::min<std::size_t>(size, capacity) : 0);
  return result;
}

// The entries of a list of IDs; an incomplete one at the end is dropped.
inline std::vector<UInt32> idsFromBytes(const std::vector<std::byte> &bytes) {
  std::vector<UInt32> ids(bytes.size() / sizeof(UInt32));
  if (!ids.empty())
    std::memcpy(ids.data(), bytes.data(), ids.size() * sizeof(UInt32));
  return ids;
}

}  // namespace orvane
