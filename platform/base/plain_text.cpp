#include "platform/base/plain_text.h"

namespace drevix {
namespace {

// The length in bytes of a control character at the start of the text; 0 for any other character. Includes
// U+0080 to U+009F, one of which starts terminal commands like escape.
std::size_t ControlLength(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    const auto second = static_cast<unsigned char>(text.size() > 1 ? text[1] : 0);
    if (first < 0x20 || first == 0x7F) {
        return 1;
    }
    return first == 0xC2 && second >= 0x80 && second < 0xA0 ? 2 : 0;
}

} // namespace

std::string PlainText(std::string_view text) {
    std::string plain;
    while (!text.empty()) {
        const std::size_t control = ControlLength(text);
        plain += control > 0 ? '?' : text[0];
        text.remove_prefix(control > 0 ? control : 1);
    }
    return plain;
}

} // namespace drevix
