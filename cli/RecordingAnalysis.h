// One recording read to its end, as fast as it comes and in constant memory: one interleaved buffer
// per callback, through the same path as live sound.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "cli/CommonOptions.h"
#include "cli/PitchCurve.h"
#include "cli/ReadingRecords.h"

namespace orvane {

// Where the text of one recording goes, and how far it is. May throw to end the analysis.
class AnalysisOutput {
 public:
  virtual ~AnalysisOutput() = default;
  virtual void write(std::string_view text) = 0;
  // Frames; total is 0 when it is not known.
  virtual void advanceTo(std::int64_t done, std::int64_t total) = 0;
};

struct AnalysisOrder {
  std::uint32_t callbackFrames = 512;
  std::optional<RecordForm> form;  // as text when not given
  bool namesFile = false;          // in each record
  bool summary = false;
  bool curve = false;
};

struct AnalysisResult {
  std::string reason;               // why it could not be read to its end; empty when it could
  std::optional<PitchCurve> curve;  // when asked for and the recording could be opened
};

// Any thread, several at a time. tuning must not change meanwhile. Throws what the output throws,
// and CliError for what ends the whole command.
AnalysisResult analyzeRecording(const std::string &file, const AnalysisOrder &order,
                                const Tuning &tuning, AnalysisOutput &output);

}  // namespace orvane
