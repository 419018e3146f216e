#include "pane/whole_keyboard.h"

#include "platform/windows/wayland_shortcuts.h"

#include <QGuiApplication>
#include <QWidget>
#include <QWindow>
#include <qpa/qplatformnativeinterface.h>

namespace drevix {
namespace {

bool IsX11() {
    return QGuiApplication::platformName() == QLatin1String("xcb");
}
bool IsWayland() {
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

void *OfCompositor(const char *name) {
    return QGuiApplication::platformNativeInterface()->nativeResourceForIntegration(name);
}

} // namespace

// Asks now what the compositor supports, so that it is known when the keyboard is needed.
WholeKeyboard::WholeKeyboard(QWidget *user) : QObject(user), fUser(user) {
    if (void *display = IsWayland() ? OfCompositor("wl_display") : nullptr) {
        fShortcuts =
            std::make_unique<WaylandShortcuts>(display, [this](bool isGiven) { Q_EMIT answered(isGiven); });
    }
}

WholeKeyboard::~WholeKeyboard() = default;

void WholeKeyboard::Ask() {
    QWindow *const window = fUser->window()->windowHandle();
    if (window == nullptr) {
        return;
    }
    if (IsX11()) {
        Q_EMIT answered(window->setKeyboardGrabEnabled(true));
    } else if (fShortcuts != nullptr) {
        fShortcuts->Ask(
            QGuiApplication::platformNativeInterface()->nativeResourceForWindow("surface", window),
            OfCompositor("wl_seat"));
    }
}

void WholeKeyboard::Release() {
    if (QWindow *const window = fUser->window()->windowHandle(); window != nullptr && IsX11()) {
        window->setKeyboardGrabEnabled(false);
    }
    if (fShortcuts != nullptr) {
        fShortcuts->Release();
    }
}

} // namespace drevix
