#include "helper/action_sender.h"

#include "helper/program_choice.h"
#include "platform/base/marked_text.h"
#include "platform/base/status.h"
#include "platform/base/translation.h"
#include "platform/desktop/program_starter.h"
#include "util/items/items_folder.h"

#include <utility>

namespace drevix {
namespace {

constexpr const char *kNoDesktop = Marked("Engine", "there is no desktop to send it to");
constexpr const char *kNoKeys = Marked("Engine", "keys cannot be sent: see DrevixHelper(1)");
constexpr const char *kDesktopCannot = Marked("Engine", "this desktop cannot");

} // namespace

// Does one step, so many times.
struct ActionSender::Doer {
    ActionSender &sender;
    int times;

    std::string operator()(const DoNothing &step) const { return std::string(step.reason); }
    std::string operator()(const SendKeys &step) const { return sender.Tap(step.chord, times); }
    std::string operator()(const SendScroll &step) const { return sender.Scroll(step, times); }
    // Opens it once: nobody wants the same thing opened several times.
    std::string operator()(const OpenItem &step) const { return sender.Open(step.name); }
    std::string operator()(const OpenProgram &step) const { return sender.Start(*step.kind); }
    std::string operator()(const AskWindow &step) const {
        if (sender.fDesktop == nullptr) {
            return kNoDesktop;
        }
        if (sender.fDesktop->Ask(step.request)) {
            return {};
        }
        return step.otherwise ? sender.Tap(*step.otherwise, 1) : kDesktopCannot;
    }
    std::string operator()(const AskSession &step) const {
        sender.fOutlets.askSession(step.request);
        return {};
    }
    std::string operator()(const AskPlayer &step) const {
        bool isDone = true;
        for (int i = 0; i < times && isDone; ++i) {
            isDone = sender.fOutlets.askPlayer(step.request);
        }
        return isDone           ? std::string()
               : step.otherwise ? sender.Tap(*step.otherwise, times)
                                : Marked("Engine", "no player runs");
    }
    std::string operator()(const SwitchRingMode & /*step*/) const {
        return {};
    } // whoever has the mode did it
};

ActionSender::ActionSender(ActionOutlets outlets, bool isDryRun)
    : fOutlets(std::move(outlets)), fIsDryRun(isDryRun) {}

void ActionSender::SetDesktop(Desktop *desktop) {
    fDesktop = desktop;
    fKeys = HeldKeys();
}

std::string ActionSender::Do(const Deed &deed) {
    std::string problem = TryDo(deed);
    if (!problem.empty()) {
        fOutlets.tell(Translated(problem));
    }
    return problem;
}

std::string ActionSender::TryDo(const Deed &deed) {
    const auto *keys = std::get_if<SendKeys>(&deed.plan.step);
    if (fIsDryRun && !std::holds_alternative<DoNothing>(deed.plan.step)) {
        return {};
    }
    if (deed.kind == DeedKind::Act || keys == nullptr) {
        return std::visit(Doer{*this, deed.times}, deed.plan.step);
    }
    std::vector<KeyStep> steps;
    if (deed.kind == DeedKind::Hold) {
        fKeys.Press(keys->chord, &steps);
    } else {
        fKeys.Release(keys->chord, &steps);
    }
    return Send(steps);
}

void ActionSender::ReleaseKeys() {
    std::vector<KeyStep> steps;
    fKeys.ReleaseAll(&steps);
    std::ignore = Send(steps); // a desktop that is gone has let them go
}

// All of them, even if one fails: later ones release what earlier ones pressed.
std::string ActionSender::Send(const std::vector<KeyStep> &steps) {
    bool areSent = fDesktop != nullptr;
    for (const KeyStep &step : steps) {
        areSent = fDesktop != nullptr && fDesktop->Key(step.scanCode, step.isDown) && areSent;
    }
    return areSent ? std::string() : fDesktop == nullptr ? kNoDesktop : kNoKeys;
}

std::string ActionSender::Tap(const KeyChord &chord, int times) {
    std::vector<KeyStep> steps;
    for (int i = 0; i < times; ++i) {
        fKeys.Press(chord, &steps);
        fKeys.Release(chord, &steps);
    }
    return Send(steps);
}

std::string ActionSender::Scroll(const SendScroll &scroll, int times) {
    std::vector<KeyStep> before;
    std::vector<KeyStep> after;
    fKeys.PressModifiers(scroll.modifiers, &before);
    fKeys.ReleaseModifiers(scroll.modifiers, &after);
    std::string problem = Send(before);
    if (problem.empty() && !fDesktop->Scroll(scroll.direction, times)) {
        problem = kNoKeys;
    }
    const std::string released = Send(after);
    return problem.empty() ? released : problem;
}

std::string ActionSender::Open(const Str31 &item) const {
    const DrevixItem found = ResolveDrevixItem(item);
    if (!found.exists) {
        return Marked("Engine", "the item is gone");
    }
    const std::vector<std::string> command = CommandToOpen(found.path);
    const std::vector<std::string> opener{kOpener, found.path};
    const auto ended = [tell = fOutlets.tell, path = found.path](int exitStatus) {
        if (exitStatus != 0) {
            tell(Translated("the desktop cannot open %1", path));
        }
    };
    const bool usesOpener = command == opener;
    if (!usesOpener && !command.empty() && fOutlets.start(command, [](int /*exitStatus*/) {}) == noErr) {
        return {};
    }
    const OSErr status = fOutlets.start(opener, ended);
    return status == noErr ? std::string()
                           : Translated("cannot start %1: %2", kOpener, Translated(StatusText(status)));
}

std::string ActionSender::Start(const ProgramKind &kind) const {
    const std::vector<std::string> command = CommandOfKind(kind);
    if (command.empty()) {
        return std::string(kind.missing);
    }
    const OSErr status = fOutlets.start(command, [](int /*exitStatus*/) {});
    return status == noErr
               ? std::string()
               : Translated("cannot start %1: %2", command.front(), Translated(StatusText(status)));
}

} // namespace drevix
