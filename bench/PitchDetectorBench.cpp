// detectPitch in nanoseconds a sample, beside a plain scan of the same block for its largest
// magnitude: the least that any look at every sample costs.
#include <cmath>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "core/PitchDetector.h"

namespace orvane {
namespace {

constexpr double kRate = 48000.0;
constexpr UInt32 kBlockFrames = 2618;

enum class Signal { Pure, Rich, Noisy, Noise };

std::vector<float> render(Signal signal, double hertz) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> noise(-1.0, 1.0);
  std::vector<float> samples(kBlockFrames);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double phase = 2.0 * std::numbers::pi * hertz * static_cast<double>(i) / kRate;
    double x = 0.5 * std::sin(phase);
    if (signal == Signal::Rich) {
      for (int k = 2; k <= 8 && hertz * k < kRate / 2.0; ++k)
        x += 0.3 / k * std::sin(k * phase + 0.7 * k);
    } else if (signal == Signal::Noisy) {
      x += 0.05 * noise(random);
    } else if (signal == Signal::Noise) {
      x = 0.5 * noise(random);
    }
    samples[i] = static_cast<float>(x);
  }
  return samples;
}

void plainScan(benchmark::State &state, Signal signal, double hertz) {
  const std::vector<float> samples = render(signal, hertz);
  for (auto _ : state) {
    float largest = 0.0F;
    for (const float x : samples) {
      const float magnitude = std::fabs(x);
      if (magnitude > largest)
        largest = magnitude;
    }
    benchmark::DoNotOptimize(largest);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kBlockFrames);
}

void detect(benchmark::State &state, Signal signal, double hertz) {
  BlockQueue queue(nullptr);
  CaptureBuffer capture(queue);
  capture.mSampleRate = static_cast<float>(kRate);
  capture.mBufferFrames = kBlockFrames;
  PitchDetector detector(capture);
  const std::vector<float> samples = render(signal, hertz);
  const CaptureBlock block =
      CaptureBlock::withBytes(samples.data(), samples.size() * sizeof(float));
  for (auto _ : state) {
    detector.detectPitch(block);
    const float reading = detector.mRawFrequency;
    benchmark::DoNotOptimize(reading);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kBlockFrames);
  state.counters["Hz"] = static_cast<double>(detector.mRawFrequency);
}

const int kRegistered = [] {
  const struct {
    Signal signal;
    const char *name;
  } signals[] = {{Signal::Pure, "pure"},
                 {Signal::Rich, "rich"},
                 {Signal::Noisy, "noisy"},
                 {Signal::Noise, "noise"}};
  for (const auto &[signal, name] : signals) {
    for (const double hertz : {55.0, 440.0, 4186.0}) {
      if (signal == Signal::Noise && hertz != 440.0)
        continue;
      const std::string what = std::string(name) + "/" + std::to_string(static_cast<int>(hertz));
      benchmark::RegisterBenchmark(("scan/" + what).c_str(), plainScan, signal, hertz);
      benchmark::RegisterBenchmark(("detectPitch/" + what).c_str(), detect, signal, hertz);
    }
  }
  return 0;
}();

}  // namespace
}  // namespace orvane
