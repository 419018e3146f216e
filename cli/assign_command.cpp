// The command that binds a control to an action.

#include "cli/action_names.h"
#include "cli/commands.h"
#include "cli/menu_titles.h"
#include "cli/session.h"
#include "companion/korvane_crc.h"
#include "companion/korvane_files.h"
#include "keyboard/key_names.h"
#include "platform/base/plain_text.h"
#include "platform/base/translation.h"
#include "platform/catalog/named_files.h"
#include "platform/plist/json.h"
#include "util/items/items_folder.h"
#include "wording/action_text.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace drevix {
namespace {

// The action to put into a slot.
struct Choice {
    ActionCommand command = kActionNone;
    std::uint16_t modifiers = 0;
    std::uint8_t keyCode = kNoKeyCode;
    std::uint16_t delay = 0;
    std::string menuTitle;
    std::string itemPath;
};

Outcome ParseNone(const std::string &rest, Choice * /*choice*/) {
    return rest.empty() ? Done() : WrongUsage(Translated("none takes nothing after it"));
}

Outcome ParseKeystroke(const std::string &rest, Choice *choice) {
    choice->command = kActionKeystroke;
    GetKeyboardInformation();
    if (ParseKeyCombination(rest, &choice->keyCode, &choice->modifiers)) {
        return Done();
    }
    if (const AmbiguousKeyName *key = FindAmbiguousKeyName(rest)) {
        return WrongUsage(Translated("%1 could be two keys; write %2 or %3", QuotedText(key->name), key->ours,
                                     key->onKeyboard));
    }
    return WrongUsage(
        Translated("%1 is not a key of this keyboard layout; write it like cmd+shift+s", QuotedText(rest)));
}

Outcome ParseMenu(const std::string &rest, Choice *choice) {
    choice->command = kActionToolMenu;
    choice->menuTitle = rest;
    return Done();
}

Outcome ParseOpen(const std::string &rest, Choice *choice) {
    choice->command = kActionOpenItem;
    choice->itemPath = rest;
    return Done();
}

// The words that start an action with a parameter.
struct ActionKeyword {
    std::string_view word;
    std::string_view parameter;
    ActionCommand command; // can be chosen with this word only
    Outcome (*parse)(const std::string &rest, Choice *choice);
};
constexpr auto kKeywords = std::to_array<ActionKeyword>({
    {"none", "", kActionNone, ParseNone},
    {"keystroke", "KEY", kActionKeystroke, ParseKeystroke},
    {"menu", "TITLE", kActionToolMenu, ParseMenu},
    {"open", "PATH", kActionOpenItem, ParseOpen},
});

Outcome NeedsParameter(const ActionKeyword &keyword) {
    const std::string written = std::string(keyword.word) + " " + std::string(keyword.parameter);
    // "open" is also the name of a shortcut.
    if (const ActionInfo *action = FindActionByTitle(keyword.word, TitleMatch::Whole);
        action != nullptr && action->code != keyword.command) {
        return WrongUsage(Translated("incomplete action: write %1, or %2 for the action %3", written,
                                     action->code, QuotedText(action->title)));
    }
    return WrongUsage(Translated("incomplete action: write %1", written));
}

std::string Joined(std::span<const std::string> words) {
    std::string text;
    for (const std::string &word : words) {
        text.append(text.empty() ? "" : " ").append(word);
    }
    return text;
}

// Removes the modifiers ("+shift") from the end of the words.
Outcome TakeModifiers(std::span<const std::string> *words, std::uint16_t *modifiers) {
    while (words->size() > 1 && words->back().starts_with('+')) {
        std::uint16_t more = 0;
        if (!ParseModifiers(words->back(), &more)) {
            return WrongUsage(Translated("unknown modifier %1; use cmd, shift, caps, opt or ctrl",
                                         QuotedText(words->back())));
        }
        *modifiers |= more;
        *words = words->first(words->size() - 1);
    }
    return Done();
}

const ActionInfo *FindActionByNumber(const std::string &text) {
    ActionCommand code = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), code);
    return error == std::errc() && end == text.data() + text.size() ? FindAction(code) : nullptr;
}

// An action by its title, number, or the beginning of its title.
Outcome ParseNamedAction(std::span<const std::string> words, Choice *choice) {
    if (Outcome outcome = TakeModifiers(&words, &choice->modifiers); !outcome.IsDone()) {
        return outcome;
    }
    const std::string name = Joined(words);
    bool several = false;
    const ActionInfo *action = FindActionByTitle(name, TitleMatch::Whole);
    action = action != nullptr ? action : FindActionByNumber(name);
    action = action != nullptr ? action : FindActionByTitle(name, TitleMatch::Beginning, &several);
    if (action == nullptr) {
        return WrongUsage(
            several ? Translated("several actions begin with %1; 'drevixctl actions' lists them all",
                                 QuotedText(name))
                    : Translated("unknown action %1; 'drevixctl actions' lists them all", QuotedText(name)));
    }
    const auto *keyword = std::ranges::find(kKeywords, action->code, &ActionKeyword::command);
    if (keyword != kKeywords.end() && action->code != kActionNone) {
        return NeedsParameter(*keyword);
    }
    if (choice->modifiers != 0 && action->group != ActionGroup::ActionScroll) {
        return WrongUsage(Translated("only scrolling takes modifiers"));
    }
    choice->command = action->code;
    return Done();
}

Outcome ParseAction(std::span<const std::string> words, Choice *choice) {
    const auto *keyword = std::ranges::find(kKeywords, words[0], &ActionKeyword::word);
    const std::string name = Joined(words);
    const ActionInfo *named = FindActionByTitle(name, TitleMatch::Whole);
    // "open mail" is an action, but "open" alone is not: only "Open", exactly as listed.
    const bool isNamed = named != nullptr && (name != words[0] || name == named->title);
    if (keyword == kKeywords.end() || isNamed) {
        return ParseNamedAction(words, choice);
    }
    const std::string rest = Joined(words.subspan(1));
    return rest.empty() && !keyword->parameter.empty() ? NeedsParameter(*keyword)
                                                       : keyword->parse(rest, choice);
}

// Parses --repeat, a delay in ticks. The tuner does not repeat: it is turned.
Outcome ParseRepeat(const std::string &text, const ControlSlot &control, Choice *choice) {
    constexpr std::int32_t kMostTicks = 65534; // the one above means that the key stays pressed
    const bool isKeystroke = choice->command == kActionKeystroke;
    const bool isScroll = IsScrolling(choice->command);
    if ((!isKeystroke && !isScroll) || control.group == ControlGroup::Tuner) {
        return WrongUsage(
            Translated("only keystrokes and scrolling on the ring and the buttons take --repeat"));
    }
    std::int32_t ticks = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), ticks);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    if (!isNumber || ticks > kMostTicks || ticks < (isKeystroke ? -1 : 0)) {
        return WrongUsage(Translated(
            "--repeat must be a number from 0 to 65534, or -1 for a keystroke, not %1", QuotedText(text)));
    }
    choice->delay = static_cast<std::uint16_t>(ticks);
    return Done();
}

// The CRC of the named entry. If the companion has no file for the application, or is not installed, any
// title is accepted.
Outcome FindMenuEntry(const std::string &title, const MenuTitles &titles, std::uint32_t *crc) {
    const std::string *found = titles.Find(title);
    if (found == nullptr && titles.HasFile()) {
        return Failed(
            Translated("the companion dial has no menu entry %1 for this application; nothing was changed; "
                       "'drevixctl menu' lists its entries",
                       QuotedText(title)));
    }
    *crc = KorvaneStringCRC(found != nullptr ? *found : title);
    return Done();
}

Outcome ApplyChoice(const ControlSlot &control, const Choice &choice, const MenuTitles &titles,
                    AppPrefs &record) {
    if (const ActionRefusal refusal = CheckAction(record, control.slot, choice.command);
        refusal != ActionRefusal::None) {
        return Failed(Translated("cannot assign %1 to %2: %3; nothing was changed",
                                 QuotedText(ActionTitle(choice.command)), control.key,
                                 Translated(RefusalText(refusal))));
    }
    std::uint32_t crc = 0;
    if (choice.command == kActionToolMenu) {
        if (Outcome outcome = FindMenuEntry(choice.menuTitle, titles, &crc); !outcome.IsDone()) {
            return outcome;
        }
    }
    ChooseAction(record, control.slot, choice.command);
    ActionSlot &slot = record.device[0].action[control.slot];
    slot.modifiers = choice.modifiers;
    slot.keyCode = choice.keyCode;
    slot.delay = choice.delay;
    slot.crc = crc;
    UpdateToolMenuAction(record, choice.command == kActionToolMenu ? control.slot : kNoSlot);
    return Done();
}

// Makes the alias file through which the slot refers to the item. The panel cleans up the items folder by the
// user's own settings, so it would remove the items of any other settings file.
Outcome StoreItem(const Session &session, const std::string &path, ActionSlot &slot) {
    if (!session.IsUsersOwn()) {
        return Failed(
            Translated("cannot assign %1: only your own settings can hold it; nothing was changed; leave out "
                       "--prefs",
                       "open " + path));
    }
    OSErr status =
        FindDrevixItemsFolder(kDrevixItemsFolderName.data(), kCreateFolder, nullptr, nullptr, nullptr);
    if (status != noErr) {
        return FailedFile("cannot use the items folder %1", "com.halcyra.drevix.stuff", status, kUnchanged);
    }
    status = MakeDrevixItem(path, &slot.data);
    return status == noErr ? Done() : FailedFile("cannot assign %1", "open " + path, status, kUnchanged);
}

PropertyListDictionary AssignmentEntry(const ControlSlot &control, const ActionSlot &slot,
                                       const std::string &details) {
    PropertyListDictionary entry;
    entry.Add("control", std::string(control.key));
    entry.Add("action", std::int64_t{slot.command});
    entry.Add("name", ActionTitle(slot.command));
    entry.Add("details", details);
    return entry;
}

// Prints the assigned control, and those whose commands changed with it.
void SayAssignments(const Request &request, const ControlSlot &chosen, const AppPrefs &before,
                    const AppPrefs &after, const MenuTitles &titles) {
    PropertyListArray entries;
    const auto say = [&](const ControlSlot &control) {
        const ActionSlot &slot = after.device[0].action[control.slot];
        entries.emplace_back(AssignmentEntry(
            control, slot, ActionDetails(slot, titles.Find(slot.crc), KeyNames::Own, Reader::Program)));
        if (!request.line.json) {
            const std::string details = ActionDetails(slot, titles.Find(slot.crc));
            request.Out() << control.key << ": " << ActionTitle(slot.command) << (details.empty() ? "" : " ")
                          << PlainText(details) << "\n";
        }
    };
    say(chosen);
    for (const ControlSlot &control : kControlSlots) {
        if (control.slot != chosen.slot &&
            before.device[0].action[control.slot].command != after.device[0].action[control.slot].command) {
            say(control);
        }
    }
    if (request.line.json) {
        request.Out() << JsonText(std::move(entries)) << "\n";
    }
}

} // namespace

Outcome AssignAction(const Request &request) {
    const ControlSlot *control = FindControlSlot(request.arguments[0]);
    if (control == nullptr) {
        return WrongUsage(Translated("unknown control %1; 'drevixctl help assign' lists them",
                                     QuotedText(request.arguments[0])));
    }
    Choice choice;
    Outcome outcome = ParseAction(request.arguments.subspan(1), &choice);
    if (outcome.IsDone() && request.line.repeat) {
        outcome = ParseRepeat(*request.line.repeat, *control, &choice);
    }
    Session session(request);
    RecordNumber number = kNoRecord;
    AppPrefs before{};
    if (outcome.IsDone()) {
        outcome = session.OpenForChanging();
    }
    if (outcome.IsDone()) {
        outcome = session.Find(&number, &before);
    }
    AppPrefs after = before;
    const MenuTitles titles(before);
    if (outcome.IsDone()) {
        outcome = ApplyChoice(*control, choice, titles, after);
    }
    if (outcome.IsDone() && choice.command == kActionOpenItem) {
        outcome = StoreItem(session, choice.itemPath, after.device[0].action[control->slot]);
    }
    if (outcome.IsDone()) {
        outcome = session.Store(after, number);
    }
    if (outcome.IsDone()) {
        outcome = session.Save();
    }
    if (outcome.IsDone()) {
        SayAssignments(request, *control, before, after, titles);
    }
    return outcome;
}

} // namespace drevix
