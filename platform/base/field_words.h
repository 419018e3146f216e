// Parses lines of hand-written files: words NAME or NAME=VALUE, separated by blanks; a value with blanks is
// in double quotes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace drevix {

// One word; points into the parsed text.
struct FieldWord {
    std::string_view name;
    std::optional<std::string_view> value; // without quotes; nullopt for a word without "="
};

// The text without leading and trailing blanks.
[[nodiscard]] std::string_view TrimmedText(std::string_view text);

// Removes the first line from a non-empty text and returns it trimmed.
[[nodiscard]] std::string_view TakeTextLine(std::string_view *text);

// Removes the first word from a non-empty trimmed line and trims the rest. False, with the reason in *problem
// (the end of a sentence), for an unclosed quote.
[[nodiscard]] bool TakeFieldWord(std::string_view *line, FieldWord *word, std::string *problem);

// A word quoted for a message, cut to 40 bytes.
[[nodiscard]] std::string QuotedWord(std::string_view word);

// Parses the whole text as a number within the bounds, decimal or hexadecimal ("0x"); nullopt for anything
// else.
[[nodiscard]] std::optional<std::int64_t> FieldNumber(std::string_view text, std::int64_t least,
                                                      std::int64_t most);

} // namespace drevix
