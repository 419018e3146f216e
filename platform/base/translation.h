// Messages of the programs for a terminal, in the language of the person who reads them: GNU gettext's catalogues, made from
// po/ and, for texts that the panel has too, from its translations.
//
// Texts are written in English where they stand. scripts/make_catalogue and its test gather the literals that are the first
// arguments of Translated, TranslatedCount and Text, and those within ToTranslate and Marked ("platform/base/marked_text.h").
#pragma once

#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// From now on messages are in the language that LC_ALL, LC_MESSAGES, LANG and LANGUAGE ask for, if the folder ("share/locale") has a
// catalogue for it and the system has the locale. Nothing else follows the locale, such as how numbers are written. Call it once,
// before other threads start.
void TranslateMessages(const std::string &localeFolder);

// Marks a text that is translated elsewhere, by Translated.
constexpr const char *ToTranslate(const char *text) {
    return text;
}

// A text whose reader is not known yet, who may be a person or a program: %1 to %9 stand for the values.
struct Text {
    std::string text; // in English
    std::vector<std::string> values;
};
[[nodiscard]] std::string EnglishText(const Text &text);
[[nodiscard]] std::string Translated(const Text &text);

enum class Reader : bool { Person, Program };
[[nodiscard]] inline std::string TextFor(Reader reader, const Text &text) {
    return reader == Reader::Person ? Translated(text) : EnglishText(text);
}

// A value in a text: words as they are, a number in digits.
inline std::string ValueText(std::string_view text) {
    return std::string(text);
}
template <std::integral Number>
std::string ValueText(Number number) {
    return std::to_string(number);
}

// The text in the person's language, or as it is if that has no translation of it. %1 to %9 stand for the values.
template <class... Values>
[[nodiscard]] std::string Translated(std::string_view text, const Values &...values) {
    return Translated(Text{std::string(text), {ValueText(values)...}});
}

// The text for one thing or for many, as the language counts. %1 stands for the count, %2 to %9 for the values.
[[nodiscard]] std::string TranslatedCount(const char *one, const char *many, std::size_t count,
                                          std::initializer_list<std::string> values = {});

} // namespace drevix
