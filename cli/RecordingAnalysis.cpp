#include "cli/RecordingAnalysis.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "audio/SoundFile.h"
#include "cli/CliError.h"
#include "cli/ReadingSummary.h"
#include "cli/ReadingText.h"

namespace orvane {
namespace {

constexpr std::uint32_t kDecodedSamples = 16384;

// The decoder keeps the reason of a failed opening in one place for all threads.
std::optional<SoundFile> openSound(const std::string &file, std::string &reason) {
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  return SoundFile::open(file, reason);
}

// Writes readings in the chosen form; as text, only those that change what is shown.
class ReadingWriter {
 public:
  ReadingWriter(AnalysisOutput &output, const AnalysisOrder &order, const std::string &file)
      : mOutput(output) {
    if (order.form)
      mRecords.emplace(*order.form, order.namesFile ? std::string_view(file) : std::string_view());
  }

  void write(const Reading &reading) {
    if (mRecords)
      return mOutput.write(mRecords->line(reading));
    if (!reading.isShown())
      return;
    std::string change = changeLine(reading.display);
    if (change == mLastChange)
      return;
    mOutput.write(timeText(reading.time) + "  " + change + '\n');
    mLastChange = std::move(change);
  }

 private:
  AnalysisOutput &mOutput;
  std::optional<ReadingRecords> mRecords;
  std::string mLastChange;
};

// Passes each reading of the sound to take.
template <typename Take>
void readAll(SoundFile &sound, std::uint32_t callbackFrames, const Tuning &tuning,
             AnalysisOutput &output, Take take) {
  TerminalTuner tuner(tuning, nullptr);
  CaptureBuffer &capture = tuner.capture();
  const auto rate = static_cast<double>(sound.rate());
  const auto channels = static_cast<std::uint32_t>(sound.channels());
  capture.setSampleRate(rate);

  // Many callbacks' worth are decoded at once: every call of the decoder asks the disk.
  const std::size_t callbackSamples = std::size_t{callbackFrames} * channels;
  const std::size_t callbacks = std::max<std::size_t>(1, kDecodedSamples / callbackSamples);
  std::vector<float> samples(callbacks * callbackSamples);
  const auto framesAtOnce = static_cast<std::int64_t>(callbacks * callbackFrames);
  AudioBufferList list{};
  list.mNumberBuffers = 1;
  AudioTimeStamp time;
  const IOProcCall call{0, &time, &list, &time, nullptr, nullptr};

  const std::int64_t total = sound.frames();
  std::uint64_t frames = 0;
  std::uint64_t blocks = 0;
  while (const std::int64_t read = sound.readFrames(samples.data(), framesAtOnce)) {
    const std::size_t readSamples = static_cast<std::size_t>(read) * channels;
    for (std::size_t first = 0; first < readSamples; first += callbackSamples) {
      const std::size_t count = std::min(callbackSamples, readSamples - first);
      list.mBuffers[0] = {channels, static_cast<UInt32>(count * sizeof(float)), &samples[first]};
      time.mSampleTime = static_cast<double>(1 + frames);
      capture.inputIOProc(&call);
      frames += count / channels;
      const std::uint64_t blockFrames = capture.mBufferFrames.load(std::memory_order_relaxed);
      while (const auto reading =
                 tuner.takeReading(static_cast<double>(blockFrames * (blocks + 1)) / rate)) {
        ++blocks;
        take(*reading);
      }
    }
    output.advanceTo(static_cast<std::int64_t>(frames), total);
  }
  if (tuner.queue().lostBlocks() != 0)
    throw CliError(kExitFailed, "memory", "not enough for a block of sound");
}

}  // namespace

AnalysisResult analyzeRecording(const std::string &file, const AnalysisOrder &order,
                                const Tuning &tuning, AnalysisOutput &output) {
  AnalysisResult result;
  std::optional<SoundFile> sound = openSound(file, result.reason);
  if (!sound)
    return result;

  ReadingWriter writer(output, order, file);
  std::optional<ReadingSummary> summary;
  if (order.summary)
    summary.emplace();
  if (order.curve)
    result.curve.emplace();
  readAll(*sound, order.callbackFrames, tuning, output, [&](const Reading &reading) {
    writer.write(reading);
    if (summary)
      summary->add(reading);
    if (result.curve)
      result.curve->add(reading);
  });
  if (summary)
    output.write(order.form
                     ? summary->json(order.namesFile ? std::string_view(file) : std::string_view())
                     : summary->text());
  result.reason = sound->trouble();
  return result;
}

}  // namespace orvane
