#include "pane/help_key.h"

#include "pane/help_pages.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>

#include <utility>

namespace drevix {

HelpKey::HelpKey(QWidget *window, std::function<void(const char *page)> open)
    : QObject(window), fOpen(std::move(open)) {
    qApp->installEventFilter(this);
}

// The window's own shortcut does not work there.
bool HelpKey::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() != QEvent::KeyPress || !watched->isWidgetType() ||
        !static_cast<QKeyEvent *>(event)->matches(QKeySequence::HelpContents)) {
        return false;
    }
    const QWidget *panel = QApplication::activePopupWidget();
    panel = panel != nullptr ? panel : QApplication::activeModalWidget();
    const auto *const widget = static_cast<QWidget *>(watched);
    if (panel == nullptr || widget->window() != panel) {
        return false;
    }
    fOpen(HelpPageOf(widget));
    return true;
}

} // namespace drevix
