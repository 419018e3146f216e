// Carries actions out: keys, wheel and requests to the desktop, items and programs, the session and the players.
#pragma once

#include "device/held_keys.h"
#include "device/repeat.h"
#include "platform/base/types.h"
#include "platform/windows/desktop.h"

#include <functional>
#include <string>
#include <vector>

namespace drevix {

// What actions reach besides the desktop. None may be empty.
struct ActionOutlets {
    // Starts a program without a shell; told its exit status when it ends.
    std::function<OSErr(const std::vector<std::string> &command, std::function<void(int exitStatus)> ended)>
        start;
    // What this session cannot do is told later.
    std::function<void(SessionRequest request)> askSession;
    // False when no player runs.
    std::function<bool(PlayerRequest request)> askPlayer;
    // Takes what could not be done and why, as Do gives it, and what comes up only after an action was begun.
    std::function<void(const std::string &problem)> tell;
};

class ActionSender {
  public:
    // With `isDryRun` nothing is done, and all counts as done.
    ActionSender(ActionOutlets outlets, bool isDryRun);

    // The desktop that keys and requests go to, which stays the caller's; null for none. The one before is gone, and
    // has let its keys go.
    void SetDesktop(Desktop *desktop);

    // Carries a deed out. Empty, or why it could not be done, for people.
    [[nodiscard]] std::string Do(const Deed &deed);
    // Lets every key go that is down.
    void ReleaseKeys();
    [[nodiscard]] bool AreKeysUp() const { return fKeys.IsNoneDown(); }

  private:
    struct Doer;
    [[nodiscard]] std::string TryDo(const Deed &deed);
    [[nodiscard]] std::string Send(const std::vector<KeyStep> &steps);
    [[nodiscard]] std::string Tap(const KeyChord &chord, int times);
    [[nodiscard]] std::string Scroll(const SendScroll &scroll, int times);
    [[nodiscard]] std::string Open(const Str31 &item) const;
    [[nodiscard]] std::string Start(const ProgramKind &kind) const;

    ActionOutlets fOutlets;
    bool fIsDryRun;
    Desktop *fDesktop = nullptr;
    HeldKeys fKeys;
};

} // namespace drevix
