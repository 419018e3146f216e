// Turns events of controls into actions, by the settings for the window in front, and has them carried out.
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
    // Gets what a control has done and how many times: in words, or "nothing: " and why.
    using ToldFunction = std::function<void(SlotIndex slot, const std::string &what, int times)>;
    // Asks for the current keyboard layout.
    using LayoutQuestion = std::function<KeyboardCharacters()>;

    // Settings and sender stay the caller's, and must outlive this.
    ControlActions(FrontSettings &settings, ActionSender &sender, LayoutQuestion layout, ToldFunction told);

    // Processes a control's event for the front window given by SetFront.
    void Take(ControlSource source, const ControlEvent &event, SteadyTime now);
    // When the next thing is due; nullopt if nothing is.
    [[nodiscard]] std::optional<SteadyTime> NextTime() const { return fHeld.NextTime(); }
    void TakeTime(SteadyTime now);

    // Ends what is held when another window comes to the front, before the record changes.
    void SetFront(const FrontWindow &front);
    [[nodiscard]] const FrontWindow &Front() const { return fFront; }
    // The keyboard layout may have changed: asks for it again when needed.
    void ForgetLayout() { fLayout.reset(); }
    // Ends what is held and reads the settings again. As FrontSettings::Load.
    [[nodiscard]] bool LoadSettings(std::string *problem);
    // While quiet, controls are only reported, because a watcher wants to see them, and do nothing.
    void SetQuiet(bool isQuiet);
    // While the session is locked, only sound, brightness and players act: no device may type into a password
    // field.
    void SetLocked(bool isLocked);
    void EndSource(ControlSource source);
    // Ends what is held and releases all keys.
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
