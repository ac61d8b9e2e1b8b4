// Property lists in their text form: { key = value; } dictionaries, ( a, b ) lists, "quoted" and
// bare strings, <hex> data, // and /* */ comments. Every value remembers where it began, so that
// whoever reads the list can complain about a value as precisely as the parser does.
// Any thread; not real-time safe (allocates).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace orvane {

struct PropertyListEntry;
struct PropertyListValue;

struct PropertyListDictionary {
  // In the order of the text. A repeated key stands where it stood first, with its last value.
  std::vector<PropertyListEntry> entries;

  // Null when there is no such key. Linear in the number of entries.
  const PropertyListValue *find(std::string_view key) const;
};

struct PropertyListValue {
  using List = std::vector<PropertyListValue>;
  using Data = std::vector<std::uint8_t>;

  std::variant<std::string, List, PropertyListDictionary, Data> content;  // strings are UTF-8
  std::size_t offset = 0;  // UTF-16 units from the start of the text to the value

  // Each is null when the value is of another kind.
  const std::string *string() const { return std::get_if<std::string>(&content); }
  const List *list() const { return std::get_if<List>(&content); }
  const PropertyListDictionary *dictionary() const {
    return std::get_if<PropertyListDictionary>(&content);
  }
  const Data *data() const { return std::get_if<Data>(&content); }
};

struct PropertyListEntry {
  std::string key;  // UTF-8
  PropertyListValue value;
};

struct PropertyListError {
  std::size_t line = 0;    // from 1; CR, LF, CR LF, U+2028 and U+2029 end a line
  std::size_t column = 0;  // from 1, in characters
  std::string reason;

  // "line 3, column 7: expected ';'"
  std::string description() const;
};

class PropertyList {
 public:
  // The outermost dictionary or list has depth 1. Deeper nesting is an error, so that no text can
  // exhaust the stack.
  static constexpr std::size_t kMaximumDepth = 64;

  // The root of the text, or nothing and the error. There is an error for: an empty text, text
  // after the root, an entry without its ';', a string, comment or data without its end, a lone
  // surrogate in a string, a \U without digits, an octal escape above \377, an odd number of
  // digits in data.
  static std::optional<PropertyListValue> parse(std::u16string_view text, PropertyListError &error);

  // For errors that only the reader of the values can see. offset: 0 to text.size().
  static PropertyListError errorAt(std::u16string_view text, std::size_t offset,
                                   std::string reason);
};

}  // namespace orvane
