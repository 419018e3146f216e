#include "platform/base/utf8.h"

#include <cstdint>

namespace drevix {

char32_t TakeUtf8(std::string_view *text) {
    const auto first = static_cast<std::uint8_t>((*text)[0]);
    text->remove_prefix(1);
    if (first < 0x80) {
        return first;
    }
    if (first < 0xC2 || first > 0xF4) {
        return kMalformedUtf8;
    }
    const int more = first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
    char32_t character = first & (0x3F >> more);
    // The second byte's narrower range excludes overlong forms, surrogates and characters above U+10FFFF.
    std::uint8_t low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    std::uint8_t high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    for (int i = 0; i < more; ++i, low = 0x80, high = 0xBF) {
        if (text->empty()) {
            return kMalformedUtf8;
        }
        const auto next = static_cast<std::uint8_t>((*text)[0]);
        if (next < low || next > high) {
            return kMalformedUtf8;
        }
        character = (character << 6) | (next & 0x3F);
        text->remove_prefix(1);
    }
    return character;
}

void AppendUtf8(std::string *text, char32_t character) {
    const auto put = [text](char32_t byte) { text->push_back(static_cast<char>(byte)); };
    if (character < 0x80) {
        return put(character);
    }
    if (character < 0x800) {
        put(0xC0 | (character >> 6));
    } else if (character < 0x10000) {
        put(0xE0 | (character >> 12));
        put(0x80 | ((character >> 6) & 0x3F));
    } else {
        put(0xF0 | (character >> 18));
        put(0x80 | ((character >> 12) & 0x3F));
        put(0x80 | ((character >> 6) & 0x3F));
    }
    put(0x80 | (character & 0x3F));
}

} // namespace drevix
