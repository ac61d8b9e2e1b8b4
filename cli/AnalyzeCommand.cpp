// Reads recordings as fast as they come, in constant memory: one interleaved buffer per callback,
// through the same path as live sound.
#include <vector>

#include "audio/SoundFile.h"
#include "cli/CliError.h"
#include "cli/Commands.h"
#include "cli/Output.h"
#include "cli/ProgressBar.h"
#include "cli/ReadingJson.h"
#include "cli/ReadingText.h"
#include "cli/TerminalTuner.h"

namespace orvane {
namespace {

constexpr std::int64_t kMostCallbackFrames = 1 << 20;

// Writes readings in the chosen form; as text, only those that change what is shown.
class ReadingWriter {
 public:
  ReadingWriter(Output &output, bool json, std::string_view file)
      : mOutput(output), mJson(json), mFile(file) {}

  void write(const Reading &reading) {
    mLine.clear();
    if (mJson) {
      appendJson(mLine, reading, mFile);
      mOutput.write(mLine);
      return;
    }
    if (!reading.accepted)
      return;
    std::string change = changeLine(reading.display);
    if (change == mLastChange)
      return;
    mLine = timeText(reading.time) + "  " + change + '\n';
    mLastChange = std::move(change);
    mOutput.write(mLine);
  }

 private:
  Output &mOutput;
  bool mJson;
  std::string_view mFile;
  std::string mLine;
  std::string mLastChange;
};

// Returns why the recording could not be read to its end; empty when it could. Throws CliError only
// for what ends the whole command.
std::string analyze(const std::string &file, std::uint32_t callbackFrames, const Tuning &tuning,
                    Output &output, ReadingWriter &&writer) {
  std::string reason;
  std::optional<SoundFile> sound = SoundFile::open(file, reason);
  if (!sound)
    return reason;

  TerminalTuner tuner(tuning, nullptr);
  CaptureBuffer &capture = tuner.capture();
  const auto rate = static_cast<double>(sound->rate());
  const auto channels = static_cast<std::uint32_t>(sound->channels());
  capture.setSampleRate(rate);

  std::vector<float> samples(std::size_t{callbackFrames} * channels);
  AudioBufferList list{};
  list.mNumberBuffers = 1;
  list.mBuffers[0] = {channels, 0, samples.data()};
  AudioTimeStamp time;
  const IOProcCall call{0, &time, &list, &time, nullptr, nullptr};

  ProgressBar progress(output, file, sound->frames());
  std::uint64_t frames = 0;
  std::uint64_t blocks = 0;
  while (const std::int64_t read = sound->readFrames(samples.data(), callbackFrames)) {
    const auto count = static_cast<std::uint64_t>(read);
    list.mBuffers[0].mDataByteSize = static_cast<UInt32>(count * channels * sizeof(float));
    time.mSampleTime = static_cast<double>(1 + frames);
    capture.inputIOProc(&call);
    const std::uint64_t blockFrames = capture.mBufferFrames.load(std::memory_order_relaxed);
    while (const auto reading =
               tuner.takeReading(static_cast<double>(blockFrames * (blocks + 1)) / rate)) {
      ++blocks;
      writer.write(*reading);
    }
    frames += count;
    progress.advanceTo(static_cast<std::int64_t>(frames));
  }
  if (tuner.queue().lostBlocks() != 0)
    throw CliError(kExitFailed, "memory", "not enough for a block of sound");
  return sound->trouble();
}

}  // namespace

int runAnalyze(const AnalyzeOptions &options, const CommonOptions &common) {
  const auto callbackFrames = static_cast<std::uint32_t>(
      parseInteger("--callback-frames", options.callbackFrames, 1, kMostCallbackFrames));
  const Tuning tuning = resolveTuning(common);
  const bool several = options.files.size() > 1;
  Output output;
  int exitCode = kExitDone;
  for (const std::string &file : options.files) {
    if (several && !options.json)
      output.write(oneLine(file) + ":\n");
    const std::string reason =
        analyze(file, callbackFrames, tuning, output,
                ReadingWriter(output, options.json, several ? file : std::string_view()));
    const auto tellReason = [&] {
      if (!reason.empty())
        printError((file.empty() ? "''" : file) + ": " + reason);
    };
    try {
      output.flush();
    } catch (...) {
      tellReason();
      throw;
    }
    // What was read of it is kept, and the other recordings are still read.
    tellReason();
    if (!reason.empty())
      exitCode = kExitFailed;
  }
  return exitCode;
}

}  // namespace orvane
