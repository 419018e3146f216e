#include "platform/windows/desktop.h"

#include "platform/windows/desktop_uinput.h"
#include "platform/windows/desktop_wlroots.h"
#include "platform/windows/desktop_x11.h"

#include <cstdlib>
#include <string_view>

namespace drevix {
namespace {

std::string_view Setting(const char *name) {
    const char *const value = std::getenv(name);
    return value == nullptr ? std::string_view() : value;
}

} // namespace

std::unique_ptr<Desktop> OpenDesktop(std::string *problem) {
    // X clients of a Wayland session are only some of its windows.
    if (const std::string_view compositor = Setting("WAYLAND_DISPLAY"); !compositor.empty()) {
        std::unique_ptr<Desktop> desktop = OpenWlrootsDesktop();
        if (desktop == nullptr && (desktop = OpenUinputDesktop(problem)) == nullptr) {
            *problem = "the Wayland compositor of WAYLAND_DISPLAY=" + std::string(compositor) +
                       " takes no keys from programs, and " + *problem + "; see DrevixHelper(1)";
        }
        return desktop;
    }
    if (Setting("DISPLAY").empty()) {
        *problem = "neither WAYLAND_DISPLAY nor DISPLAY is set";
        return nullptr;
    }
    std::unique_ptr<Desktop> desktop = OpenX11Desktop(nullptr);
    if (desktop == nullptr) {
        *problem = "the X server of DISPLAY=" + std::string(Setting("DISPLAY")) + " cannot be reached";
    }
    return desktop;
}

} // namespace drevix
