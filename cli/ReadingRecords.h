// Readings in one of the forms that programs read, one line each.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cli/TerminalTuner.h"

namespace orvane {

enum class RecordForm { Json, Csv };

// The one that is wanted, or none; both never are.
inline std::optional<RecordForm> recordForm(bool json, bool csv) {
  if (!json && !csv)
    return std::nullopt;
  return csv ? RecordForm::Csv : RecordForm::Json;
}

class ReadingRecords {
 public:
  // file: the recording that each line names; none when it is empty.
  explicit ReadingRecords(RecordForm form, std::string_view file = {});

  // What precedes the first line of all: empty where the form has no such thing.
  static std::string header(RecordForm form, bool withFile);

  // Valid until the next call.
  std::string_view line(const Reading &reading);

 private:
  RecordForm mForm;
  std::string mFile;  // as the form writes it
  std::string mLine;
};

}  // namespace orvane
