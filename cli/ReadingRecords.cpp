#include "cli/ReadingRecords.h"

#include "cli/ReadingCsv.h"
#include "cli/ReadingJson.h"

namespace orvane {

ReadingRecords::ReadingRecords(RecordForm form, std::string_view file) : mForm(form) {
  if (!file.empty())
    mFile = form == RecordForm::Json ? jsonString(file) : csvField(file);
}

std::string ReadingRecords::header(RecordForm form, bool withFile) {
  return form == RecordForm::Csv ? csvHeader(withFile) : std::string();
}

std::string_view ReadingRecords::line(const Reading &reading) {
  mLine.clear();
  if (mForm == RecordForm::Json)
    appendJson(mLine, reading, mFile);
  else
    appendCsv(mLine, reading, mFile);
  return mLine;
}

}  // namespace orvane
