#include "cli/menu_titles.h"

#include "companion/korvane_crc.h"
#include "companion/korvane_files.h"
#include "platform/base/ascii.h"

#include <algorithm>

namespace drevix {

MenuTitles::MenuTitles(const AppPrefs &record) {
    const auto folder = FindKorvaneName(record.application, record.appFileName.data());
    const auto list = folder ? LoadKorvaneFileForApp(*folder) : std::nullopt;
    fHasFile = list.has_value();
    if (list) {
        for (const KorvaneHotKey &hotKey : list->HotKeys) {
            fTitles.push_back(hotKey.Text(KorvaneKey::Menu));
        }
    }
}

const std::string *MenuTitles::Find(std::uint32_t crc) const {
    const auto found = std::ranges::find(fTitles, crc, KorvaneStringCRC);
    return found == fTitles.end() ? nullptr : &*found;
}

const std::string *MenuTitles::Find(std::string_view title) const {
    auto found = std::ranges::find(fTitles, title);
    if (found == fTitles.end()) {
        found = std::ranges::find_if(
            fTitles, [title](const std::string &entry) { return IsEqualWithoutCase(entry, title); });
    }
    return found == fTitles.end() ? nullptr : &*found;
}

} // namespace drevix
