#include "helper/acting_helper.h"

#include "helper/map_files.h"
#include "helper/stand_in.h"
#include "helperlink/acted_texts.h"
#include "platform/base/plain_text.h"
#include "platform/base/translation.h"
#include "platform/files/paths.h"
#include "platform/windows/process_program.h"

#include <algorithm>
#include <array>
#include <exception>
#include <iostream>
#include <poll.h>
#include <utility>

namespace drevix {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kBetweenLooks{1};
constexpr std::size_t kMostComplaints = 256; // whoever has that many causes has read none of them

KeyboardCharacters AskLayout() {
    KeyboardCharacters layout{};
    std::ignore =
        CurrentKeyboardCharacters(&layout); // without one, keys that are named by their letter have no place
    return layout;
}

std::optional<SteadyTime> Earlier(std::optional<SteadyTime> one, std::optional<SteadyTime> other) {
    return one && other ? std::optional(std::min(*one, *other)) : one ? one : other;
}

} // namespace

ActingHelper::ActingHelper(const HelperOptions &options, Surroundings surroundings)
    : fOptions(options), fSurroundings(std::move(surroundings)),
      fSettings(fSurroundings.settings, fSurroundings.resources), fSender(MakeOutlets(), options.dryRun),
      fActions(fSettings, fSender, AskLayout,
               [this](SlotIndex slot, const std::string &what, int times) { TakeTold(slot, what, times); }),
      fDesktopWatch([this] { TakeDesktop(); }), fBus(MakeBusTasks()) {}

ActingHelper::~ActingHelper() {
    try {
        fActions.EndAll();
        if (fDesktop) {
            std::ignore = fDesktop->Flush(); // a desktop that is lost has let the keys go
        }
    } catch (const std::exception &) {
        return; // the desktop lets the keys go when its connection ends, or the keeper does
    }
}

bool ActingHelper::Begin() {
    LoadSettings();
    LookForDesktop(Clock::now());
    UseFront();
    const auto complain = [this](const std::string &problem) { ComplainOnce(problem); };
    fReaders.emplace(ReadMapFiles(fSurroundings.preferences, fSurroundings.resources, complain),
                     MakeReaderTasks());
    if (!AddStandIns()) {
        return false;
    }
    fReaders->WatchAll();
    fSession.emplace(SessionControlTasks{[this](bool isLocked) { fActions.SetLocked(isLocked); }, complain});
    fPlayers.emplace();
    fBus.Begin();
    return true;
}

bool ActingHelper::AddStandIns() {
    for (const std::string &text : fOptions.standIns) {
        StandIn standIn;
        std::string problem;
        if (!ParseStandIn(text, &standIn, &problem) ||
            !fReaders->AddStandIn(standIn.path, standIn.description, &problem)) {
            fSurroundings.complain(Translated("cannot use %1: %2", "--stand-in " + text, problem));
            return false;
        }
    }
    return true;
}

void ActingHelper::LoadSettings() {
    std::string problem;
    if (!fActions.LoadSettings(&problem)) {
        fSurroundings.complain(
            Translated("cannot use %1: %2; the settings stay as they were", fSurroundings.settings, problem));
    }
}

std::optional<std::chrono::microseconds> ActingHelper::Turn() {
    if (!fReaders) {
        return std::nullopt; // nothing has begun
    }
    FlushDesktop(); // what devices have asked for is under way before anything else is done
    const SteadyTime now = Clock::now();
    LookForDesktop(now);
    TakeDesktop();
    fReaders->TakeTime(now);
    fActions.TakeTime(now);
    fBus.TakeTime(now);
    FlushDesktop();
    std::optional<SteadyTime> next = Earlier(fReaders->NextTime(), fActions.NextTime());
    next = Earlier(next, fBus.NextTime());
    next = Earlier(next, fDesktop ? std::nullopt : std::optional(fNextLook));
    return next ? std::optional(std::chrono::ceil<std::chrono::microseconds>(*next - Clock::now()))
                : std::nullopt;
}

void ActingHelper::LookForDesktop(SteadyTime now) {
    if (fDesktop || now < fNextLook) {
        return;
    }
    fNextLook = now + kBetweenLooks;
    std::string problem;
    fDesktop = fSurroundings.openDesktop(&problem);
    if (!fDesktop) {
        if (fNoDesktop.empty()) {
            fSurroundings.complain(Translated("no desktop: %1; it is looked for once a second", problem));
        }
        fNoDesktop = problem.empty() ? ToTranslate("there is none") : problem;
        return;
    }
    if (!problem.empty()) {
        ComplainOnce(problem);
    }
    fNoDesktop.clear();
    fSender.SetDesktop(fDesktop.get());
    fDesktopWatch.Watch(fDesktop->Descriptor(), POLLIN, std::nullopt);
    TakeDesktop();
}

void ActingHelper::TakeDesktop() {
    if (fDesktop && !fDesktop->Take()) {
        LoseDesktop();
    }
    if (fDesktop && std::exchange(fLayoutChanges, fDesktop->LayoutChanges()) != fDesktop->LayoutChanges()) {
        fActions.ForgetLayout();
    }
    UseFront();
}

// Finds out whose window is in front before a control acts there.
void ActingHelper::UseFront() {
    fActions.SetFront(FrontNow());
    fBus.SetFrontProcess(fActions.Front().process);
}

void ActingHelper::FlushDesktop() {
    if (fDesktop && !fDesktop->Flush()) {
        LoseDesktop();
    }
}

void ActingHelper::LoseDesktop() {
    fDesktopWatch.Watch(-1, 0, std::nullopt);
    fSender.SetDesktop(nullptr);
    fDesktop.reset();
    fActions.EndAll();
    fNextLook = Clock::now() + kBetweenLooks;
    fNoDesktop = ToTranslate("its connection is lost");
    fSurroundings.complain(Translated("the desktop has gone; it is looked for once a second"));
}

FrontWindow ActingHelper::FrontNow() const {
    if (!fOptions.front.empty()) {
        return {fOptions.front, {}, {}, {}, 0};
    }
    return fDesktop && fDesktop->TellsFront() ? fDesktop->Front() : fReported;
}

void ActingHelper::TakeControl(ControlSource source, const ControlEvent &event) {
    TellPressed(source, event);
    fActions.Take(source, event, Clock::now());
}

// Watchers see a control as down as long as one source holds it.
void ActingHelper::TellPressed(ControlSource source, const ControlEvent &event) {
    const ControlSlot *control = FindControlSlot(event.slot);
    if (control == nullptr || event.phase == ControlPhase::Step) {
        return;
    }
    const bool isDown = event.phase == ControlPhase::Down;
    std::erase(fDown, std::pair(event.slot, source));
    if (isDown) {
        fDown.emplace_back(event.slot, source);
    }
    const bool isHeld =
        std::ranges::any_of(fDown, [&](const auto &down) { return down.first == event.slot; });
    if (isHeld == isDown) {
        fBus.TellPressed(std::string(control->key), isDown);
    }
}

void ActingHelper::TakeTold(SlotIndex slot, const std::string &what, int times) {
    const ControlSlot *control = FindControlSlot(slot);
    if (control == nullptr) {
        return;
    }
    fLastTold = what;
    const std::string key(control->key);
    if (fOptions.dryRun) {
        std::cout << ActedLine(key, what, static_cast<std::uint32_t>(times)) << std::endl;
    }
    fBus.TellActed(key, what, times);
}

void ActingHelper::ComplainOnce(const std::string &problem) {
    if (fComplaints.size() < kMostComplaints && fComplaints.insert(problem).second) {
        fSurroundings.complain(problem);
    }
}

ActionOutlets ActingHelper::MakeOutlets() {
    return {
        [this](const std::vector<std::string> &command, const std::function<void(int)> &ended) {
            return fStarter.Start(command, ended);
        },
        [this](SessionRequest request) { AskSession(request); },
        [this](PlayerRequest request) { return AskPlayer(request); },
        [this](const std::string &problem) { ComplainOnce(problem); },
    };
}

void ActingHelper::AskSession(SessionRequest request) {
    static constexpr auto kRequests = std::to_array<void (SessionControl::*)()>({
        &SessionControl::Lock,
        &SessionControl::LogOut,
        &SessionControl::Suspend,
        &SessionControl::Restart,
        &SessionControl::ShutDown,
    });
    if (fSession) {
        ((*fSession).*kRequests.at(static_cast<std::size_t>(request)))();
    }
}

bool ActingHelper::AskPlayer(PlayerRequest request) {
    constexpr double kVolumeStep = 0.05;
    switch (request) {
    case PlayerRequest::PlayPause:
        return fPlayers && fPlayers->Call("PlayPause");
    case PlayerRequest::Next:
        return fPlayers && fPlayers->Call("Next");
    case PlayerRequest::Previous:
        return fPlayers && fPlayers->Call("Previous");
    case PlayerRequest::Stop:
        return fPlayers && fPlayers->Call("Stop");
    case PlayerRequest::VolumeUp:
        return fPlayers && fPlayers->ChangeVolume(kVolumeStep);
    case PlayerRequest::VolumeDown:
        return fPlayers && fPlayers->ChangeVolume(-kVolumeStep);
    }
    return false;
}

DeviceReaderTasks ActingHelper::MakeReaderTasks() {
    return {
        [this](ControlSource source, const ControlEvent &event) { TakeControl(source, event); },
        [this](ControlSource source) { fActions.EndSource(source); },
        [this] { return fActions.CurrentSensitivities(); },
        [this](const std::string &problem) { ComplainOnce(problem); },
        fSurroundings.devicesChanged,
        [this] { TakeDesktop(); },
    };
}

DeviceBusTasks ActingHelper::MakeBusTasks() {
    return {
        [this](const std::string &control, const std::string &how, std::uint32_t times, std::string *text) {
            return Act(control, how, times, text);
        },
        [this](const std::optional<ReportedFront> &front) {
            fReported = front ? FrontWindow{front->entry, front->windowClass, front->windowName,
                                            ProgramOfProcess(front->process), front->process}
                              : FrontWindow();
            // A window without any known property counts as none.
            if ((fReported.entryId + fReported.windowClass + fReported.windowName).empty()) {
                fReported = {};
            }
            UseFront();
        },
        [this] { return DescribeFront(); },
        [this](bool isQuiet) { fActions.SetQuiet(isQuiet); },
    };
}

bool ActingHelper::Act(const std::string &control, const std::string &how, std::uint32_t times,
                       std::string *text) {
    struct Way {
        std::string_view name;
        std::vector<ControlPhase> phases;
    };
    static const auto kWays = std::to_array<Way>({
        {"press", {ControlPhase::Down, ControlPhase::Up}},
        {"hold", {ControlPhase::Down}},
        {"release", {ControlPhase::Up}},
        {"turn", {ControlPhase::Step}},
    });
    const ControlSlot *found = FindControlSlot(control);
    const auto *way = std::ranges::find(kWays, how, &Way::name);
    if (found == nullptr || way == kWays.end() || times < 1 || times > kMostSteps) {
        *text = found == nullptr     ? Translated("unknown control")
                : way == kWays.end() ? Translated("a control can be pressed, held, released or turned")
                                     : Translated("1 to %1 times", kMostSteps);
        return false;
    }
    TakeDesktop();
    fLastTold.clear();
    const bool isTurned = way->phases.front() == ControlPhase::Step;
    for (std::uint32_t i = 0; i < (isTurned ? 1 : times); ++i) {
        for (const ControlPhase phase : way->phases) {
            TakeControl(kSimulatedSource, {found->slot, phase, isTurned ? static_cast<int>(times) : 1});
        }
    }
    *text = fLastTold;
    return true;
}

NamedTexts ActingHelper::DescribeFront() const {
    const FrontWindow &front = fActions.Front();
    const std::string record = fSettings.RecordName();
    NamedTexts texts{
        {"entry", front.entryId},
        {"class", front.windowClass},
        {"name", front.windowName},
        {"program", front.program},
        {"process", front.process != 0 ? std::to_string(front.process) : std::string()},
        {"settings", record.empty() ? ToTranslate("all applications") : record},
        {"active", fSettings.InForce().AreActive() ? ToTranslate("yes") : ToTranslate("no")},
        {"desktop", fNoDesktop.empty() ? ToTranslate("connected") : fNoDesktop},
    };
    std::erase_if(texts, [](const auto &text) { return text.second.empty(); });
    return texts;
}

} // namespace drevix
