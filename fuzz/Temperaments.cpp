// Property lists and temperament files: the bytes as a file, and each of them as a character of a
// text, which reaches deeper into the parser.
#include <set>

#include "core/PropertyList.h"
#include "core/TemperamentTables.h"
#include "core/Utf16.h"
#include "fuzz/FuzzInput.h"

namespace orvane::fuzz {
namespace {

void append(std::u16string &text, std::string_view ascii) {
  text.append(ascii.begin(), ascii.end());
}

void appendString(std::u16string &text, const std::string &utf8) {
  const auto utf16 = utf16FromUtf8(utf8);
  require(utf16.has_value(), "strings are valid text");
  text += u'"';
  for (const char16_t unit : *utf16) {
    if (unit == u'"' || unit == u'\\')
      text += u'\\';
    text += unit;
  }
  text += u'"';
}

// The value as text again. It must lie inside its own text and nest no deeper than is allowed.
void appendValue(std::u16string &text, const PropertyListValue &value, std::u16string_view source,
                 std::size_t depth) {
  require(value.offset < source.size(), "a value begins in the text");
  require(depth <= PropertyList::kMaximumDepth + 1, "values nest no deeper than is allowed");
  const char16_t first = source[value.offset];
  if (const std::string *string = value.string()) {
    appendString(text, *string);
  } else if (const auto *list = value.list()) {
    require(first == u'(', "a list begins with its bracket");
    append(text, "(");
    for (const PropertyListValue &entry : *list) {
      appendValue(text, entry, source, depth + 1);
      append(text, ",");
    }
    append(text, ")");
  } else if (const auto *data = value.data()) {
    require(first == u'<', "data begin with their bracket");
    append(text, "<");
    for (const std::uint8_t byte : *data) {
      text += u"0123456789abcdef"[byte >> 4];
      text += u"0123456789abcdef"[byte & 15];
    }
    append(text, ">");
  } else {
    require(first == u'{', "a dictionary begins with its brace");
    std::set<std::string_view> keys;
    append(text, "{");
    for (const PropertyListEntry &entry : value.dictionary()->entries) {
      require(keys.insert(entry.key).second, "a key stands once");
      appendString(text, entry.key);
      append(text, "=");
      appendValue(text, entry.value, source, depth + 1);
      append(text, ";");
    }
    append(text, "}");
  }
}

// Whether the text is a property list.
bool checkText(std::u16string_view text) {
  PropertyListError error;
  const auto root = PropertyList::parse(text, error);
  if (!root) {
    require(error.line >= 1 && error.line <= text.size() + 1 && error.column >= 1 &&
                error.column <= text.size() + 1 && !error.reason.empty(),
            "an error has its place and its reason");
    return false;
  }
  std::u16string written;
  appendValue(written, *root, text, 1);
  const auto again = PropertyList::parse(written, error);
  require(again.has_value(), "what was read can be written and read again");
  std::u16string writtenAgain;
  appendValue(writtenAgain, *again, written, 1);
  require(writtenAgain == written, "what was read and written stays the same");
  return true;
}

void checkTables(const TemperamentTables &tables, std::size_t logged) {
  const std::size_t names = tables.mTemperaments.entries.size();
  require(tables.rowCount() <= names, "no row is without its name");
  require(tables.mTemperamentCount == static_cast<std::int64_t>(tables.rowCount()),
          "the rows are counted");
  // One line for each list that is too short, or the one for a file that could not be used.
  require(logged == names - tables.rowCount() || (logged == 1 && names == 1),
          "what is left out is told");
  for (std::size_t row = 0; row < tables.rowCount(); ++row) {
    require(tables.mTemperaments.find(tables.name(row)) != nullptr, "a name is one of the file's");
    require(tables.row(row)[0] == 1.0F, "a row begins with the tonic");
    volatile float last = tables.row(row)[TemperamentTables::kDegreeCount - 1];
    static_cast<void>(last);
    const std::string &tip = tables.toolTip(row);
    require(tip.starts_with("cents = (") && tip.ends_with(")") &&
                std::count(tip.begin(), tip.end(), ',') == 11,
            "a tool tip lists twelve numbers");
  }
}

}  // namespace
}  // namespace orvane::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  using namespace orvane;
  using namespace orvane::fuzz;
  const std::string_view input(reinterpret_cast<const char *>(bytes), size);
  std::size_t logged = 0;
  const TemperamentTables::Log log = [&logged](const std::string &line) {
    require(!line.empty() && line.find('\n') == std::string::npos, "the log has whole lines");
    ++logged;
  };

  TemperamentTables tables;
  tables.load(MemoryFile(input).path(), log);
  checkTables(tables, logged);
  std::string reason;
  if (const auto text = decodeUtf16(input, reason))
    checkText(*text);

  const std::u16string wide(bytes, bytes + size);
  const bool isList = checkText(wide);
  logged = 0;
  tables.loadText(wide, "input", log);
  require(isList || logged == 1, "what is no property list is told");
  checkTables(tables, logged);
  return 0;
}
