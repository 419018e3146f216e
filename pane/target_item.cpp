#include "pane/target_item.h"

#include "pane/application_icons.h"

#include <QCoreApplication>

namespace drevix {

void TargetItem::SetState(const TargetState &state) {
    if (fState != state) {
        fState = state;
        emitDataChanged();
    }
}

QVariant TargetItem::data(int role) const {
    switch (role) {
    case Qt::DisplayRole:
        return fState.name;
    case Qt::DecorationRole:
        return fIcons->IconOf(fState.fileName, fState.name);
    case Qt::AccessibleDescriptionRole:
        return TargetDescription(fState.marks);
    case kTargetMarksRole:
        return fState.marks;
    case kTargetFileNameRole:
        return fState.fileName;
    default:
        return QStandardItem::data(role);
    }
}

QString TargetDescription(int marks) {
    const auto text = [](const char *english) { return QCoreApplication::translate("Targets", english); };
    QStringList parts;
    if ((marks & kTargetIsGlobal) != 0) {
        parts += text(QT_TRANSLATE_NOOP("Targets", "Every other application"));
    } else if ((marks & kTargetIsRecord) != 0) {
        parts += (marks & kTargetIsFactory) != 0 ? text(QT_TRANSLATE_NOOP("Targets", "factory settings"))
                                                 : text(QT_TRANSLATE_NOOP("Targets", "your settings"));
    }
    if ((marks & kTargetIsOff) != 0) {
        parts += text(QT_TRANSLATE_NOOP("Targets", "off"));
    }
    if ((marks & kTargetIsUnsaved) != 0) {
        parts += text(QT_TRANSLATE_NOOP("Targets", "unsaved changes"));
    }
    return parts.join(QLatin1String(", "));
}

} // namespace drevix
