// Prepares text for an XML parser: decodes it to UTF-8 and repairs malformed parts where possible.
#pragma once

#include "platform/base/types.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace drevix {

// The status of text that is no document.
inline constexpr OSErr kDamagedXml = -1;

// What to do with an invalid byte.
enum class BadBytes { Refuse, TakeAsMacRoman };

// Decodes the document to UTF-8 without a byte order mark, using its first bytes and declaration. noErr; -1
// for an unknown encoding or refused bytes; memFullErr.
[[nodiscard]] OSErr DecodeXml(std::string_view bytes, BadBytes badBytes, std::string *text);

// The longest allowed distance from the start of a document type declaration to the root element, since the
// parser may need quadratic time for it.
inline constexpr std::size_t kXmlMaxDocumentType = std::size_t{64} << 10; // bytes

// Turns each stray '&' and '<' into text and control characters into U+FFFD. Drops comments, processing
// instructions and misplaced declarations; turns CDATA sections into text and all references into numeric
// ones. *startTags gets the number of start tags. May throw std::bad_alloc.
[[nodiscard]] std::string MendXml(std::string_view text, std::size_t *startTags);

// Repairs UTF-8: takes each invalid byte as Mac OS Roman. May throw std::bad_alloc.
[[nodiscard]] std::string MendUtf8(std::string_view text);

// The most attributes that any one tag has.
[[nodiscard]] std::size_t MostAttributes(std::string_view text);

} // namespace drevix
