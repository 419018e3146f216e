#include "helper/step_text.h"

#include "helperlink/acted_texts.h"
#include "keyboard/key_names.h"
#include "platform/base/plain_text.h"
#include "platform/base/translation.h"
#include "platform/input/input_codes.h"
#include "settings/pascal_strings.h"

#include <array>

namespace drevix {
namespace {

std::string ChordText(const KeyChord &chord) {
    const std::string_view name = EventCodeName({kKeyEvents, chord.scanCode});
    const std::string key = name.empty() ? Translated("key %1", chord.scanCode) : std::string(name);
    const std::string modifiers = ModifiersText(chord.modifiers);
    return modifiers.empty() ? key : modifiers + "+" + key;
}

// In the order of the enumerations.
constexpr auto kDirections = std::to_array<const char *>(
    {ToTranslate("up"), ToTranslate("down"), ToTranslate("left"), ToTranslate("right")});
constexpr auto kWindowRequests = std::to_array<const char *>(
    {ToTranslate("close the window"), ToTranslate("minimize the window"), ToTranslate("switch full screen"),
     ToTranslate("show the desktop"), ToTranslate("show the application's windows"),
     ToTranslate("show all windows")});
constexpr auto kSessionRequests = std::to_array<const char *>(
    {ToTranslate("lock the session"), ToTranslate("log out"), ToTranslate("suspend"),
     ToTranslate("restart the computer"), ToTranslate("shut the computer down")});
constexpr auto kPlayerRequests = std::to_array<const char *>(
    {ToTranslate("play or pause"), ToTranslate("play the next track"), ToTranslate("play the previous track"),
     ToTranslate("stop the player"), ToTranslate("turn the player up"), ToTranslate("turn the player down")});

template <typename Names, typename Value>
std::string NameOf(const Names &names, Value value) {
    return Translated(names.at(static_cast<std::size_t>(value)));
}

struct TextMaker {
    std::string operator()(const DoNothing &step) const {
        return step.reason.empty() ? Translated("nothing")
                                   : std::string(kNothingBecause) + std::string(step.reason);
    }
    std::string operator()(const SendKeys &step) const {
        return Translated("keys %1", ChordText(step.chord));
    }
    std::string operator()(const SendScroll &step) const {
        const std::string modifiers = ModifiersText(step.modifiers);
        const std::string direction = NameOf(kDirections, step.direction);
        return modifiers.empty() ? Translated("scroll %1", direction)
                                 : Translated("scroll %1 with %2", direction, modifiers);
    }
    std::string operator()(const OpenItem &step) const {
        return Translated("open %1", PlainText(stringWithPascalString(step.name.data())));
    }
    std::string operator()(const OpenProgram &step) const {
        return Translated("open the %1", Translated(step.kind->name));
    }
    std::string operator()(const AskWindow &step) const { return NameOf(kWindowRequests, step.request); }
    std::string operator()(const AskSession &step) const { return NameOf(kSessionRequests, step.request); }
    std::string operator()(const AskPlayer &step) const { return NameOf(kPlayerRequests, step.request); }
    std::string operator()(const SwitchRingMode & /*step*/) const {
        return Translated("switch the ring mode");
    }
};

} // namespace

std::string StepText(const ActionStep &step) {
    return std::visit(TextMaker{}, step);
}

} // namespace drevix
