// Notices changes of the keyboard layout on an X server. Internal to this folder.
#pragma once

#include "platform/windows/x11_link.h"

#include <cstdint>

namespace drevix {

class X11LayoutWatch {
  public:
    // Subscribes to keyboard changes; a server without the XKB extension reports none.
    explicit X11LayoutWatch(X11Link *link);

    // Notes an event from the server which may mean that the keys got other characters, as with setxkbmap, or
    // that another of the keyboard's layouts was selected. Key presses and releases do not count.
    void Notice(const xcb_generic_event_t &event);
    // Increases with each such event.
    [[nodiscard]] unsigned Changes() const { return fChanges; }

  private:
    std::uint8_t fEventCode = 0; // of all the extension's events; 0 without it
    unsigned fChanges = 0;
};

} // namespace drevix
