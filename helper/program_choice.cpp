#include "helper/program_choice.h"

#include "platform/desktop/desktop_entries.h"

#include <algorithm>

namespace drevix {
namespace {

std::vector<std::string> PartsOf(std::string_view list) {
    std::vector<std::string> parts;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(';'), list.size());
        if (end > 0) {
            parts.emplace_back(list.substr(0, end));
        }
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return parts;
}

bool HasCategories(const DesktopEntry &entry, const std::vector<std::string> &wanted) {
    const std::vector<std::string> own = PartsOf(entry.categories);
    return std::ranges::all_of(
        wanted, [&](const std::string &category) { return std::ranges::find(own, category) != own.end(); });
}

bool FindByCategories(std::string_view categories, DesktopEntry *entry) {
    const std::vector<std::string> wanted = PartsOf(categories);
    std::vector<DesktopEntry> entries;
    if (!wanted.empty()) {
        entries = InstalledApplications(MessagesLocale());
    }
    std::erase_if(entries, [&](const DesktopEntry &candidate) { return !HasCategories(candidate, wanted); });
    const auto first = std::ranges::min_element(entries, {}, &DesktopEntry::id);
    if (first != entries.end()) {
        *entry = *first;
    }
    return first != entries.end();
}

bool FindByEntries(std::string_view entries, DesktopEntry *entry) {
    return std::ranges::any_of(PartsOf(entries), [&](const std::string &name) {
        return FindDesktopEntry(name + ".desktop", MessagesLocale(), entry);
    });
}

} // namespace

std::vector<std::string> CommandOfKind(const ProgramKind &kind) {
    DesktopEntry entry;
    const bool isFound = (!kind.type.empty() && FindDefaultApplication(kind.type, &entry)) ||
                         FindByEntries(kind.entries, &entry) || FindByCategories(kind.categories, &entry);
    return isFound ? CommandOfEntry(entry) : std::vector<std::string>();
}

} // namespace drevix
