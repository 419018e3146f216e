// The window in front on an X11 desktop. Internal to this folder.
#pragma once

#include "platform/windows/front_window.h"
#include "platform/windows/x11_link.h"

#include <vector>

namespace drevix {

class X11Front {
  public:
    // Needs a window manager that supports _NET_ACTIVE_WINDOW, as all of the last twenty years do; without
    // one no window is ever in front.
    explicit X11Front(X11Link *link);

    // Notes an event from the server which may mean that another window is in front, or that its properties
    // have changed.
    void Notice(const xcb_generic_event_t &event);
    // Queries what has changed, if anything. Events may arrive meanwhile. False if nothing has changed, or if
    // the server did not answer in time: then the next call tries again.
    bool Update();

    // The window with the keyboard focus; XCB_NONE for none.
    [[nodiscard]] xcb_window_t Window() const { return fWindow; }
    // The description of the window it belongs to: a dialog counts as the window that it is a dialog of.
    [[nodiscard]] const FrontWindow &Description() const { return fDescription; }

  private:
    struct Step;

    [[nodiscard]] Step Look(xcb_window_t window);
    [[nodiscard]] std::uint32_t ProcessOf(xcb_window_t window);
    void Watch(xcb_window_t window, std::uint32_t events);

    X11Link *fLink;
    bool fHasProcesses = false; // whether the server can tell a window's process
    bool fIsOld = true;
    xcb_window_t fWindow = XCB_NONE;
    std::vector<xcb_window_t> fWatched; // the window in front and those that it belongs to
    FrontWindow fDescription;
};

} // namespace drevix
