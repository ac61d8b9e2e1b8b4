// The input procedure and the pitch detector behind it, called with buffer lists of any shape. What
// a list says of its own size is true: an input procedure has no way to doubt it.
#include <cmath>
#include <memory>
#include <vector>

#include "core/LampMeter.h"
#include "core/LevelMeter.h"
#include "core/NoteComputation.h"
#include "core/PitchDetector.h"
#include "fuzz/FuzzInput.h"

namespace orvane::fuzz {
namespace {

constexpr UInt32 kMostBuffers = 8;
constexpr std::size_t kMostCallbacks = 64;
constexpr std::size_t kMostBytes = std::size_t{1} << 18;  // of all callbacks, to bound the time
constexpr float kHighestRate = 1e8F;  // hertz; more is only memory, and is not asked for

// A buffer list with as many buffers as it says, each in memory of its own exact size.
class BufferList {
 public:
  BufferList(FuzzInput &input, std::size_t &bytesLeft) {
    list()->mNumberBuffers = input.take<std::uint8_t>() % (kMostBuffers + 1);
    UInt32 lastSize = 0;
    auto *entry = mMemory + offsetof(AudioBufferList, mBuffers);
    for (UInt32 k = 0; k < list()->mNumberBuffers; ++k, entry += sizeof(AudioBuffer)) {
      const auto flags = input.take<std::uint8_t>();
      AudioBuffer buffer;
      buffer.mNumberChannels =
          (flags & 1) != 0 ? input.take<UInt32>() : input.take<std::uint8_t>() % 9U;
      // The same size once more, so that lists with buffers that match are found at once.
      const UInt32 size = (flags & 2) != 0 ? lastSize : input.take<std::uint16_t>();
      lastSize = size;
      buffer.mDataByteSize = static_cast<UInt32>(std::min<std::size_t>(size, bytesLeft));
      bytesLeft -= buffer.mDataByteSize;
      // A silent device may leave out the samples, not their number.
      if ((flags & 4) == 0)
        buffer.mData = fill(buffer.mDataByteSize, input, (flags & 8) != 0);
      std::memcpy(entry, &buffer, sizeof buffer);
    }
  }

  AudioBufferList *list() { return reinterpret_cast<AudioBufferList *>(mMemory); }

 private:
  // A tone or a short pattern of any bytes, over and over.
  void *fill(std::size_t size, FuzzInput &input, bool isTone) {
    auto &memory = mData.emplace_back(new char[size]);
    if (isTone) {
      const float step = input.take<float>();
      const float height = input.take<float>();
      for (std::size_t i = 0; i < size / sizeof(float); ++i) {
        const float sample = height * std::sin(step * static_cast<float>(i));
        std::memcpy(memory.get() + i * sizeof sample, &sample, sizeof sample);
      }
      return memory.get();
    }
    std::string_view pattern = input.takeBytes(input.take<std::uint8_t>());
    if (pattern.empty())
      pattern = std::string_view("\0", 1);
    for (std::size_t i = 0; i < size; ++i)
      memory[i] = pattern[i % pattern.size()];
    return memory.get();
  }

  alignas(AudioBufferList)
      std::byte mMemory[sizeof(AudioBufferList) + kMostBuffers * sizeof(AudioBuffer)] = {};
  std::vector<std::unique_ptr<char[]>> mData;
};

float rateOf(FuzzInput &input) {
  constexpr float kRates[] = {8000.0F, 22050.0F, 44100.0F, 48000.0F, 96000.0F, 192000.0F};
  const auto choice = input.take<std::uint8_t>();
  if (choice < std::size(kRates))
    return kRates[choice];
  const auto rate = input.take<float>();
  return rate > kHighestRate && rate < 2e10F ? kHighestRate : rate;
}

void checkBlock(const CaptureBlock &block, const CaptureBuffer &capture, PitchDetector &detector) {
  require(block.length() == capture.mBufferSize, "a block has the length of the buffer");
  for (const float sample : block.samples())
    require(std::isnan(sample) || (sample >= -1.0F && sample <= 1.0F), "samples are clipped");

  detector.mRawFrequency = 0.0F;
  const bool detected = detector.detectPitch(block);
  require(detector.mRawPeak >= 0.0F && detector.mRawPeak <= 1.0F, "the peak is in full scale");
  require(detector.mPeak >= 0 && detector.mPeak <= 96, "the level is on its scale");
  require(!detected || (std::isfinite(detector.mRawFrequency) && detector.mRawFrequency > 0.0F),
          "a detected frequency is a number above 0");
  // No period is longer than the block.
  require(!detected || detector.mRawFrequency * static_cast<float>(block.samples().size()) >=
                           capture.mSampleRate.load() * 0.999F,
          "a period fits into its block");
  levelSegments(detector.mPeak, detector.mPeak);
  levelText(detector.mPeak);
  if (const auto reading = noteReading(detector.mRawFrequency, {}, {})) {
    require(std::isfinite(reading->cents) && std::isfinite(reading->difference),
            "a reading is finite");
    lampRow(reading->deviation);
  }
}

}  // namespace
}  // namespace orvane::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  using namespace orvane;
  using namespace orvane::fuzz;
  FuzzInput input(bytes, size);
  BlockQueue queue(nullptr);
  CaptureBuffer capture(queue);
  PitchDetector detector(capture);
  capture.setSampleRate(static_cast<double>(rateOf(input)));

  std::size_t bytesLeft = kMostBytes;
  for (std::size_t i = 0; i < kMostCallbacks && !input.isEmpty(); ++i) {
    const auto what = input.take<std::uint8_t>();
    if (what % 8 == 7) {
      capture.updateSampleRate(static_cast<double>(rateOf(input)));
      continue;
    }
    BufferList list(input, bytesLeft);
    const AudioTimeStamp time{what % 8 == 6 ? input.take<double>() : 1.0};
    const IOProcCall call{1, &time, list.list(), &time, nullptr, nullptr};
    require(capture.inputIOProc(&call) == noErr, "the input procedure returns no error");
    const UInt32 frames = capture.mBufferFrames.load();
    require(frames == 0 || capture.mBufferOffset < frames, "the next sample fits into the buffer");
    while (const auto block = queue.take())
      checkBlock(*block, capture, detector);
  }
  require(queue.lostBlocks() == 0, "no block is lost");
  return 0;
}
