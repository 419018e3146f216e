#include "platform/xml_characters.h"

#include "platform/utf8.h"

#include <array>
#include <cstdint>

namespace drevix {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD"; // U+FFFD

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

// The length of the character of several bytes that `text` starts with; 0 when it is malformed or forbidden.
std::size_t AllowedLength(std::string_view text) {
    std::string_view rest = text;
    const char32_t character = TakeUtf8(&rest);
    const bool isAllowed = character != kMalformedUtf8 && character != 0xFFFE && character != 0xFFFF;
    return isAllowed ? text.size() - rest.size() : 0;
}

} // namespace

void AppendCharacters(std::string &out, std::string_view text) {
    std::size_t copied = 0; // text before is in `out`
    for (std::size_t i = 0; i < text.size();) {
        const ByteClass kind = kByteClasses[static_cast<std::uint8_t>(text[i])];
        if (kind == ByteClass::Plain) {
            ++i;
            continue;
        }
        if (const std::size_t length = kind == ByteClass::Sequence ? AllowedLength(text.substr(i)) : 0;
            length > 0) {
            i += length;
            continue;
        }
        out.append(text, copied, i - copied);
        out += kind == ByteClass::Markup ? MarkupText(text[i]) : kReplacement;
        ++i;
        copied = i;
    }
    out.append(text, copied);
}

} // namespace drevix
