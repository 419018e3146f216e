// The panel in which a person picks an application: one of those that are installed, or a program's file.
#pragma once

#include "settings/new_application.h"

#include <QDialog>
#include <QListView>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>

class QLineEdit;
class QPushButton;

namespace drevix {

// Modal to its window; the choice stands once exec was accepted.
class ApplicationChooser : public QDialog {
    Q_OBJECT

  public:
    explicit ApplicationChooser(QWidget *window);
    [[nodiscard]] const NewApplication &Chosen() const { return fChosen; }

  protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

  private:
    void FillList();
    void ShowMatches(const QString &text);
    void ChooseSelected();
    void actOther();

    NewApplication fChosen;
    QStandardItemModel fApplications;
    QSortFilterProxyModel fMatches;
    QLineEdit *fSearch;
    QListView *fList;
    QPushButton *fOk;
};

} // namespace drevix
