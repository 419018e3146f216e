#include "pane/target_rows.h"

#include "pane/target_item.h"

#include <QCoreApplication>
#include <QSet>

#include <algorithm>
#include <array>

namespace drevix {
namespace {

// The meaning of a row below 0: a heading, or from kFirstInstalled down an installed application.
enum RowKind : int { kYours = -1, kFactory = -2, kInstalled = -3, kFirstInstalled = -4 };

constexpr auto kHeadings = std::to_array<const char *>({
    QT_TRANSLATE_NOOP("Targets", "Yours"),
    QT_TRANSLATE_NOOP("Targets", "From the factory"),
    QT_TRANSLATE_NOOP("Targets", "Installed, without settings"),
});

} // namespace

void TargetRows::UseList(QAbstractItemModel *list, const ApplicationIcons *icons) {
    fList = list;
    fIcons = icons;
    for (const auto change : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved}) {
        connect(list, change, this, &TargetRows::AskForRebuild);
    }
    connect(list, &QAbstractItemModel::modelReset, this, &TargetRows::AskForRebuild);
    connect(list, &QAbstractItemModel::dataChanged, this, &TargetRows::PassOn);
    Rebuild();
}

void TargetRows::Search(const QString &text) {
    if (const QString words = text.simplified(); words != fSearch) {
        fSearch = words;
        AskForRebuild();
    }
}

void TargetRows::AskForRebuild() {
    if (!fIsRebuildAsked) {
        fIsRebuildAsked = true;
        QMetaObject::invokeMethod(this, &TargetRows::Rebuild, Qt::QueuedConnection);
    }
}

void TargetRows::Rebuild() {
    fIsRebuildAsked = false;
    beginResetModel();
    fRows.clear();
    AddRecords(kYours, kTargetIsRecord);
    AddRecords(kFactory, kTargetIsRecord | kTargetIsFactory);
    if (IsSearching()) {
        AddInstalled();
    }
    fRowOfSource.assign(static_cast<std::size_t>(fList->rowCount()), -1);
    for (std::size_t i = 0; i < fRows.size(); ++i) {
        if (fRows[i] >= 0) {
            fRowOfSource[static_cast<std::size_t>(fRows[i])] = static_cast<int>(i);
        }
    }
    endResetModel();
    Q_EMIT rebuilt();
}

bool TargetRows::Matches(const QString &name, const QString &fileName) const {
    return name.contains(fSearch, Qt::CaseInsensitive) || fileName.contains(fSearch, Qt::CaseInsensitive);
}

bool TargetRows::HasGlobal() const {
    return !IsSearching() || fList->index(0, 0).data().toString().contains(fSearch, Qt::CaseInsensitive);
}

// Adds the records of exactly this kind under their heading.
void TargetRows::AddRecords(int heading, int marks) {
    constexpr int kKind = kTargetIsRecord | kTargetIsGlobal | kTargetIsFactory;
    const std::size_t before = fRows.size();
    fRows.push_back(heading);
    const int count = fList->rowCount();
    fRows.reserve(before + static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const QModelIndex item = fList->index(i, 0);
        const bool isOfKind = (item.data(kTargetMarksRole).toInt() & kKind) == marks;
        if (isOfKind &&
            (!IsSearching() || Matches(item.data().toString(), item.data(kTargetFileNameRole).toString()))) {
            fRows.push_back(i);
        }
    }
    if (fRows.size() == before + 1) {
        fRows.pop_back();
    }
}

void TargetRows::AddInstalled() {
    QSet<QString> withSettings;
    for (int i = 0; i < fList->rowCount(); ++i) {
        withSettings += fList->index(i, 0).data(kTargetFileNameRole).toString();
    }
    const std::vector<InstalledApplication> &installed = fIcons->Installed();
    const std::size_t before = fRows.size();
    fRows.reserve(before + installed.size() + 1);
    fRows.push_back(kInstalled);
    for (std::size_t i = 0; i < installed.size(); ++i) {
        const InstalledApplication &application = installed[i];
        if (!withSettings.contains(application.fileName) && Matches(application.name, application.fileName)) {
            fRows.push_back(kFirstInstalled - static_cast<int>(i));
        }
    }
    if (fRows.size() == before + 1) {
        fRows.pop_back();
    }
}

int TargetRows::SourceRow(int row) const {
    return row >= 0 && row < rowCount() ? std::max(-1, fRows[static_cast<std::size_t>(row)]) : -1;
}

int TargetRows::RowOfSource(int sourceRow) const {
    return sourceRow >= 0 && sourceRow < static_cast<int>(fRowOfSource.size())
               ? fRowOfSource[static_cast<std::size_t>(sourceRow)]
               : -1;
}

bool TargetRows::IsHeading(int row) const {
    const int kind = fRows[static_cast<std::size_t>(row)];
    return kind < 0 && kind > kFirstInstalled;
}

const InstalledApplication *TargetRows::ApplicationOf(int row) const {
    const int kind = row >= 0 && row < rowCount() ? fRows[static_cast<std::size_t>(row)] : 0;
    return kind > kFirstInstalled ? nullptr
                                  : &fIcons->Installed()[static_cast<std::size_t>(kFirstInstalled - kind)];
}

int TargetRows::rowCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : static_cast<int>(fRows.size());
}

QVariant TargetRows::data(const QModelIndex &index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    if (const int source = SourceRow(index.row()); source >= 0) {
        return fList->index(source, 0).data(role);
    }
    if (const InstalledApplication *application = ApplicationOf(index.row()); application != nullptr) {
        return InstalledData(*application, role);
    }
    const int heading = -1 - fRows[static_cast<std::size_t>(index.row())];
    return role == Qt::DisplayRole
               ? QCoreApplication::translate("Targets", kHeadings[static_cast<std::size_t>(heading)])
               : QVariant();
}

QVariant TargetRows::InstalledData(const InstalledApplication &application, int role) const {
    switch (role) {
    case Qt::DisplayRole:
        return application.name;
    case Qt::DecorationRole:
        return fIcons->IconOf(application.fileName, application.name);
    case Qt::AccessibleDescriptionRole:
        return QCoreApplication::translate("Targets", "Installed, without settings");
    case kTargetFileNameRole:
        return application.fileName;
    default:
        return {};
    }
}

Qt::ItemFlags TargetRows::flags(const QModelIndex &index) const {
    return index.isValid() && !IsHeading(index.row()) ? Qt::ItemIsEnabled | Qt::ItemIsSelectable
                                                      : Qt::ItemFlags(Qt::NoItemFlags);
}

// A record may change its section, but only together with a rebuild of its rows.
void TargetRows::PassOn(const QModelIndex &first, const QModelIndex &last) {
    if (fIsRebuildAsked) {
        return;
    }
    for (int source = first.row(); source <= last.row(); ++source) {
        if (const int row = RowOfSource(source); row >= 0) {
            Q_EMIT dataChanged(index(row), index(row));
        }
    }
}

} // namespace drevix
