#include "helper/step_text.h"

#include "helperlink/acted_texts.h"
#include "keyboard/key_names.h"
#include "platform/base/plain_text.h"
#include "platform/input/input_codes.h"
#include "settings/pascal_strings.h"

#include <array>

namespace drevix {
namespace {

std::string ChordText(const KeyChord &chord) {
    const std::string_view name = EventCodeName({kKeyEvents, chord.scanCode});
    const std::string key = name.empty() ? "key " + std::to_string(chord.scanCode) : std::string(name);
    const std::string modifiers = ModifiersText(chord.modifiers);
    return modifiers.empty() ? key : modifiers + "+" + key;
}

// In the order of the enumerations.
constexpr auto kDirections = std::to_array<const char *>({"up", "down", "left", "right"});
constexpr auto kWindowRequests =
    std::to_array<const char *>({"close the window", "minimize the window", "switch full screen",
                                 "show the desktop", "show the application's windows", "show all windows"});
constexpr auto kSessionRequests = std::to_array<const char *>(
    {"lock the session", "log out", "suspend", "restart the computer", "shut the computer down"});
constexpr auto kPlayerRequests =
    std::to_array<const char *>({"play or pause", "play the next track", "play the previous track",
                                 "stop the player", "turn the player up", "turn the player down"});

template <typename Names, typename Value>
std::string NameOf(const Names &names, Value value) {
    return names.at(static_cast<std::size_t>(value));
}

struct TextMaker {
    std::string operator()(const DoNothing &step) const {
        return step.reason.empty() ? "nothing" : std::string(kNothingBecause) + std::string(step.reason);
    }
    std::string operator()(const SendKeys &step) const { return "keys " + ChordText(step.chord); }
    std::string operator()(const SendScroll &step) const {
        const std::string modifiers = ModifiersText(step.modifiers);
        return "scroll " + NameOf(kDirections, step.direction) +
               (modifiers.empty() ? "" : " with " + modifiers);
    }
    std::string operator()(const OpenItem &step) const {
        return "open " + PlainText(stringWithPascalString(step.name.data()));
    }
    std::string operator()(const OpenProgram &step) const {
        return "open the " + std::string(step.kind->name);
    }
    std::string operator()(const AskWindow &step) const { return NameOf(kWindowRequests, step.request); }
    std::string operator()(const AskSession &step) const { return NameOf(kSessionRequests, step.request); }
    std::string operator()(const AskPlayer &step) const { return NameOf(kPlayerRequests, step.request); }
    std::string operator()(const SwitchRingMode & /*step*/) const { return "switch the ring mode"; }
};

} // namespace

std::string StepText(const ActionStep &step) {
    return std::visit(TextMaker{}, step);
}

} // namespace drevix
