// Feeds a capture buffer by hand and takes its blocks.
#pragma once

#include <cstring>
#include <vector>

#include "core/CaptureBuffer.h"

namespace orvane::test {

struct Buffer {
  UInt32 channels;
  std::vector<float> samples;
  int byteSize = -1;  // −1: as many as the samples have
};

// A list of several buffers in memory of its own, since AudioBufferList declares one.
class BufferList {
 public:
  explicit BufferList(std::vector<Buffer> buffers)
      : mBuffers(std::move(buffers)),
        mMemory(sizeof(AudioBufferList) + mBuffers.size() * sizeof(AudioBuffer)) {
    list()->mNumberBuffers = static_cast<UInt32>(mBuffers.size());
    auto *entry = reinterpret_cast<std::byte *>(list()) + offsetof(AudioBufferList, mBuffers);
    for (Buffer &buffer : mBuffers) {
      const AudioBuffer audio = {buffer.channels,
                                 buffer.byteSize >= 0
                                     ? static_cast<UInt32>(buffer.byteSize)
                                     : static_cast<UInt32>(buffer.samples.size() * sizeof(float)),
                                 buffer.samples.data()};
      std::memcpy(entry, &audio, sizeof audio);
      entry += sizeof audio;
    }
  }
  AudioBufferList *list() { return reinterpret_cast<AudioBufferList *>(mMemory.data()); }

 private:
  std::vector<Buffer> mBuffers;
  std::vector<std::byte> mMemory;
};

struct CaptureFeed {
  BlockQueue queue{nullptr};
  CaptureBuffer capture{queue};

  explicit CaptureFeed(double sampleRate) { capture.setSampleRate(sampleRate); }

  OSStatus feed(std::vector<Buffer> buffers, double sampleTime = 1.0) {
    BufferList list(std::move(buffers));
    const AudioTimeStamp time{sampleTime};
    const IOProcCall call{1, &time, list.list(), &time, nullptr, nullptr};
    return capture.inputIOProc(&call);
  }

  // Allocates nothing by itself.
  template <std::size_t Count>
  OSStatus feedMono(float (&samples)[Count]) {
    AudioBufferList list{1, {{1, sizeof samples, samples}}};
    const AudioTimeStamp time{1.0};
    const IOProcCall call{1, &time, &list, &time, nullptr, nullptr};
    return capture.inputIOProc(&call);
  }
  OSStatus feedMono(std::vector<float> samples) { return feed({{1, std::move(samples)}}); }

  // All waiting blocks, oldest first.
  std::vector<std::vector<float>> takeAll() {
    std::vector<std::vector<float>> blocks;
    while (auto block = queue.take())
      blocks.emplace_back(block->samples().begin(), block->samples().end());
    return blocks;
  }
};

// How many samples a capture block has at that rate.
inline std::size_t blockFrames(double sampleRate) {
  return static_cast<std::size_t>(sampleRate / 27.5 * 1.5);
}

// One block of a tone whose period is a whole number of samples, so that its pitch is exact, and
// whose every half-wave reaches the peak.
inline std::vector<float> pulses(double sampleRate, std::size_t period, float peak = 0.5F) {
  std::vector<float> samples(blockFrames(sampleRate), -peak);
  for (std::size_t place = 5; place < samples.size(); place += period)
    samples[place] = peak;
  return samples;
}

}  // namespace orvane::test
