#include "keyboard/qt/layout_watch.h"

#include "keyboard/key_codes.h"
#include "keyboard/key_names.h"
#include "keyboard/qt/key_events.h"
#include "keyboard/qt/layout_of_windows.h"

#include <QGuiApplication>
#include <QKeyEvent>

#include <utility>

namespace drevix {
namespace {

constexpr qint64 kBetweenChecks = 1000; // milliseconds

// Whether a letter was typed on a key that has another character in the table.
bool IsElsewhere(const QKeyEvent &event) {
    if (event.key() < Qt::Key_A || event.key() > Qt::Key_Z) {
        return false;
    }
    const std::optional<Keystroke> keystroke = KeystrokeOfEvent(event, CommandKey::Super);
    return keystroke && GetKeyChar(keystroke->keyCode) != event.key() - Qt::Key_A + 'a';
}

} // namespace

LayoutWatch::LayoutWatch(QObject *parent) : QObject(parent) {
    qGuiApp->installEventFilter(this);
}

void LayoutWatch::Check() {
    fSinceCheck.start();
    KeyboardCharacters layout{};
    if (!CharactersOfWindows(&layout)) {
        return;
    }
    const bool wasOther = std::exchange(fIsOther, KeyCharacters(layout) != gAsciiTable);
    if (fIsOther || wasOther) {
        Q_EMIT switched(fIsOther);
    }
}

bool LayoutWatch::eventFilter(QObject *watched, QEvent *event) {
    const bool isTime = !fSinceCheck.isValid() || fSinceCheck.elapsed() >= kBetweenChecks;
    if (event->type() == QEvent::KeyPress && isTime && IsElsewhere(*static_cast<QKeyEvent *>(event))) {
        Check();
    }
    return QObject::eventFilter(watched, event);
}

} // namespace drevix
