// Sound files of any bytes: opened, read through the whole tuner, wound back and read again.
#include <cmath>
#include <vector>

#include "audio/SoundFile.h"
#include "cli/TerminalTuner.h"
#include "fuzz/FuzzInput.h"

namespace orvane::fuzz {
namespace {

constexpr std::int64_t kFrames = 512;  // at a time
constexpr std::int64_t kMostSamples = std::int64_t{1}
                                      << 18;  // a short file can be hours of silence

bool isLine(const std::string &text) {
  return text.find_first_of(std::string_view("\n\r\0", 3)) == std::string::npos;
}

void checkReading(const Reading &reading) {
  require(reading.rawPeak >= 0.0F && reading.rawPeak <= 1.0F, "the peak is in full scale");
  require(reading.peak >= 0 && reading.peak <= 96 && reading.peakHold >= reading.peak &&
              reading.peakHold <= 96,
          "the level is on its scale");
  require(reading.frequency > 26.0F && reading.frequency < 4312.0F,
          "an accepted frequency is a note's");
  const Display &display = reading.display;
  require(std::isfinite(display.deviation) && std::isfinite(display.difference) &&
              std::fabs(display.deviation) <= 0.5F,
          "what is shown is finite");
  require(display.texts.mNoteText.size() == 1 && !display.levelText.empty(), "the display is full");
}

// Reads to the end or as far as is worth the time. Returns the frames and whether it was the end.
struct Extent {
  std::int64_t frames;
  bool isWhole;
};
Extent readThrough(SoundFile &sound) {
  static const Tuning tuning;
  TerminalTuner tuner(tuning, nullptr);
  const auto channels = static_cast<std::uint32_t>(sound.channels());
  tuner.capture().setSampleRate(sound.rate());
  std::vector<float> samples(kFrames * channels);
  std::int64_t frames = 0;
  while (frames * channels < kMostSamples) {
    const std::int64_t count = sound.readFrames(samples.data(), kFrames);
    require(count >= 0 && count <= kFrames, "no more is read than was asked for");
    if (count == 0)
      return {frames, true};
    AudioBufferList list{};
    list.mNumberBuffers = 1;
    list.mBuffers[0] = {channels, static_cast<UInt32>(count * channels) * 4U, samples.data()};
    const AudioTimeStamp time{static_cast<double>(1 + frames)};
    const IOProcCall call{0, &time, &list, &time, nullptr, nullptr};
    tuner.capture().inputIOProc(&call);
    frames += count;
    while (const auto reading =
               tuner.takeReading(static_cast<double>(frames) / static_cast<double>(sound.rate())))
      checkReading(*reading);
  }
  return {frames, false};
}

}  // namespace
}  // namespace orvane::fuzz

// What the decoders themselves forget to free of a broken file is not the tuner's to free.
extern "C" const char *__lsan_default_suppressions() {
  return "leak:libsndfile\nleak:libvorbis\nleak:libogg\nleak:libopus\nleak:libFLAC\nleak:"
         "libmpg123\n";
}

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  using namespace orvane;
  using namespace orvane::fuzz;
  const MemoryFile file({reinterpret_cast<const char *>(bytes), size});
  std::string reason;
  auto sound = SoundFile::open(file.path(), reason);
  if (!sound) {
    require(!reason.empty() && isLine(reason), "a refusal has its reason");
    return 0;
  }
  require(sound->channels() >= 1 && sound->channels() <= SoundFile::kMostChannels,
          "the channels are within their limits");
  require(sound->rate() >= SoundFile::kLowestRate && sound->rate() <= SoundFile::kHighestRate,
          "the rate is within its limits");
  require(sound->frames() >= 0, "a length is no less than 0");

  const int channels = sound->channels();
  const Extent first = readThrough(*sound);
  if (first.isWhole) {
    const std::string trouble = sound->trouble();
    require(isLine(trouble), "what is wrong is told in a line");
    require(first.frames > 0 || !trouble.empty(), "a file without sound is told");
  }
  if (sound->rewind()) {
    require(sound->channels() == channels, "winding back leaves the channels as they are");
    readThrough(*sound);
  }
  return 0;
}
