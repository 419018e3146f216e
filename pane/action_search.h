// Finds an action by its name: the matching alone, without a window.
#pragma once

#include "settings/action_commands.h"

#include <QString>

#include <vector>

namespace drevix {

// One action that the menus offer.
struct SearchEntry {
    int position;          // in the action menu
    const GroupMenu *menu; // the group menu that it stands in, null for an entry of the action menu itself
    int menuPosition;      // in that menu
    ActionCommand command;
    QString title;
    QString group; // in words, empty when it says nothing more than the title
};

// Every action of the menus, in their order, in the user's language.
[[nodiscard]] std::vector<SearchEntry> SearchEntries();

// A part of a title.
struct TextPart {
    qsizetype start;
    qsizetype length;
};
struct FoundAction {
    std::size_t entry;           // in the entries
    std::vector<TextPart> parts; // of its title that the query names, in ascending order
};

// The entries whose title or group has every word of the query, ignoring letter case. First those whose title
// begins with the query, then those with its words at the beginnings of words, then the rest. All entries for
// an empty query.
[[nodiscard]] std::vector<FoundAction> FindActions(const std::vector<SearchEntry> &entries,
                                                   const QString &query);

} // namespace drevix
