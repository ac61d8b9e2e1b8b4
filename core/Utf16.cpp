#include "core/Utf16.h"

#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <cstddef>
#include <cstdint>

namespace orvane {
namespace {

// ICU counts in 32 bits, and one UTF-16 unit takes up to three bytes of UTF-8.
constexpr std::size_t kLongestText = std::size_t{1} << 29;

enum class ByteOrder { Little, Big };

char16_t unitAt(std::string_view bytes, std::size_t at, ByteOrder order) {
  const auto first = static_cast<unsigned char>(bytes[at]);
  const auto second = static_cast<unsigned char>(bytes[at + 1]);
  return static_cast<char16_t>(order == ByteOrder::Little ? second << 8 | first
                                                          : first << 8 | second);
}

// bytes: an even number.
ByteOrder likelyByteOrder(std::string_view bytes) {
  std::size_t littleCount = 0;
  std::size_t bigCount = 0;
  for (std::size_t at = 0; at < bytes.size(); at += 2) {
    if (unitAt(bytes, at, ByteOrder::Little) < 0x100)
      ++littleCount;
    if (unitAt(bytes, at, ByteOrder::Big) < 0x100)
      ++bigCount;
  }
  return bigCount > littleCount ? ByteOrder::Big : ByteOrder::Little;
}

std::string hexadecimal(char16_t unit) {
  std::string digits;
  for (const int shift : {12, 8, 4, 0})
    digits += "0123456789ABCDEF"[unit >> shift & 0xF];
  return digits;
}

// A string, because behind its last unit it has a zero, which is no surrogate.
std::optional<std::size_t> findLoneSurrogate(const std::u16string &text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (!U16_IS_SURROGATE(text[i]))
      continue;
    if (U16_IS_SURROGATE_TRAIL(text[i]) || !U16_IS_TRAIL(text[i + 1]))
      return i;
    ++i;
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::u16string> decodeUtf16(std::string_view bytes, std::string &reason) {
  if (bytes.size() % 2 != 0) {
    reason = "odd number of bytes (" + std::to_string(bytes.size()) + "), so no UTF-16";
    return std::nullopt;
  }
  const bool littleMark = bytes.substr(0, 2) == "\xff\xfe";
  const bool bigMark = bytes.substr(0, 2) == "\xfe\xff";
  const std::size_t start = littleMark || bigMark ? 2 : 0;
  const ByteOrder order = littleMark ? ByteOrder::Little
                          : bigMark  ? ByteOrder::Big
                                     : likelyByteOrder(bytes);

  std::u16string text;
  for (std::size_t at = start; at < bytes.size(); at += 2)
    text.push_back(unitAt(bytes, at, order));

  if (const auto lone = findLoneSurrogate(text)) {
    reason = "surrogate U+" + hexadecimal(text[*lone]) + " without its partner at byte " +
             std::to_string(start + 2 * *lone);
    return std::nullopt;
  }
  return text;
}

std::optional<std::string> utf8FromUtf16(std::u16string_view text) {
  if (text.empty())
    return std::string();
  if (text.size() > kLongestText)
    return std::nullopt;
  std::string utf8(text.size() * 3, '\0');
  std::int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strToUTF8(utf8.data(), static_cast<std::int32_t>(utf8.size()), &length, text.data(),
              static_cast<std::int32_t>(text.size()), &status);
  if (U_FAILURE(status))
    return std::nullopt;
  utf8.resize(static_cast<std::size_t>(length));
  return utf8;
}

std::optional<std::u16string> utf16FromUtf8(std::string_view text) {
  if (text.empty())
    return std::u16string();
  if (text.size() > kLongestText)
    return std::nullopt;
  std::u16string utf16(text.size(), u'\0');
  std::int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strFromUTF8(utf16.data(), static_cast<std::int32_t>(utf16.size()), &length, text.data(),
                static_cast<std::int32_t>(text.size()), &status);
  if (U_FAILURE(status))
    return std::nullopt;
  utf16.resize(static_cast<std::size_t>(length));
  return utf16;
}

}  // namespace orvane
