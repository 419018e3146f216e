#include "cli/companion_notes.h"

#include "platform/base/plain_text.h"
#include "platform/base/translation.h"
#include "platform/files/kept_bytes.h"

#include <algorithm>

namespace drevix {
namespace {

struct Sentence {
    KorvaneFileState state;
    std::string_view text; // %1 is the file's path, %2 the status's text
};
constexpr auto kReading = std::to_array<Sentence>({
    {KorvaneFileState::ReadInPart,
     ToTranslate(
         "%1 is damaged and could be read only in part; it was not changed, and buttons I, II and III "
         "keep what they have here; let the companion dial's own program save it again")},
    {KorvaneFileState::NotRead,
     ToTranslate(
         "%1: there was not enough memory to read it; buttons I, II and III keep what they have; close "
         "other programs and try again")},
});
constexpr auto kWriting = std::to_array<Sentence>({
    {KorvaneFileState::InUse,
     ToTranslate(
         "cannot write %1: another program kept writing it; the settings are saved, but buttons I, II and "
         "III revert to that file when it is next read; try again")},
    {KorvaneFileState::TooLong,
     ToTranslate(
         "cannot write %1: it is too long; the settings are saved, but buttons I, II and III revert to "
         "that file when it is next read; remove entries with the companion dial's own program and try "
         "again")},
    {KorvaneFileState::NotWritten,
     ToTranslate(
         "cannot write %1: %2; the settings are saved, but buttons I, II and III revert to that file when "
         "it is next read; fix this and try again")},
});

// The table's message for a file's result, or null.
template <std::size_t kCount>
const Sentence *SentenceFor(const std::array<Sentence, kCount> &table, const KorvaneFileResult &result) {
    const auto *const found = std::ranges::find(table, result.state, &Sentence::state);
    return found == table.end() ? nullptr : found;
}

std::string PathOf(std::size_t row) {
    return FindKorvaneFileForApp(kKorvaneApps[row].folder);
}

void Note(const std::string &text, std::ostream &err) {
    err << PlainText("drevixctl: " + Translated("note: %1", text)) << '\n';
}

// Where a copy of what the file held is, if anywhere.
std::string KeptAs(std::size_t row, const std::string &kept) {
    return kept.empty() ? kept : "; " + Translated("what %1 held is kept as %2", PathOf(row), kept);
}

} // namespace

void NoteKorvaneReading(const KorvaneResults &results, std::ostream &err) {
    for (std::size_t row = 0; row < results.size(); ++row) {
        if (const Sentence *sentence = SentenceFor(kReading, results[row])) {
            Note(Translated(sentence->text, PathOf(row)), err);
        }
    }
}

void NoteKorvaneReplacing(const KorvaneResults &results, std::ostream &err) {
    for (std::size_t row = 0; row < results.size(); ++row) {
        const auto &[state, status, kept, seen] = results[row];
        if (state == KorvaneFileState::Replaced) {
            Note(Translated("the settings for buttons I, II and III replaced what another program had "
                            "meanwhile changed in %1",
                            PathOf(row)) +
                     KeptAs(row, kept),
                 err);
        }
    }
}

Outcome OutcomeOfKorvaneWriting(const KorvaneResults &results) {
    for (std::size_t row = 0; row < results.size(); ++row) {
        if (const Sentence *sentence = SentenceFor(kWriting, results[row])) {
            return Failed(
                Translated(sentence->text, PathOf(row), Translated(StatusText(results[row].status))) +
                KeptHotKeys());
        }
    }
    return Done();
}

std::string KeptHotKeys() {
    std::string text;
    for (std::size_t row = 0; row < kKorvaneApps.size(); ++row) {
        text += KeptAs(row, FindKeptCopy(PathOf(row)));
    }
    return text;
}

} // namespace drevix
