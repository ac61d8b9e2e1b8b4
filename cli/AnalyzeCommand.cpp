// Reads recordings as fast as they come and tells of them in their order.
#include <filesystem>
#include <system_error>
#include <vector>

#include "cli/CliError.h"
#include "cli/Commands.h"
#include "cli/Output.h"
#include "cli/PitchPlot.h"
#include "cli/ProgressBar.h"
#include "cli/RecordingQueue.h"
#include "cli/WholeFile.h"

namespace orvane {
namespace {

constexpr std::int64_t kMostCallbackFrames = 1 << 20;

// Standard output, with a bar for the recording that is being read.
class ShownAnalysis : public AnalysisOutput {
 public:
  ShownAnalysis(Output &output, const std::string &file) : mOutput(output), mFile(file) {}

  void write(std::string_view text) override { mOutput.write(text); }
  void advanceTo(std::int64_t done, std::int64_t total) override {
    if (!mProgress && total > 0)
      mProgress.emplace(mOutput, mFile, total);
    if (mProgress)
      mProgress->advanceTo(done);
  }

 private:
  Output &mOutput;
  const std::string &mFile;
  std::optional<ProgressBar> mProgress;
};

void checkPlot(const std::string &file, const std::vector<std::string> &recordings) {
  // A name of another kind is more likely a recording that would be lost.
  if (!file.ends_with(".svg") && !file.ends_with(".SVG"))
    throw CliError(kExitUsage, "--plot", "'" + file + "' does not end in .svg");
  for (const std::string &recording : recordings) {
    std::error_code error;
    // By the file itself, whatever its names and the links to it.
    if (std::filesystem::equivalent(file, recording, error))
      throw CliError(kExitUsage, "--plot", "'" + file + "' is a recording that is to be read");
  }
}

}  // namespace

int runAnalyze(const AnalyzeOptions &options, const CommonOptions &common) {
  AnalysisOrder order;
  order.callbackFrames = static_cast<std::uint32_t>(
      parseInteger("--callback-frames", options.callbackFrames, 1, kMostCallbackFrames));
  if (options.plot)
    checkPlot(*options.plot, options.files);
  const Tuning tuning = resolveTuning(common);
  const bool several = options.files.size() > 1;
  order.form = recordForm(options.json, options.csv);
  order.namesFile = several;
  order.summary = options.summary;
  order.curve = options.plot.has_value();

  Output output;
  int exitCode = kExitDone;
  if (order.form)
    output.write(ReadingRecords::header(*order.form, several));
  PitchPlot plot(tuning);
  RecordingQueue recordings(options.files, order, tuning);
  for (const std::string &file : options.files) {
    if (several && !order.form)
      output.write(oneLine(file) + ":\n");
    AnalysisResult result;
    {
      ShownAnalysis shown(output, file);
      result = recordings.takeNext(shown);
    }
    const auto tellReason = [&] {
      if (!result.reason.empty())
        printError((file.empty() ? "''" : file) + ": " + result.reason);
    };
    try {
      output.flush();
    } catch (...) {
      tellReason();
      throw;
    }
    // What was read of it is kept, and the other recordings are still read.
    tellReason();
    if (!result.reason.empty())
      exitCode = kExitFailed;
    if (result.curve)
      plot.add(file, *result.curve);
  }
  if (options.plot && !plot.isEmpty())
    writeWholeFile(*options.plot, plot.svg());
  return exitCode;
}

}  // namespace orvane
