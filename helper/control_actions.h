// What the controls do: from their events, through the settings for the window in front, to actions carried out.
#pragma once

#include "device/control_state.h"
#include "device/front_record.h"
#include "device/repeat.h"
#include "helper/action_sender.h"
#include "helper/front_settings.h"
#include "platform/desktop/keyboard_layout.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace drevix {

class ControlActions {
  public:
    // Told what a control has done, so many times: in words, or "nothing: " and why.
    using ToldFunction = std::function<void(SlotIndex slot, const std::string &what, int times)>;
    // The keyboard layout in force.
    using LayoutQuestion = std::function<KeyboardCharacters()>;

    // Settings and sender stay the caller's, and must outlive this.
    ControlActions(FrontSettings &settings, ActionSender &sender, LayoutQuestion layout, ToldFunction told);

    // Takes what happens to a control, with the front window as SetFront has told it.
    void Take(ControlSource source, const ControlEvent &event, SteadyTime now);
    // When something is due; nothing while nothing is.
    [[nodiscard]] std::optional<SteadyTime> NextTime() const { return fHeld.NextTime(); }
    void TakeTime(SteadyTime now);

    // What is held ends where another window comes to the front, before the record changes.
    void SetFront(const FrontWindow &front);
    [[nodiscard]] const FrontWindow &Front() const { return fFront; }
    // Another keyboard layout may be in force: it is asked for again.
    void ForgetLayout() { fLayout.reset(); }
    // Ends what is held and reads the settings again. As FrontSettings::Load.
    [[nodiscard]] bool LoadSettings(std::string *problem);
    // A watcher wants to see controls, not actions.
    void SetQuiet(bool isQuiet);
    // Nobody is to type into a password field: only sound, brightness and players act while the session is locked.
    void SetLocked(bool isLocked);
    void EndSource(ControlSource source);
    // Ends what is held, and lets all keys go.
    void EndAll();

    [[nodiscard]] Sensitivities CurrentSensitivities() const;

  private:
    [[nodiscard]] ActionPlan PlanFor(SlotIndex slot);
    void DoAll(std::vector<Deed> *deeds);
    void Do(const Deed &deed);

    FrontSettings &fSettings;
    ActionSender &fSender;
    LayoutQuestion fAskLayout;
    ToldFunction fTold;
    HeldActions fHeld;
    RingMode fMode = RingMode::Application;
    FrontWindow fFront;
    std::optional<KeyboardCharacters> fLayout; // nothing: to be asked for
    bool fIsQuiet = false;
    bool fIsLocked = false;
};

} // namespace drevix
