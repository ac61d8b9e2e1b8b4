#include "core/PropertyList.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <utility>

#include "core/Utf16.h"

namespace orvane {
namespace {

// The characters that octal escapes from \200 up stand for in this format; the last two are
// unassigned.
constexpr std::array<char16_t, 128> kHighOctal = {
    0x00A0, 0x00C0, 0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C7, 0x00C8, 0x00C9, 0x00CA, 0x00CB,
    0x00CC, 0x00CD, 0x00CE, 0x00CF, 0x00D0, 0x00D1, 0x00D2, 0x00D3, 0x00D4, 0x00D5, 0x00D6, 0x00D9,
    0x00DA, 0x00DB, 0x00DC, 0x00DD, 0x00DE, 0x00B5, 0x00D7, 0x00F7, 0x00A9, 0x00A1, 0x00A2, 0x00A3,
    0x2044, 0x00A5, 0x0192, 0x00A7, 0x00A4, 0x2019, 0x201C, 0x00AB, 0x2039, 0x203A, 0xFB01, 0xFB02,
    0x00AE, 0x2013, 0x2020, 0x2021, 0x00B7, 0x00A6, 0x00B6, 0x2022, 0x201A, 0x201E, 0x201D, 0x00BB,
    0x2026, 0x2030, 0x00AC, 0x00BF, 0x00B9, 0x02CB, 0x00B4, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9,
    0x00A8, 0x00B2, 0x02DA, 0x00B8, 0x00B3, 0x02DD, 0x02DB, 0x02C7, 0x2014, 0x00B1, 0x00BC, 0x00BD,
    0x00BE, 0x00E0, 0x00E1, 0x00E2, 0x00E3, 0x00E4, 0x00E5, 0x00E7, 0x00E8, 0x00E9, 0x00EA, 0x00EB,
    0x00EC, 0x00C6, 0x00ED, 0x00AA, 0x00EE, 0x00EF, 0x00F0, 0x00F1, 0x0141, 0x00D8, 0x0152, 0x00BA,
    0x00F2, 0x00F3, 0x00F4, 0x00F5, 0x00F6, 0x00E6, 0x00F9, 0x00FA, 0x00FB, 0x0131, 0x00FC, 0x00FD,
    0x0142, 0x00F8, 0x0153, 0x00DF, 0x00FE, 0x00FF, 0xFFFD, 0xFFFD};

bool isSpace(char16_t unit) {
  return (unit >= 0x09 && unit <= 0x0D) || unit == u' ' || unit == 0x2028 || unit == 0x2029;
}

bool isBare(char16_t unit) {
  return (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z') ||
         (unit >= u'0' && unit <= u'9') ||
         std::u16string_view(u"_$/:.-+").find(unit) != std::u16string_view::npos;
}

bool isQuote(char16_t unit) {
  return unit == u'"' || unit == u'\'';
}

bool isOctal(char16_t unit) {
  return unit >= u'0' && unit <= u'7';
}

std::optional<unsigned> hexDigit(char16_t unit) {
  if (unit >= u'0' && unit <= u'9')
    return unit - u'0';
  if (unit >= u'A' && unit <= u'F')
    return unit - u'A' + 10U;
  if (unit >= u'a' && unit <= u'f')
    return unit - u'a' + 10U;
  return std::nullopt;
}

class Parser {
 public:
  Parser(std::u16string_view text, PropertyListError &error) : mText(text), mError(error) {}

  bool parseRoot(PropertyListValue &root) {
    if (!skipSpace())
      return false;
    if (atEnd())
      return fail(mOffset, "the text is empty");
    if (!parseValue(root, 0) || !skipSpace())
      return false;
    if (!atEnd())
      return fail(mOffset, "text after the end of the property list");
    return true;
  }

 private:
  bool atEnd() const { return mOffset == mText.size(); }
  bool at(char16_t unit) const { return !atEnd() && mText[mOffset] == unit; }
  bool at(std::u16string_view text) const { return mText.substr(mOffset).starts_with(text); }

  bool fail(std::size_t offset, const char *reason) {
    mError = PropertyList::errorAt(mText, offset, reason);
    return false;
  }

  // Goes past white space and comments.
  bool skipSpace() {
    while (!atEnd()) {
      if (isSpace(mText[mOffset])) {
        ++mOffset;
      } else if (at(u"//")) {
        mOffset = std::min(mText.find_first_of(u"\n\r\u2028\u2029", mOffset), mText.size());
      } else if (at(u"/*")) {
        const std::size_t end = mText.find(u"*/", mOffset + 2);
        if (end == std::u16string_view::npos)
          return fail(mOffset, "comment has no end");
        mOffset = end + 2;
      } else {
        break;
      }
    }
    return true;
  }

  // depth: how many dictionaries and lists the value stands in.
  bool parseValue(PropertyListValue &value, std::size_t depth) {
    value.offset = mOffset;
    if (at(u'{') || at(u'(')) {
      if (depth == PropertyList::kMaximumDepth)
        return fail(mOffset, "nested more than 64 levels deep");
      if (at(u'{'))
        return parseDictionary(value.content.emplace<PropertyListDictionary>(), depth + 1);
      return parseList(value.content.emplace<PropertyListValue::List>(), depth + 1);
    }
    if (at(u'<'))
      return parseData(value.content.emplace<PropertyListValue::Data>());
    return parseString(value.content.emplace<std::string>(), "expected a value");
  }

  bool parseDictionary(PropertyListDictionary &dictionary, std::size_t depth) {
    std::unordered_map<std::string, std::size_t> places;
    ++mOffset;
    for (;;) {
      if (!skipSpace())
        return false;
      if (at(u'}')) {
        ++mOffset;
        return true;
      }
      PropertyListEntry entry;
      if (!parseString(entry.key, "expected a key or '}'") || !expect(u'=', "expected '='") ||
          !skipSpace() || !parseValue(entry.value, depth) || !expect(u';', "expected ';'"))
        return false;
      const auto [place, isNew] = places.try_emplace(entry.key, dictionary.entries.size());
      if (isNew)
        dictionary.entries.push_back(std::move(entry));
      else
        dictionary.entries[place->second].value = std::move(entry.value);
    }
  }

  bool parseList(PropertyListValue::List &list, std::size_t depth) {
    ++mOffset;
    for (;;) {
      if (!skipSpace())
        return false;
      if (at(u')')) {
        ++mOffset;
        return true;
      }
      if (!parseValue(list.emplace_back(), depth) || !skipSpace())
        return false;
      if (at(u','))
        ++mOffset;
      else if (!at(u')'))
        return fail(mOffset, "expected ',' or ')'");
    }
  }

  bool parseData(PropertyListValue::Data &data) {
    const std::size_t start = mOffset++;
    std::size_t digitCount = 0;
    for (; !atEnd() && !at(u'>'); ++mOffset) {
      if (isSpace(mText[mOffset]))
        continue;
      const auto digit = hexDigit(mText[mOffset]);
      if (!digit)
        return fail(mOffset, "expected a hexadecimal digit or '>'");
      if (digitCount++ % 2 == 0)
        data.push_back(static_cast<std::uint8_t>(*digit << 4));
      else
        data.back() = static_cast<std::uint8_t>(data.back() | *digit);
    }
    if (atEnd())
      return fail(start, "data has no end");
    if (digitCount % 2 != 0)
      return fail(start, "data has an odd number of hexadecimal digits");
    ++mOffset;
    return true;
  }

  bool parseString(std::string &string, const char *otherwise) {
    const std::size_t start = mOffset;
    std::u16string units;
    if (!atEnd() && isQuote(mText[mOffset])) {
      if (!parseQuoted(units))
        return false;
    } else {
      // A slash may stand in a bare string; with a star behind it, it can only begin a comment.
      while (!atEnd() && isBare(mText[mOffset]) && !at(u"/*"))
        units.push_back(mText[mOffset++]);
      if (units.empty())
        return fail(start, otherwise);
    }
    auto utf8 = utf8FromUtf16(units);
    if (!utf8)
      return fail(start, "string has a surrogate without its partner");
    string = std::move(*utf8);
    return true;
  }

  bool parseQuoted(std::u16string &units) {
    const std::size_t start = mOffset;
    const char16_t quote = mText[mOffset++];
    while (!atEnd() && !at(quote)) {
      if (!at(u'\\'))
        units.push_back(mText[mOffset++]);
      else if (!parseEscape(units, start))
        return false;
    }
    if (atEnd())
      return fail(start, "string has no end");
    ++mOffset;
    return true;
  }

  bool parseEscape(std::u16string &units, std::size_t stringStart) {
    const std::size_t start = mOffset++;
    if (atEnd())
      return fail(stringStart, "string has no end");
    const char16_t unit = mText[mOffset];
    if (isOctal(unit))
      return parseOctal(units, start);
    ++mOffset;
    switch (unit) {
      case u'a':
        units.push_back(u'\a');
        return true;
      case u'b':
        units.push_back(u'\b');
        return true;
      case u'f':
        units.push_back(u'\f');
        return true;
      case u'n':
        units.push_back(u'\n');
        return true;
      case u'r':
        units.push_back(u'\r');
        return true;
      case u't':
        units.push_back(u'\t');
        return true;
      case u'v':
        units.push_back(u'\v');
        return true;
      case u'U':
        return parseUnit(units, start);
      default:
        units.push_back(unit);
        return true;
    }
  }

  bool parseOctal(std::u16string &units, std::size_t start) {
    unsigned code = 0;
    for (int i = 0; i < 3 && !atEnd() && isOctal(mText[mOffset]); ++i)
      code = code * 8 + (mText[mOffset++] - u'0');
    if (code > 0377)
      return fail(start, "octal escape above \\377");
    units.push_back(code < 0200 ? static_cast<char16_t>(code) : kHighOctal[code - 0200]);
    return true;
  }

  bool parseUnit(std::u16string &units, std::size_t start) {
    unsigned code = 0;
    int digitCount = 0;
    for (; digitCount < 4 && !atEnd(); ++digitCount, ++mOffset) {
      const auto digit = hexDigit(mText[mOffset]);
      if (!digit)
        break;
      code = code << 4 | *digit;
    }
    if (digitCount == 0)
      return fail(start, "\\U without a hexadecimal digit");
    units.push_back(static_cast<char16_t>(code));
    return true;
  }

  bool expect(char16_t unit, const char *otherwise) {
    if (!skipSpace())
      return false;
    if (!at(unit))
      return fail(mOffset, otherwise);
    ++mOffset;
    return true;
  }

  std::u16string_view mText;
  PropertyListError &mError;
  std::size_t mOffset = 0;
};

}  // namespace

const PropertyListValue *PropertyListDictionary::find(std::string_view key) const {
  for (const PropertyListEntry &entry : entries) {
    if (entry.key == key)
      return &entry.value;
  }
  return nullptr;
}

std::string PropertyListError::description() const {
  return "line " + std::to_string(line) + ", column " + std::to_string(column) + ": " + reason;
}

std::optional<PropertyListValue> PropertyList::parse(std::u16string_view text,
                                                     PropertyListError &error) {
  PropertyListValue root;
  if (!Parser(text, error).parseRoot(root))
    return std::nullopt;
  return root;
}

PropertyListError PropertyList::errorAt(std::u16string_view text, std::size_t offset,
                                        std::string reason) {
  PropertyListError error{1, 1, std::move(reason)};
  const auto isIn = [](char16_t unit, char16_t first, char16_t last) {
    return unit >= first && unit <= last;
  };
  for (std::size_t i = 0; i < offset; ++i) {
    const char16_t unit = text[i];
    const char16_t next = i + 1 < text.size() ? text[i + 1] : u'\0';
    if (unit == u'\r' && next == u'\n')
      continue;
    if (unit == u'\n' || unit == u'\r' || unit == 0x2028 || unit == 0x2029) {
      ++error.line;
      error.column = 1;
    } else if (!(isIn(unit, 0xD800, 0xDBFF) && isIn(next, 0xDC00, 0xDFFF))) {
      // The second half of a pair counts for both.
      ++error.column;
    }
  }
  return error;
}

}  // namespace orvane
