// orvane-cli analyze over recordings of several lengths, as a whole process: the time it takes and
// the most memory it held, which must not grow with the file.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numbers>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sndfile.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kRate = 48000;

// 16-bit mono, a note of eight partials that moves up a semitone every second. The partials repeat
// exactly after a second of whole hertz, so a second is rendered once and written often.
std::string writeRecording(int seconds) {
  const std::string path = std::filesystem::temp_directory_path() /
                           ("orvane-bench-" + std::to_string(getpid()) + ".wav");
  SF_INFO info{};
  info.samplerate = kRate;
  info.channels = 1;
  info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
  SNDFILE *file = sf_open(path.c_str(), SFM_WRITE, &info);
  if (file == nullptr)
    return {};
  std::vector<std::vector<float>> notes;
  for (int n = 0; n < 12; ++n) {
    const double hertz = std::round(220.0 * std::exp2(n / 12.0));
    std::vector<float> second(kRate);
    for (std::size_t i = 0; i < second.size(); ++i) {
      double x = 0.0;
      for (int k = 1; k <= 8; ++k)
        x +=
            0.3 / k * std::sin(2.0 * std::numbers::pi * hertz * k * static_cast<double>(i) / kRate);
      second[i] = static_cast<float>(x);
    }
    notes.push_back(std::move(second));
  }
  for (int s = 0; s < seconds; ++s)
    sf_write_float(file, notes[static_cast<std::size_t>(s) % notes.size()].data(), kRate);
  sf_close(file);
  return path;
}

void analyze(benchmark::State &state) {
  const std::string path = writeRecording(static_cast<int>(state.range(0)));
  long peakKilobytes = 0;
  for (auto _ : state) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    std::string arguments[] = {ORVANE_CLI, "analyze", path, "--json"};
    char *argv[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(),
                    arguments[3].data(), nullptr};
    pid_t child = 0;
    int status = -1;
    rusage usage{};
    if (posix_spawn(&child, ORVANE_CLI, &actions, nullptr, argv, environ) == 0)
      wait4(child, &status, 0, &usage);
    posix_spawn_file_actions_destroy(&actions);
    if (status != 0) {
      state.SkipWithError("orvane-cli failed");
      break;
    }
    peakKilobytes = std::max(peakKilobytes, usage.ru_maxrss);
  }
  std::filesystem::remove(path);
  state.counters["peakKiB"] = static_cast<double>(peakKilobytes);
  state.SetItemsProcessed(state.iterations() * state.range(0) * kRate);
}
BENCHMARK(analyze)
    ->ArgName("seconds")
    ->Arg(60)
    ->Arg(600)
    ->Arg(3600)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
