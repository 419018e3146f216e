#include "helper/control_actions.h"

#include "helper/step_text.h"
#include "helperlink/acted_texts.h"

#include <utility>

namespace drevix {

ControlActions::ControlActions(FrontSettings &settings, ActionSender &sender, LayoutQuestion layout,
                               ToldFunction told)
    : fSettings(settings), fSender(sender), fAskLayout(std::move(layout)), fTold(std::move(told)) {}

void ControlActions::Take(ControlSource source, const ControlEvent &event, SteadyTime now) {
    const bool isUp = event.phase == ControlPhase::Up;
    if (fIsQuiet && !isUp) {
        fTold(event.slot, StepText(DoNothing{kPanelIsInFront}), event.times);
        return;
    }
    if (!fSettings.InForce().AreActive() && !isUp) {
        fTold(event.slot, StepText(DoNothing{kIsSwitchedOff}), event.times);
        return;
    }
    const ActionPlan plan = isUp ? ActionPlan{} : PlanFor(event.slot);
    std::vector<Deed> deeds;
    fHeld.Take(source, event, plan, fSettings.InForce().SpeedOf(event.slot, fMode), now, &deeds);
    DoAll(&deeds);
}

void ControlActions::TakeTime(SteadyTime now) {
    std::vector<Deed> deeds;
    fHeld.TakeTime(now, &deeds);
    DoAll(&deeds);
}

void ControlActions::SetFront(const FrontWindow &front) {
    if (front == fFront) {
        return;
    }
    EndAll();
    fFront = front;
    fSettings.SetFront(front);
    fLayout.reset(); // desktops may keep a layout for each window
}

bool ControlActions::LoadSettings(std::string *problem) {
    EndAll();
    fLayout.reset();
    return fSettings.Load(problem);
}

void ControlActions::SetQuiet(bool isQuiet) {
    fIsQuiet = isQuiet;
    EndAll();
}

void ControlActions::SetLocked(bool isLocked) {
    if (isLocked != fIsLocked) {
        fIsLocked = isLocked;
        EndAll();
    }
}

void ControlActions::EndSource(ControlSource source) {
    std::vector<Deed> deeds;
    fHeld.EndSource(source, &deeds);
    DoAll(&deeds);
}

void ControlActions::EndAll() {
    std::vector<Deed> deeds;
    fHeld.EndAll(&deeds);
    DoAll(&deeds);
    fSender.ReleaseKeys();
}

Sensitivities ControlActions::CurrentSensitivities() const {
    return fSettings.InForce().SensitivitiesOf(fMode);
}

ActionPlan ControlActions::PlanFor(SlotIndex slot) {
    if (!fLayout) {
        fLayout = fAskLayout();
        fSettings.UseLayout(*fLayout);
    }
    const ActionSlot *action = fSettings.InForce().SlotOf(slot, fMode);
    if (action == nullptr) {
        return {};
    }
    ActionPlan plan = PlanAction(*action, *fLayout, fFront);
    if (fIsLocked && !plan.worksLocked) {
        plan = {DoNothing{kIsLocked}};
    }
    return plan;
}

void ControlActions::DoAll(std::vector<Deed> *deeds) {
    for (const Deed &deed : *deeds) {
        Do(deed);
    }
}

void ControlActions::Do(const Deed &deed) {
    if (std::holds_alternative<SwitchRingMode>(deed.plan.step) && deed.times % 2 != 0) {
        fMode = fMode == RingMode::Application ? RingMode::Global : RingMode::Application;
    }
    const std::string problem = fSender.Do(deed);
    if (deed.kind != DeedKind::LetGo) {
        fTold(deed.slot, problem.empty() ? StepText(deed.plan.step) : StepText(DoNothing{problem}),
              deed.times);
    }
}

} // namespace drevix
