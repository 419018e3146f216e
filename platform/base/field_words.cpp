#include "platform/base/field_words.h"

#include "platform/base/translation.h"

#include <algorithm>
#include <charconv>

namespace drevix {
namespace {

constexpr std::string_view kBlanks = " \t\r";
constexpr std::size_t kShownBytes = 40;

// The position of the next of these characters, or the text's length.
std::size_t FindOrEnd(std::string_view text, std::string_view characters, std::size_t start = 0) {
    return std::min(text.find_first_of(characters, start), text.size());
}

} // namespace

std::string_view TrimmedText(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == text.npos ? std::string_view()
                              : text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

std::string_view TakeTextLine(std::string_view *text) {
    const std::size_t end = FindOrEnd(*text, "\n");
    const std::string_view line = text->substr(0, end);
    text->remove_prefix(std::min(end + 1, text->size()));
    return TrimmedText(line);
}

bool TakeFieldWord(std::string_view *line, FieldWord *word, std::string *problem) {
    const std::size_t nameEnd = FindOrEnd(*line, "= \t\r");
    const std::string_view name = line->substr(0, nameEnd);
    const bool hasValue = nameEnd < line->size() && (*line)[nameEnd] == '=';
    std::size_t start = nameEnd + (hasValue ? 1 : 0);
    std::size_t end = start;
    if (hasValue) {
        const bool isQuoted = line->substr(start).starts_with('"');
        start += isQuoted ? 1 : 0;
        end = FindOrEnd(*line, isQuoted ? "\"" : kBlanks, start);
        if (isQuoted && end == line->size()) {
            *problem = Translated("the quote of %1 is not closed", name);
            return false;
        }
    }
    *word = {name, hasValue ? std::optional(line->substr(start, end - start)) : std::nullopt};
    *line = TrimmedText(line->substr(std::min(end + 1, line->size())));
    return true;
}

std::string QuotedWord(std::string_view word) {
    return '"' + std::string(word.substr(0, kShownBytes)) + '"';
}

std::optional<std::int64_t> FieldNumber(std::string_view text, std::int64_t least, std::int64_t most) {
    const bool isNegative = text.starts_with('-');
    text.remove_prefix(isNegative ? 1 : 0);
    const bool isHex = text.starts_with("0x");
    text.remove_prefix(isHex ? 2 : 0);
    std::uint32_t size = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), size, isHex ? 16 : 10);
    const std::int64_t number = isNegative ? -std::int64_t{size} : std::int64_t{size};
    const bool isNumber = error == std::errc() && stop == text.data() + text.size();
    return isNumber && number >= least && number <= most ? std::optional(number) : std::nullopt;
}

} // namespace drevix
