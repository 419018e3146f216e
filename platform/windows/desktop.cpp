#include "platform/windows/desktop.h"

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
    if (!Setting("WAYLAND_DISPLAY").empty()) {
        *problem = "this version sends nothing to Wayland compositors";
        return nullptr;
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
