#include "cli/ReadingCsv.h"

#include "cli/ReadingFields.h"
#include "cli/ReadingJson.h"

namespace orvane {
namespace {

// The values of one line, in the order they are added.
class CsvValues {
 public:
  explicit CsvValues(std::string &line) : mLine(line) {}

  void addCsv(std::string_view value) {
    if (!mIsFirst)
      mLine += ',';
    mLine += value;
    mIsFirst = false;
  }
  template <typename Number>
  void addNumber(const char *, Number value) {
    addCsv({});
    appendNumber(mLine, value);
  }
  void addFlag(const char *, bool value) { addCsv(value ? "true" : "false"); }
  // No text of a reading holds what would need quotes.
  void addText(const char *, std::string_view value) { addCsv(value); }
  void addNothing(const char *) { addCsv({}); }

 private:
  std::string &mLine;
  bool mIsFirst = true;
};

class CsvNames {
 public:
  explicit CsvNames(std::string &line) : mLine(line) {}

  void addNothing(const char *name) { mLine.append(mLine.empty() ? "" : ",").append(name); }
  template <typename Value>
  void addNumber(const char *name, Value) {
    addNothing(name);
  }
  void addFlag(const char *name, bool) { addNothing(name); }
  void addText(const char *name, std::string_view) { addNothing(name); }

 private:
  std::string &mLine;
};

}  // namespace

std::string csvField(std::string_view text) {
  const std::string valid = validUtf8(text);
  if (valid.find_first_of(",\"\r\n") == std::string::npos)
    return valid;
  std::string quoted = "\"";
  for (const char c : valid) {
    if (c == '"')
      quoted += '"';
    quoted += c;
  }
  return quoted + '"';
}

std::string csvHeader(bool withFile) {
  std::string line;
  CsvNames names(line);
  if (withFile)
    names.addNothing("file");
  const Display display{};
  forEachField(Reading{0, 0.0, std::nullopt, false, 0.0F, 0, 0, 0.0F, display}, names);
  return line + '\n';
}

void appendCsv(std::string &line, const Reading &reading, std::string_view fileCsv) {
  CsvValues values(line);
  if (!fileCsv.empty())
    values.addCsv(fileCsv);
  forEachField(reading, values);
  line += '\n';
}

}  // namespace orvane
