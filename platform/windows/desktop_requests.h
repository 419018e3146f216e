// Requests to a desktop, its session and its media players, independent of how they are made.
#pragma once

#include <cstdint>

namespace drevix {

enum class ScrollDirection : std::uint8_t { Up, Down, Left, Right };

// To the window in front, or to the desktop about its windows.
enum class WindowRequest : std::uint8_t {
    Close,
    Minimize,
    FullScreen, // and back
    ShowDesktop,
    ShowApplicationWindows,
    ShowAllWindows,
};

enum class SessionRequest : std::uint8_t { Lock, LogOut, Suspend, Restart, ShutDown };

// To the player that played last.
enum class PlayerRequest : std::uint8_t { PlayPause, Next, Previous, Stop, VolumeUp, VolumeDown };

} // namespace drevix
