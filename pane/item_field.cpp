#include "pane/item_field.h"

#include <QDragEnterEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QUrl>

namespace drevix {

QString DraggedItem(const QMimeData *data) {
    const QList<QUrl> addresses = data->urls();
    return addresses.size() == 1 ? addresses.front().toLocalFile() : QString();
}

ItemField::ItemField(QWidget *parent) : QLineEdit(parent) {
    setReadOnly(true);
    setAcceptDrops(true);
}

void ItemField::dragEnterEvent(QDragEnterEvent *event) {
    event->setAccepted(!DraggedItem(event->mimeData()).isEmpty());
}

// The line edit would take text, and none while it is read-only.
void ItemField::dragMoveEvent(QDragMoveEvent *event) {
    event->setAccepted(!DraggedItem(event->mimeData()).isEmpty());
}

void ItemField::dropEvent(QDropEvent *event) {
    if (const QString path = DraggedItem(event->mimeData()); !path.isEmpty()) {
        event->acceptProposedAction();
        Q_EMIT itemDropped(path);
    }
}

} // namespace drevix
