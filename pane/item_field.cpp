#include "pane/item_field.h"

#include <QDragEnterEvent>
#include <QDragMoveEvent>
#include <QMimeData>
#include <QUrl>

#include <tuple>

namespace drevix {
namespace {

// The action to accept for a dragged file. A program that is told "move" deletes its own.
Qt::DropAction HarmlessAction(const QDropEvent &event) {
    for (const Qt::DropAction action : {event.proposedAction(), Qt::CopyAction, Qt::LinkAction}) {
        if (action != Qt::MoveAction && event.possibleActions().testFlag(action)) {
            return action;
        }
    }
    return Qt::IgnoreAction;
}

} // namespace

QString TakeDraggedItem(QDropEvent *event) {
    const QList<QUrl> addresses = event->mimeData()->urls();
    const QString path = addresses.size() == 1 ? addresses.front().toLocalFile() : QString();
    const Qt::DropAction action = HarmlessAction(*event);
    event->setDropAction(action);
    event->setAccepted(!path.isEmpty() && action != Qt::IgnoreAction);
    return event->isAccepted() ? path : QString();
}

ItemField::ItemField(QWidget *parent) : QLineEdit(parent) {
    setReadOnly(true);
    setAcceptDrops(true);
}

// A line edit would accept text, but nothing while it is read-only.
void ItemField::dragEnterEvent(QDragEnterEvent *event) {
    std::ignore = TakeDraggedItem(event); // dropped later, if at all
}

void ItemField::dragMoveEvent(QDragMoveEvent *event) {
    std::ignore = TakeDraggedItem(event);
}

void ItemField::dropEvent(QDropEvent *event) {
    if (const QString path = TakeDraggedItem(event); !path.isEmpty()) {
        Q_EMIT itemDropped(path);
    }
}

} // namespace drevix
