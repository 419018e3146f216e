// The window in front, as a desktop reports it.
#pragma once

#include <cstdint>
#include <string>

namespace drevix {

// Texts are UTF-8 as the application set them, and empty if the desktop does not report them. All are empty
// if no window is in front.
struct FrontWindow {
    std::string entryId;     // desktop entry or application id: "org.kde.kate", with or without ".desktop"
    std::string windowClass; // the second part of WM_CLASS on X11: "Gimp-2.10"
    std::string windowName;  // the first part: "gimp"
    std::string program;     // path or name of the program that the process runs
    std::uint32_t process = 0;
    friend bool operator==(const FrontWindow &, const FrontWindow &) = default;
};

} // namespace drevix
