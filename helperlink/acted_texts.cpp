#include "helperlink/acted_texts.h"

#include "platform/base/translation.h"

namespace drevix {

std::string TranslatedActed(std::string_view what) {
    return what.starts_with(kNothingBecause)
               ? Translated("nothing: %1", Translated(what.substr(kNothingBecause.size())))
               : Translated(what);
}

std::string ActedLine(const std::string &control, std::string_view what, std::uint32_t times) {
    const std::string done = TranslatedActed(what);
    return control + ": " +
           (times == 1 ? done : TranslatedCount("%2, %1 time", "%2, %1 times", times, {done}));
}

} // namespace drevix
