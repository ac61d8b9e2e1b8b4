// One full capture buffer of mono samples, copied once on the input thread and then owned by
// whoever holds it. Immutable; moving it hands the ownership on.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <span>

namespace orvane {

class CaptureBlock {
 public:
  CaptureBlock() = default;

  // Copies length bytes. One allocation; an empty block when there is no memory for it.
  static CaptureBlock withBytes(const void *bytes, std::size_t length) noexcept {
    CaptureBlock block;
    const std::size_t count = (length + sizeof(float) - 1) / sizeof(float);
    // Not counted: the compiler's own branch, for more samples than any memory has.
    block.mSamples.reset(new (std::nothrow) float[count]);  // GCOVR_EXCL_BR_LINE
    if (block.mSamples != nullptr) {
      std::memcpy(block.mSamples.get(), bytes, length);
      block.mLength = length;
    }
    return block;
  }

  bool isEmpty() const { return mLength == 0; }
  std::size_t length() const { return mLength; }  // bytes
  // float32 mono, native byte order, −1.0 to 1.0 or not a number.
  std::span<const float> samples() const { return {mSamples.get(), mLength / sizeof(float)}; }

 private:
  std::unique_ptr<float[]> mSamples;
  std::size_t mLength = 0;
};

}  // namespace orvane
