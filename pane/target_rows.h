// The rows of the side bar: a flat model over the list of applications, under headings and filtered by a search.
#pragma once

#include "pane/application_icons.h"

#include <QAbstractListModel>

#include <vector>

namespace drevix {

// A row is a record's item of the list, a heading, or, during a search, an installed application without
// settings. The global record has no row; the side bar shows it above them. Questions about a record's row go
// to its item. The rows are rebuilt in the event loop's next turn after the list's rows changed.
class TargetRows : public QAbstractListModel {
    Q_OBJECT

  public:
    explicit TargetRows(QObject *parent = nullptr) : QAbstractListModel(parent) {}

    // Call once, before anything else. Both must outlive the rows.
    void UseList(QAbstractItemModel *list, const ApplicationIcons *icons);
    void Search(const QString &text);
    [[nodiscard]] bool IsSearching() const { return !fSearch.isEmpty(); }
    // Whether the search finds the global record.
    [[nodiscard]] bool HasGlobal() const;

    // The list's item of a row, -1 for a row of another kind; and the row of an item, -1 if it has none now.
    [[nodiscard]] int SourceRow(int row) const;
    [[nodiscard]] int RowOfSource(int sourceRow) const;
    // The installed application of a row, null for a row of another kind.
    [[nodiscard]] const InstalledApplication *ApplicationOf(int row) const;
    [[nodiscard]] bool IsHeading(int row) const;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;

  Q_SIGNALS:
    void rebuilt();

  private:
    void AskForRebuild();
    void Rebuild();
    void AddRecords(int heading, int marks);
    void AddInstalled();
    [[nodiscard]] QVariant InstalledData(const InstalledApplication &application, int role) const;
    void PassOn(const QModelIndex &first, const QModelIndex &last);
    [[nodiscard]] bool Matches(const QString &name, const QString &fileName) const;

    QAbstractItemModel *fList = nullptr;
    const ApplicationIcons *fIcons = nullptr;
    QString fSearch;
    std::vector<int> fRows;        // an item of the list; below 0 a heading or an installed application
    std::vector<int> fRowOfSource; // by the list's items
    bool fIsRebuildAsked = false;
};

} // namespace drevix
