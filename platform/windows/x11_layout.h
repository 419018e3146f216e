// Notices that another keyboard layout is in force on an X server. For the other files of this folder.
#pragma once

#include "platform/windows/x11_link.h"

#include <cstdint>

namespace drevix {

class X11LayoutWatch {
  public:
    // Asks the server for word of its keyboard; one without the XKB extension tells nothing.
    explicit X11LayoutWatch(X11Link *link);

    // Looks at an event from the server. It may say that the keys got other characters, as setxkbmap does it, or that
    // another of the keyboard's layouts was switched to; keys that are pressed and released say nothing.
    void Notice(const xcb_generic_event_t &event);
    // Grows with each such event.
    [[nodiscard]] unsigned Changes() const { return fChanges; }

  private:
    std::uint8_t fEventCode = 0; // of all the extension's events; 0 without it
    unsigned fChanges = 0;
};

} // namespace drevix
