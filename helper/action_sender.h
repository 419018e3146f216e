// Carries out actions: keys, wheel and requests to the desktop, items and programs, the session and the
// players.
#pragma once

#include "device/held_keys.h"
#include "device/repeat.h"
#include "platform/base/types.h"
#include "platform/windows/desktop.h"

#include <functional>
#include <string>
#include <vector>

namespace drevix {

// Where actions go besides the desktop. None may be empty.
struct ActionOutlets {
    // Starts a program without a shell; gets its exit status when it ends.
    std::function<OSErr(const std::vector<std::string> &command, std::function<void(int exitStatus)> ended)>
        start;
    // A request that this session does not support is reported later.
    std::function<void(SessionRequest request)> askSession;
    // False if no player is running.
    std::function<bool(PlayerRequest request)> askPlayer;
    // Gets what could not be done and why, in the words of Do, when that becomes known only after an action
    // was begun.
    std::function<void(const std::string &problem)> tell;
};

class ActionSender {
  public:
    // With `isDryRun` does nothing, and reports everything as done.
    ActionSender(ActionOutlets outlets, bool isDryRun);

    // The desktop that gets keys and requests; stays the caller's; null for none. Any previous desktop is
    // gone and has released its keys.
    void SetDesktop(Desktop *desktop);

    // Carries out a deed. Empty, or why it could not be done, for people.
    [[nodiscard]] std::string Do(const Deed &deed);
    // Releases every key that is down.
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
