#include "device/action_plan.h"

#include "platform/input/input_codes.h"
#include "tests/support/testing.h"

namespace drevix {
namespace {

std::string TextOf(const KeyChord &chord) {
    std::string text;
    for (const std::uint16_t modifier : ModifierScanCodes(chord.modifiers)) {
        text += std::string(EventCodeName({kKeyEvents, modifier})).substr(8) + "+";
    }
    return text +
           (chord.scanCode != 0 ? std::string(EventCodeName({kKeyEvents, chord.scanCode})).substr(4) : "");
}

// A step as a short text, requests by their number.
struct StepText {
    std::string operator()(const DoNothing &step) const { return "nothing: " + std::string(step.reason); }
    std::string operator()(const SendKeys &step) const { return TextOf(step.chord); }
    std::string operator()(const SendScroll &step) const {
        return "scroll " + std::to_string(static_cast<int>(step.direction)) + " " +
               TextOf({0, step.modifiers});
    }
    std::string operator()(const OpenItem &step) const { return "item of " + std::to_string(step.name[0]); }
    std::string operator()(const OpenProgram &step) const { return "open " + std::string(step.kind->name); }
    std::string operator()(const SwitchRingMode & /*step*/) const { return "ring mode"; }
    template <class Ask>
    std::string operator()(const Ask &step) const {
        const std::string text = "ask " + std::to_string(static_cast<int>(step.request));
        if constexpr (requires { step.otherwise; }) {
            return step.otherwise ? text + " else " + TextOf(*step.otherwise) : text;
        }
        return text;
    }
};

std::string TextOf(const ActionPlan &plan) {
    std::string text = std::visit(StepText{}, plan.step);
    text += plan.holding == Holding::Repeats ? " every " + std::to_string(plan.ticks) : "";
    text += plan.holding == Holding::Kept        ? " kept"
            : plan.holding == Holding::LongPress ? " after a second"
                                                 : "";
    return text + (plan.worksLocked ? " locked too" : "");
}

ActionSlot Slot(ActionCommand command, std::uint8_t keyCode = kNoKeyCode, std::uint16_t modifiers = 0,
                std::uint16_t delay = 0) {
    return {command, modifiers, keyCode, 0, delay, 0, 0, {}};
}

KeyboardCharacters Layout(const std::string &name) {
    KeyboardCharacters characters{};
    EXPECT_TRUE(KeyboardCharactersOfLayout(
        {"", "", name.substr(0, 2), name.size() > 2 ? name.substr(3) : "", ""}, &characters));
    return characters;
}

TEST(ActionPlan, Slots_BecomeSteps) {
    ActionSlot item = Slot(64);
    item.data[0] = 3;
    const std::pair<ActionSlot, const char *> rows[] = {
        {Slot(7), "ring mode"},
        {Slot(34), "nothing: the companion does not accept menu commands"},
        {Slot(37, 0, kShiftModifier, 9), "scroll 2 "},
        {Slot(41), "CTRL+MINUS"},
        {Slot(50), "nothing: "},
        {item, "item of 3"},
        {Slot(64), "nothing: no item has been chosen"},
        {Slot(82), "open mail program"},
        {Slot(103), "ask 1 after a second"},
        {Slot(105), "ask 3 after a second"},
        {Slot(129), "F20 locked too"},
        {Slot(144), "ask 0 else PLAYPAUSE locked too"},
        {Slot(152), "ask 5 locked too"},
        {Slot(180), "ask 0 else ALT+F4"},
        {Slot(208), "CTRL+SHIFT+Z"},
        {Slot(224, 0, kControlModifier | kShiftModifier, 6), "scroll 0 CTRL+SHIFT+ every 6"},
        {Slot(227, 0, kCapsLockModifier, 0xFFFF), "scroll 3  every 65535"},
        {Slot(228), "nothing: "},
        // Keystrokes go by place, and as the keys that a PC keyboard has.
        {Slot(32), "nothing: no key has been chosen"},
        {Slot(32, 0x06, kCommandModifier | kCapsLockModifier), "META+Z"},
        {Slot(32, 0x35, 0xFFFF, 12), "CTRL+ALT+SHIFT+META+ESC every 12"},
        {Slot(32, 0x00, 0, 0xFFFF), "A kept"},
        {Slot(32, 0x72), "INSERT"},
        {Slot(32, 0x69), "SYSRQ"},
        {Slot(32, 0x6B), "SCROLLLOCK"},
        {Slot(32, 0x71), "PAUSE"},
        {Slot(32, 0x6A), "F16"},
        {Slot(32, 0x3F), "nothing: this key cannot be sent"},
        {Slot(32, 0x7F), "nothing: this key cannot be sent"},
    };
    const KeyboardCharacters us = Layout("us");
    for (const auto &[slot, plan] : rows) {
        EXPECT_EQ(TextOf(PlanAction(slot, us, {})), plan) << slot.command;
    }
}

TEST(ActionPlan, KeysThatAreNamedByWhatTheyType_AreFoundInTheLayout) {
    static const std::tuple<ActionCommand, const char *, const char *> kRows[] = {
        // clang-format off
        {182, "us", "CTRL+Z"}, {182, "de", "CTRL+Y"}, {182, "fr", "CTRL+W"}, {182, "us dvorak", "CTRL+SLASH"},
        {182, "ru", "CTRL+Z"}, {186, "de", "CTRL+A"}, {186, "fr", "CTRL+Q"}, {181, "us dvorak", "ask 1 else META+J"},
        {41, "de", "CTRL+SLASH"}, {41, "fr", "CTRL+6"}, {43, "us", "CTRL+0"}, {43, "fr", "CTRL+SHIFT+0"},
        {42, "us", "CTRL+SHIFT+EQUAL"}, {42, "de", "CTRL+RIGHTBRACE"}, {42, "fr", "CTRL+SHIFT+EQUAL"},
        {35, "us", "LEFTBRACE"}, {35, "de", "nothing: the keyboard layout has no key for it"},
        {32, "de", "CTRL+Z"}, {32, "fr", "CTRL+Z"}, // by place
        // clang-format on
    };
    for (const auto &[command, layout, plan] : kRows) {
        const ActionSlot slot = Slot(command, 0x06, kControlModifier);
        EXPECT_EQ(TextOf(PlanAction(slot, Layout(layout), {})), plan) << command << layout;
    }
}

TEST(ActionPlan, InATerminal_CtrlAndALetterGetShift) {
    static const std::tuple<FrontWindow, const char *, const char *> kRows[] = {
        {{"", "Konsole", "", "", 0}, "CTRL+SHIFT+C", "CTRL+SHIFT+V"},
        {{"org.gnome.Terminal.desktop", "", "", "", 0}, "CTRL+SHIFT+C", "CTRL+SHIFT+V"},
        {{"", "", "", "/usr/bin/kitty", 0}, "CTRL+SHIFT+C", "CTRL+SHIFT+V"},
        {{"", "XTerm", "xterm", "", 0}, "nothing: this terminal has no key for it", "SHIFT+INSERT"},
        {{"org.kde.kate", "kate", "kate", "kate", 0}, "CTRL+C", "CTRL+V"},
    };
    const KeyboardCharacters us = Layout("us");
    for (const auto &[front, copy, paste] : kRows) {
        EXPECT_EQ(TextOf(PlanAction(Slot(184), us, front)), copy) << copy;
        EXPECT_EQ(TextOf(PlanAction(Slot(185), us, front)), paste) << paste;
        EXPECT_EQ(TextOf(PlanAction(Slot(41), us, front)), "CTRL+MINUS");
        EXPECT_EQ(TextOf(PlanAction(Slot(32, 0x08, kControlModifier), us, front)), "CTRL+C");
    }
}

} // namespace
} // namespace drevix
