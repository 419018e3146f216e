// Gets a Wayland compositor's own key combinations for a window for a while.
#pragma once

#include <functional>
#include <memory>

namespace drevix {

// Asks the compositor to leave its key combinations to a window (the protocol keyboard-shortcuts-inhibit,
// unstable version 1). A compositor may lack the protocol, refuse, or ask the user first, who can revoke the
// permission at any time.
//
// For a program that is already the compositor's client through another library. Never waits: events arrive
// where that library dispatches the display's default queue, in the thread that uses this.
class WaylandShortcuts {
  public:
    // Called once after each Ask with whether the window gets the combinations, and again when that changes.
    using Answer = std::function<void(bool isGiven)>;

    // `display` is the library's wl_display; it must outlive this. May throw std::bad_alloc.
    WaylandShortcuts(void *display, Answer answer);
    ~WaylandShortcuts();

    // Requests them for one window, a wl_surface, and the keyboard of one wl_seat; both must exist until
    // Release. Ends an earlier request. The answer may come before this returns.
    void Ask(void *surface, void *seat);
    // Ends the request; no answers come after this. Does nothing if there is none.
    void Release();

  private:
    struct State;
    std::unique_ptr<State> fState;
};

} // namespace drevix
