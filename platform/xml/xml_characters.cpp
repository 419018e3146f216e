#include "platform/xml/xml_characters.h"

#include "platform/base/utf8.h"

#include <array>
#include <cstdint>

namespace drevix {
namespace {

enum class ByteClass : std::uint8_t { Plain, Markup, Forbidden, Sequence };

constexpr std::array<ByteClass, 256> kByteClasses = [] {
    std::array<ByteClass, 256> classes{};
    for (std::size_t byte = 0; byte < classes.size(); ++byte) {
        classes[byte] = byte >= 0x80   ? ByteClass::Sequence
                        : byte >= 0x20 ? ByteClass::Plain
                                       : ByteClass::Forbidden;
    }
    classes['\t'] = classes['\n'] = ByteClass::Plain;
    classes['&'] = classes['<'] = classes['>'] = classes['\r'] = ByteClass::Markup;
    return classes;
}();

constexpr std::string_view MarkupText(char character) {
    switch (character) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    default:
        return "&#13;";
    }
}

// Whether a multi-byte character is kept: well-formed, and allowed by XML.
bool IsAllowed(char32_t character) {
    return character != kMalformedUtf8 && character != 0xFFFE && character != 0xFFFF;
}

} // namespace

void AppendCharacters(std::string &out, std::string_view text) {
    std::string_view rest = text;
    std::string_view kept = text; // the part not in `out` yet
    while (!rest.empty()) {
        const char first = rest.front();
        const ByteClass kind = kByteClasses[static_cast<std::uint8_t>(first)];
        if (kind == ByteClass::Plain) {
            rest.remove_prefix(1);
            continue;
        }
        const std::size_t before = kept.size() - rest.size();
        if (const char32_t character = TakeUtf8(&rest); kind == ByteClass::Sequence && IsAllowed(character)) {
            continue;
        }
        out.append(kept, 0, before);
        out += kind == ByteClass::Markup ? MarkupText(first) : kReplacement;
        kept = rest;
    }
    out += kept;
}

} // namespace drevix
