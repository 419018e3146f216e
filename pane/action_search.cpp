#include "pane/action_search.h"

#include "pane/pane_text.h"

#include <QStringList>

#include <algorithm>
#include <optional>
#include <utility>

namespace drevix {
namespace {

// Smaller is better.
enum class Rank : std::uint8_t { StartOfTitle, StartOfWords, InTitle, InGroup };

struct Match {
    Rank rank;
    std::vector<TextPart> parts;
};

bool IsStartOfWord(const QString &text, qsizetype at) {
    return at == 0 || !text[at - 1].isLetterOrNumber();
}

// Where a text has a word: at the start of one of its words, else anywhere; -1 if nowhere.
qsizetype PlaceOfWord(const QString &text, const QString &word) {
    const qsizetype first = text.indexOf(word, 0, Qt::CaseInsensitive);
    for (qsizetype at = first; at >= 0; at = text.indexOf(word, at + 1, Qt::CaseInsensitive)) {
        if (IsStartOfWord(text, at)) {
            return at;
        }
    }
    return first;
}

std::optional<Match> MatchEntry(const SearchEntry &entry, const QStringList &words, const QString &query) {
    Match match{Rank::StartOfWords, {}};
    for (const QString &word : words) {
        const qsizetype at = PlaceOfWord(entry.title, word);
        if (at < 0 && !entry.group.contains(word, Qt::CaseInsensitive)) {
            return std::nullopt;
        }
        const Rank rank = at < 0                           ? Rank::InGroup
                          : IsStartOfWord(entry.title, at) ? Rank::StartOfWords
                                                           : Rank::InTitle;
        match.rank = std::max(match.rank, rank);
        if (at >= 0) {
            match.parts.push_back({at, word.size()});
        }
    }
    if (entry.title.startsWith(query, Qt::CaseInsensitive)) {
        match.rank = Rank::StartOfTitle;
    }
    std::ranges::sort(match.parts, {}, &TextPart::start);
    return match;
}

SearchEntry PlainEntry(int position, ActionCommand command) {
    return {position, nullptr, kMenuNotFound, command, TranslatedText(ActionMenuTitle(position)), {}};
}

void AddGroup(std::vector<SearchEntry> &entries, const GroupMenu &menu) {
    const QString group = TranslatedText(ActionGroupTitle(menu.group));
    for (int i = 0; i < static_cast<int>(menu.codes.size()); ++i) {
        if (const ActionCommand command = CommandForGroupMenu(menu, i); command != kActionNone) {
            entries.push_back({static_cast<int>(menu.entry), &menu, i, command,
                               TranslatedText(FindAction(command)->title), group});
        }
    }
}

} // namespace

std::vector<SearchEntry> SearchEntries() {
    constexpr std::size_t kRoughly = 100;
    std::vector<SearchEntry> entries;
    entries.reserve(kRoughly);
    for (int i = 0; i < kActionMenuPositions; ++i) {
        const std::size_t before = entries.size();
        for (const GroupMenu &menu : GroupMenus()) {
            if (static_cast<int>(menu.entry) == i) {
                AddGroup(entries, menu);
            }
        }
        if (entries.size() == before && !ActionMenuTitle(i).empty()) {
            entries.push_back(PlainEntry(i, CommandForActionMenu(i, kNoSlot)));
        }
    }
    return entries;
}

std::vector<FoundAction> FindActions(const std::vector<SearchEntry> &entries, const QString &query) {
    struct Ranked {
        Rank rank;
        FoundAction found;
    };
    const QString wanted = query.simplified();
    const QStringList words = wanted.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    std::vector<Ranked> ranked;
    ranked.reserve(entries.size());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (auto match = MatchEntry(entries[i], words, wanted)) {
            ranked.push_back({match->rank, {i, std::move(match->parts)}});
        }
    }
    std::ranges::stable_sort(ranked, {}, &Ranked::rank);
    std::vector<FoundAction> found;
    found.reserve(ranked.size());
    for (Ranked &one : ranked) {
        found.push_back(std::move(one.found));
    }
    return found;
}

} // namespace drevix
