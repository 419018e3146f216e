#include "platform/windows/desktop.h"

#include "platform/base/translation.h"
#include "platform/windows/desktop_uinput.h"
#include "platform/windows/desktop_wlroots.h"
#include "platform/windows/desktop_x11.h"

#include <cstdlib>
#include <string_view>
#include <utility>

namespace drevix {
namespace {

std::string_view Setting(const char *name) {
    const char *const value = std::getenv(name);
    return value == nullptr ? std::string_view() : value;
}

} // namespace

std::unique_ptr<Desktop> OpenDesktop(std::string *problem) {
    // X clients are only some of a Wayland session's windows.
    if (!Setting("WAYLAND_DISPLAY").empty()) {
        std::unique_ptr<Desktop> desktop = OpenWlrootsDesktop(problem);
        return desktop != nullptr ? std::move(desktop) : OpenUinputDesktop(problem);
    }
    if (Setting("DISPLAY").empty()) {
        *problem = Translated("neither WAYLAND_DISPLAY nor DISPLAY is set");
        return nullptr;
    }
    std::unique_ptr<Desktop> desktop = OpenX11Desktop(nullptr);
    if (desktop == nullptr) {
        *problem = Translated("the X server of DISPLAY=%1 cannot be reached", Setting("DISPLAY"));
    }
    return desktop;
}

} // namespace drevix
