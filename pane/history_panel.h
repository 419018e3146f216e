// Lists earlier settings to choose from: a row for each, with the changes made by the save that replaced it.
#pragma once

#include <QComboBox>
#include <QDialog>
#include <QPushButton>
#include <QString>
#include <QStringList>
#include <QTreeWidget>

#include <functional>
#include <vector>

namespace drevix {

struct HistoryItem {
    QString replaced; // when
    QString changes;
    bool isWhole; // else damaged, and cannot be chosen
};

// Modal to its window. Accepted when the user has chosen.
class HistoryPanel : public QDialog {
    Q_OBJECT

  public:
    // The names of the records of one of the rows.
    using RecordsOf = std::function<QStringList(int row)>;

    HistoryPanel(const std::vector<HistoryItem> &items, RecordsOf recordsOf, QWidget *window);

    [[nodiscard]] int Row() const;    // -1: none
    [[nodiscard]] int Record() const; // as RecordsOf counts; -1: all

  private:
    void ShowRow();

    RecordsOf fRecordsOf;
    QTreeWidget *fList;
    QComboBox *fWhat;
    QPushButton *fRestore;
};

} // namespace drevix
