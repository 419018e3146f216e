// The words that the shell offers as completions.

#include "cli/action_names.h"
#include "cli/commands.h"
#include "cli/edit_commands.h"
#include "cli/menu_titles.h"
#include "cli/record_text.h"
#include "cli/session.h"
#include "document/history.h"
#include "platform/base/ascii.h"
#include "platform/base/plain_text.h"
#include "settings/device_prefs.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <tuple>

namespace drevix {
namespace {

using Words = std::vector<std::string>;

constexpr std::string_view kFileNames = ":";

template <class Range>
Words WordsOf(const Range &range, auto name) {
    Words words;
    for (const auto &element : range) {
        words.emplace_back(name(element));
    }
    return words;
}

constexpr auto kAsItIs = [](std::string_view word) { return word; };

Words ActionWords() {
    Words words{"none", "keystroke", "menu", "open"};
    for (const ActionInfo &action : AllActions()) {
        words.emplace_back(action.title);
    }
    return words;
}

// The words for one kind of argument.
struct KindWords {
    ArgumentKind kind;
    Words (*words)();
};
constexpr auto kKindWords = std::to_array<KindWords>({
    {ArgumentKind::Control,
     [] { return WordsOf(kControlSlots, [](const ControlSlot &slot) { return slot.key; }); }},
    {ArgumentKind::Action, ActionWords},
    {ArgumentKind::Key, [] { return WordsOf(SettingKeys(), kAsItIs); }},
    {ArgumentKind::Value,
     [] {
         return Words{"true", "false"};
     }},
    {ArgumentKind::Group, [] { return WordsOf(DefaultsGroups(), kAsItIs); }},
    {ArgumentKind::File, [] { return Words{std::string(kFileNames)}; }},
    {ArgumentKind::CommandName,
     [] { return WordsOf(AllCommands(), [](const Command &command) { return command.name; }); }},
});

Words WordsForKind(ArgumentKind kind) {
    const auto *row = std::ranges::find(kKindWords, kind, &KindWords::kind);
    return row == kKindWords.end() ? Words() : row->words();
}

// The file names of the records in the line's settings file, with the signature for all but the first of a
// name; none if the file cannot be read.
Words RecordWords(const CommandLine &line, const Surroundings &surroundings) {
    std::ostringstream ignored; // a note about a damaged file would disturb the line being typed
    const Surroundings silent{ignored, ignored, surroundings.resources};
    const Request request{*FindCommand("list"), line, {}, silent};
    Session session(request);
    Words words;
    if (session.OpenForReading().IsDone()) {
        for (const AppPrefs *record : session.Records()) {
            const std::string name = FileName(*record);
            const bool isFirst = std::ranges::none_of(
                words, [&](const std::string &word) { return IsEqualWithoutCase(word, name); });
            words.push_back(isFirst ? name : name + ":" + SignatureText(record->application));
        }
    }
    std::erase(words, "");
    return words;
}

// The companion's menu entries for the line's record.
Words MenuWords(const CommandLine &line, const Surroundings &surroundings) {
    std::ostringstream ignored;
    const Surroundings silent{ignored, ignored, surroundings.resources};
    const Request request{*FindCommand("menu"), line, {}, silent};
    Session session(request);
    RecordNumber number = kNoRecord;
    AppPrefs record{};
    const bool isFound = session.OpenForReading().IsDone() && session.Find(&number, &record).IsDone();
    return isFound ? WordsOf(MenuTitles(record).All(), kAsItIs) : Words();
}

// The numbers of the earlier settings of the line's settings file.
Words EarlierWords(const CommandLine &line) {
    std::string path = line.prefs.value_or("");
    std::vector<EarlierSettings> history;
    if (!line.prefs && FindDevicePrefsPath(&path) != noErr) {
        return {};
    }
    std::ignore = ListHistory(path, &history); // none can be offered then
    Words words;
    for (std::size_t number = 1; number <= history.size(); ++number) {
        words.push_back(std::to_string(number));
    }
    return words;
}

Words OptionWords(const Command *command) {
    Words words;
    for (const OptionInfo &option : AllOptions()) {
        if (option.bit == 0 || (command != nullptr && (command->options & option.bit) != 0)) {
            words.emplace_back(option.name);
        }
    }
    return words;
}

Words ArgumentWords(const Command &command, std::size_t place) {
    return WordsForKind(command.completes[std::min(place, command.completes.size() - 1)]);
}

Words WordsFor(std::span<const std::string> typed, const Surroundings &surroundings) {
    const std::string last = typed.empty() ? "" : typed.back();
    const auto before = typed.first(typed.empty() ? 0 : typed.size() - 1);
    const OptionInfo *waiting = before.empty() ? nullptr : FindOption(before.back());
    const bool isValue = waiting != nullptr && waiting->parameter != nullptr;
    CommandLine line;
    // Completes an incomplete line from what could be parsed.
    std::ignore = ParseCommandLine(before.first(before.size() - (isValue ? 1 : 0)), &line);
    const Command *command = line.words.empty() ? nullptr : FindCommand(line.words[0]);
    if (isValue) {
        return waiting->bit == kAppOption      ? RecordWords(line, surroundings)
               : waiting->bit == kRepeatOption ? Words{"-1", "0", "3", "6", "15", "30"} // the panel's choices
                                               : Words{std::string(kFileNames)};
    }
    if (last.starts_with('-')) {
        return OptionWords(command);
    }
    if (line.words.empty()) {
        return WordsForKind(ArgumentKind::CommandName);
    }
    if (command != nullptr && command->run == RestoreEarlier && line.words.size() == 1) {
        return EarlierWords(line);
    }
    if (command != nullptr && command->run == AssignAction && line.words.size() > 2) {
        if (line.words[2] == "menu") {
            return MenuWords(line, surroundings);
        }
        if (line.words[2] == "open") {
            return WordsForKind(ArgumentKind::File);
        }
    }
    return command == nullptr ? Words() : ArgumentWords(*command, line.words.size() - 1);
}

} // namespace

void PrintCompletions(std::span<const std::string> typed, const Surroundings &surroundings) {
    for (const std::string &word : WordsFor(typed, surroundings)) {
        surroundings.out << PlainText(word) << "\n";
    }
}

} // namespace drevix
