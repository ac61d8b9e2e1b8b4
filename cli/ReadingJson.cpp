#include "cli/ReadingJson.h"

#include <nlohmann/json.hpp>

#include "cli/ReadingFields.h"

namespace orvane {
namespace {

// The fields of one object, in the order they are added.
class JsonFields {
 public:
  explicit JsonFields(std::string &line) : mLine(line) { mLine += '{'; }

  void addJson(const char *name, std::string_view json) {
    mLine.append(mIsFirst ? "\"" : ",\"").append(name).append("\":").append(json);
    mIsFirst = false;
  }
  template <typename Number>
  void addNumber(const char *name, Number value) {
    addJson(name, {});
    if (!appendNumber(mLine, value))
      mLine += "null";
  }
  void addFlag(const char *name, bool value) { addJson(name, value ? "true" : "false"); }
  // No text of a reading holds what would need an escape.
  void addText(const char *name, std::string_view value) {
    addJson(name, "\"");
    mLine.append(value).append("\"");
  }
  void addNothing(const char *name) { addJson(name, "null"); }
  void end() { mLine += "}\n"; }

 private:
  std::string &mLine;
  bool mIsFirst = true;
};

}  // namespace

std::string jsonString(std::string_view text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string validUtf8(std::string_view text) {
  return nlohmann::json::parse(jsonString(text)).get<std::string>();
}

void appendJson(std::string &line, const Reading &reading, std::string_view fileJson) {
  JsonFields fields(line);
  if (!fileJson.empty())
    fields.addJson("file", fileJson);
  forEachField(reading, fields);
  fields.end();
}

}  // namespace orvane
