// Scala scale files: what can be read makes a temperament, and that one makes a file again.
#include <string>

#include "core/ScalaFile.h"
#include "core/TemperamentTables.h"
#include "core/Utf16.h"
#include "fuzz/FuzzInput.h"

namespace orvane::fuzz {
namespace {

std::u16string temperamentText(const ScalaFile &scala) {
  std::string text = "{a = (";
  for (const std::string &value : scala.listValues())
    text += value + ", ";
  text += ");}";
  return {text.begin(), text.end()};
}

void checkScale(const ScalaFile &scala) {
  require(scala.description.find_first_of(std::string_view("\r\n\0", 3)) == std::string::npos &&
              utf16FromUtf8(scala.description).has_value(),
          "a description is a line of UTF-8");
  TemperamentTables tables;
  tables.loadText(temperamentText(scala), "input",
                  [](const std::string &) { require(false, "a scale is a temperament"); });
  require(tables.rowCount() == 1, "a scale is one temperament");
  std::string reason;
  const auto written = ScalaFile::text(scala.description, tables.row(0), reason);
  if (!written)
    return;
  const auto again = ScalaFile::parse(*written, reason);
  // Pitches at the ends of single precision's range may be rounded out of it.
  require(again ? again->description == scala.description : reason.ends_with("is out of range"),
          "what was read can be written and read again");
}

}  // namespace
}  // namespace orvane::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  using namespace orvane;
  using namespace orvane::fuzz;
  std::string reason;
  const auto scala =
      ScalaFile::parse(std::string_view(reinterpret_cast<const char *>(bytes), size), reason);
  require(scala.has_value() == reason.empty(), "what cannot be read has its reason");
  if (scala)
    checkScale(*scala);
  else
    require(reason.starts_with("line ") && reason.find('\n') == std::string::npos,
            "a reason has its line");
  return 0;
}
