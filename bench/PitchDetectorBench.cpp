// detectPitch in nanoseconds a sample, beside a plain scan of the same block for its largest
// magnitude: what a loop that looks at every sample in its turn costs.
#include <cmath>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "core/PitchDetector.h"

namespace orvane {
namespace {

enum class Signal { Pure, Rich, Noisy, Noise };

UInt32 blockFrames(double rate) {
  return static_cast<UInt32>(rate / 27.5 * 1.5);
}

std::vector<float> render(Signal signal, double hertz, double rate) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> noise(-1.0, 1.0);
  std::vector<float> samples(blockFrames(rate));
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double phase = 2.0 * std::numbers::pi * hertz * static_cast<double>(i) / rate;
    double x = 0.5 * std::sin(phase);
    if (signal == Signal::Rich) {
      for (int k = 2; k <= 8 && hertz * k < rate / 2.0; ++k)
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

void plainScan(benchmark::State &state, Signal signal, double hertz, double rate) {
  const std::vector<float> samples = render(signal, hertz, rate);
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
  state.SetItemsProcessed(state.iterations() * blockFrames(rate));
}

void detect(benchmark::State &state, Signal signal, double hertz, double rate) {
  BlockQueue queue(nullptr);
  CaptureBuffer capture(queue);
  capture.mSampleRate = static_cast<float>(rate);
  capture.mBufferFrames = blockFrames(rate);
  PitchDetector detector(capture);
  const std::vector<float> samples = render(signal, hertz, rate);
  const CaptureBlock block =
      CaptureBlock::withBytes(samples.data(), samples.size() * sizeof(float));
  for (auto _ : state) {
    detector.detectPitch(block);
    const float reading = detector.mRawFrequency;
    benchmark::DoNotOptimize(reading);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * blockFrames(rate));
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
    for (const double hertz : {55.0, 440.0, 1760.0, 4186.0}) {
      if (signal == Signal::Noise && hertz != 440.0)
        continue;
      for (const double rate : {44100.0, 48000.0, 192000.0}) {
        const std::string what = std::string(name) + "/" + std::to_string(std::lround(hertz)) +
                                 "/" + std::to_string(std::lround(rate));
        benchmark::RegisterBenchmark(("scan/" + what).c_str(), plainScan, signal, hertz, rate);
        benchmark::RegisterBenchmark(("detectPitch/" + what).c_str(), detect, signal, hertz, rate);
      }
    }
  }
  return 0;
}();

}  // namespace
}  // namespace orvane
