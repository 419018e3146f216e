#include "platform/base/translation.h"

#include <clocale>
#include <libintl.h>
#include <tuple>

namespace drevix {
namespace {

constexpr const char *kCatalogue = "drevix-settings";

// A percent sign without a value of its number stands for itself.
std::string WithValues(std::string_view text, const std::vector<std::string> &values) {
    std::string filled;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t place =
            i + 1 < text.size() ? static_cast<std::size_t>(text[i + 1] - '1') : values.size();
        if (text[i] == '%' && place < values.size()) {
            filled += values[place];
            ++i;
        } else {
            filled += text[i];
        }
    }
    return filled;
}

} // namespace

void TranslateMessages(const std::string &localeFolder) {
    std::ignore =
        std::setlocale(LC_MESSAGES, ""); // a locale that is not installed leaves the messages English
    ::bindtextdomain(kCatalogue, localeFolder.c_str());
    ::bind_textdomain_codeset(kCatalogue, "UTF-8"); // whatever the terminal takes, as our other output
}

std::string EnglishText(const Text &text) {
    return WithValues(text.text, text.values);
}

std::string Translated(const Text &text) {
    // An empty text is the catalogue's own description.
    return WithValues(text.text.empty() ? "" : ::dgettext(kCatalogue, text.text.c_str()), text.values);
}

std::string TranslatedCount(const char *one, const char *many, std::size_t count,
                            std::initializer_list<std::string> values) {
    std::vector<std::string> all{std::to_string(count)};
    all.insert(all.end(), values);
    return WithValues(::dngettext(kCatalogue, one, many, count), all);
}

} // namespace drevix
