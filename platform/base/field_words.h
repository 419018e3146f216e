// Parses lines of hand-written files: words NAME or NAME=VALUE, separated by blanks; a value with blanks is
// in double quotes.
#pragma once

#include "platform/base/translation.h"

#include <algorithm>
#include <array>
#include <cstddef>
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

// A field of a line "FIELD=VALUE ...", by its name.
template <class Object>
struct Field {
    std::string_view name;
    std::string_view form; // what its value must be, in English
    bool (*take)(std::string_view text, Object *object);
};

// Takes the next field off the front of a trimmed line that is not empty and stores its value in the object. False,
// with the reason in *problem, for a field that is none of the rows or a value that its row does not take.
template <class Object, std::size_t kRows>
[[nodiscard]] bool TakeField(const std::array<Field<Object>, kRows> &rows, std::string_view *line,
                             Object *object, std::string *problem) {
    FieldWord word;
    if (!TakeFieldWord(line, &word, problem)) {
        return false;
    }
    const auto row = std::ranges::find(rows, word.name, &Field<Object>::name);
    if (!word.value || row == rows.end()) {
        *problem = Translated("unknown field %1", QuotedWord(word.name));
        return false;
    }
    if (!row->take(*word.value, object)) {
        *problem = Translated("%1 must be %2", row->name, Translated(row->form));
        return false;
    }
    return true;
}

} // namespace drevix
