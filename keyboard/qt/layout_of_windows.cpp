#include "keyboard/qt/layout_of_windows.h"

#include "keyboard/key_names.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QWindow>
#include <qpa/qplatformnativeinterface.h>

#include <memory>
#include <tuple>
#include <utility>

namespace drevix {
namespace {

// Builds the table once, when a window of the application has the focus and the compositor answers.
class BuildOnFocus : public QObject {
  public:
    BuildOnFocus(QObject *owner, void *connection, std::function<void()> rebuilt)
        : QObject(owner), fConnection(connection), fRebuilt(std::move(rebuilt)) {
        connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &BuildOnFocus::Build);
    }

  private:
    void Build(const QWindow *window) {
        const auto before = gAsciiTable;
        if (window == nullptr || !GetKeyboardInformationOver(fConnection)) {
            return;
        }
        deleteLater();
        disconnect(qGuiApp, nullptr, this, nullptr);
        if (gAsciiTable != before) {
            fRebuilt();
        }
    }

    void *fConnection; // Qt's to the compositor
    std::function<void()> fRebuilt;
};

// Qt's connection to the compositor, a wl_display; null elsewhere.
void *ConnectionToCompositor() {
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"))
               ? QGuiApplication::platformNativeInterface()->nativeResourceForIntegration("wl_display")
               : nullptr;
}

bool IsOnXServer() {
    return QGuiApplication::platformName() == QLatin1String("xcb");
}

WindowSystem SystemOfWindows() {
    return IsOnXServer() ? WindowSystem::X11 : WindowSystem::Wayland;
}

} // namespace

void LookForLayoutOfWindowsAhead() {
    if (ConnectionToCompositor() == nullptr) {
        // The window needs fonts sooner. Looked for at the same time, each would hold up the other where there are two processors.
        LookForLayoutAhead(SystemOfWindows(), [] { std::ignore = QFontDatabase::families(); });
    }
}

void GetKeyboardInformationOfWindows(QObject *owner, std::function<void()> rebuilt) {
    void *const connection = ConnectionToCompositor();
    if (connection == nullptr || !GetKeyboardInformationOver(connection)) {
        GetKeyboardInformation(SystemOfWindows());
    }
    if (connection != nullptr && QGuiApplication::focusWindow() == nullptr) {
        new BuildOnFocus(owner, connection, std::move(rebuilt));
    }
}

bool CharactersOfWindows(KeyboardCharacters *characters) {
    if (void *const connection = ConnectionToCompositor(); connection != nullptr) {
        return KeyboardCharactersOfCompositor(connection, characters);
    }
    return IsOnXServer() && CurrentKeyboardCharacters(characters, nullptr, WindowSystem::X11);
}

} // namespace drevix
