// inputIOProc per callback, blocks taken away at once as the main thread would.
#include <vector>

#include <benchmark/benchmark.h>

#include "core/CaptureBuffer.h"

namespace orvane {
namespace {

void inputIOProc(benchmark::State &state) {
  const auto frames = static_cast<UInt32>(state.range(0));
  const auto channels = static_cast<UInt32>(state.range(1));
  BlockQueue queue(nullptr);
  CaptureBuffer capture(queue);
  capture.setSampleRate(48000.0);
  std::vector<float> samples(frames * channels);
  for (std::size_t i = 0; i < samples.size(); ++i)
    samples[i] = static_cast<float>(i / channels % 101) / 101.0F - 0.5F;
  // As from one microphone, until the last frame: nothing takes longer.
  samples.back() += 0.25F;
  AudioBufferList list{};
  list.mNumberBuffers = 1;
  list.mBuffers[0] = {channels, static_cast<UInt32>(samples.size() * sizeof(float)),
                      samples.data()};
  const AudioTimeStamp time{1.0};
  const IOProcCall call{1, &time, &list, &time, nullptr, nullptr};
  for (auto _ : state) {
    capture.inputIOProc(&call);
    while (queue.take()) {
    }
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(inputIOProc)->ArgNames({"frames", "channels"})->ArgsProduct({{64, 512, 4096}, {1, 2, 6}});

}  // namespace
}  // namespace orvane
