// UTF-16 files in, UTF-8 out: the tuner's text resources are UTF-16, everything the user sees is
// UTF-8. Both directions are strict, so that a damaged name is reported and never shown.
// Any thread; not real-time safe (allocates).
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvane {

// The code units of a UTF-16 file in either byte order, without the byte-order mark. A file without
// a mark is read in the order that gives more code units below U+0100; a tie is little endian.
// No bytes give an empty text. Nothing, and the reason, for an odd number of bytes and for a
// surrogate without its partner.
std::optional<std::u16string> decodeUtf16(std::string_view bytes, std::string &reason);

// Nothing when the text has a surrogate without its partner or more than 2^29 code units.
std::optional<std::string> utf8FromUtf16(std::u16string_view text);

// Nothing when the text is no valid UTF-8 or has more than 2^29 bytes.
std::optional<std::u16string> utf16FromUtf8(std::string_view text);

}  // namespace orvane
