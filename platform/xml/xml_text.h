// What comes before an XML parser: the bytes as UTF-8, and a malformed text mended as far as can be told.
#pragma once

#include "platform/base/types.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace drevix {

// What to do with a byte that the encoding does not allow.
enum class BadBytes { Refuse, TakeAsMacRoman };

// The document as UTF-8, without a byte order mark, by its first bytes and its declaration. noErr; -1 for an
// encoding that is not known, or bytes that are refused; memFullErr.
[[nodiscard]] OSErr DecodeXml(std::string_view bytes, BadBytes badBytes, std::string *text);

// From a document type declaration's start to the root's, or a document is refused: what is within may take the
// parser time that grows with its square.
inline constexpr std::size_t kXmlMaxDocumentType = std::size_t{64} << 10; // bytes

// Makes text of each '&' and '<' that begins nothing, and U+FFFD of control characters. Comments, processing
// instructions, and declarations in the middle are left out; what is in a CDATA section becomes text. All references
// become numeric. *startTags gets the number of start tags. May throw std::bad_alloc.
[[nodiscard]] std::string MendXml(std::string_view text, std::size_t *startTags);

// UTF-8 with each byte that is wrong in it taken as Mac OS Roman. May throw std::bad_alloc.
[[nodiscard]] std::string MendUtf8(std::string_view text);

// The most attributes that any one tag has.
[[nodiscard]] std::size_t MostAttributes(std::string_view text);

} // namespace drevix
