// Lines of words, as the files have them that people write: a word is NAME or NAME=VALUE, blanks stand between
// words, and a value with blanks stands in double quotes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace drevix {

// One word; a part of the text that it was taken from.
struct FieldWord {
    std::string_view name;
    std::optional<std::string_view> value; // without its quotes; nothing for a word without "="
};

// A text without the blanks at its ends.
[[nodiscard]] std::string_view TrimmedText(std::string_view text);

// Takes the next line off the front of a text, which is not empty, and gives it trimmed.
[[nodiscard]] std::string_view TakeTextLine(std::string_view *text);

// Takes the next word off the front of a trimmed line that is not empty; the line is trimmed again then. False,
// with the reason in *problem (the rest of a sentence), for a quote that is not closed.
[[nodiscard]] bool TakeFieldWord(std::string_view *line, FieldWord *word, std::string *problem);

// A word as it is quoted in a message: cut to 40 bytes.
[[nodiscard]] std::string QuotedWord(std::string_view word);

// The whole text as a number between the two bounds, decimal, or hexadecimal with "0x" in front; nothing for any
// other text.
[[nodiscard]] std::optional<std::int64_t> FieldNumber(std::string_view text, std::int64_t least,
                                                      std::int64_t most);

} // namespace drevix
