#include "cli/companion_notes.h"

#include "platform/base/plain_text.h"

#include <algorithm>

namespace drevix {
namespace {

struct Sentence {
    KorvaneFileState state;
    std::string_view what; // follows the file's path
    std::string_view next;
};
constexpr auto kReading = std::to_array<Sentence>({
    {KorvaneFileState::ReadInPart,
     " is damaged and could be read only in part; it was not changed, and buttons I, II and III keep what "
     "they "
     "have here",
     "; let the companion dial's own program save it again"},
    {KorvaneFileState::NotRead,
     ": there was not enough memory to read it; buttons I, II and III keep what they have",
     "; close other programs and try again"},
});
constexpr std::string_view kSaved =
    "; the settings are saved, but buttons I, II and III revert to that file when it is next read";
constexpr auto kWriting = std::to_array<Sentence>({
    {KorvaneFileState::InUse, "another program kept writing it", "; try again"},
    {KorvaneFileState::TooLong, "it is too long",
     "; remove entries with the companion dial's own program and try again"},
    {KorvaneFileState::NotWritten, "", "; fix this and try again"},
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

} // namespace

void NoteKorvaneReading(const KorvaneResults &results, std::ostream &err) {
    for (std::size_t row = 0; row < results.size(); ++row) {
        if (const Sentence *sentence = SentenceFor(kReading, results[row])) {
            std::string note = "drevixctl: note: " + PathOf(row);
            err << PlainText(note.append(sentence->what).append(sentence->next)) << '\n';
        }
    }
}

Outcome OutcomeOfKorvaneWriting(const KorvaneResults &results) {
    for (std::size_t row = 0; row < results.size(); ++row) {
        if (const Sentence *sentence = SentenceFor(kWriting, results[row])) {
            const std::string_view why =
                sentence->what.empty() ? StatusText(results[row].status) : sentence->what;
            std::string message = "cannot write " + PathOf(row);
            return Failed(message.append(": ").append(why).append(kSaved).append(sentence->next));
        }
    }
    return Done();
}

} // namespace drevix
