// The panel in which a person picks an application: one of those that are installed, or a program's file.
#pragma once

#include "platform/desktop_entries.h"
#include "platform/types.h"

#include <QDialog>
#include <QListView>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>

#include <string>

class QLineEdit;
class QPushButton;

namespace drevix {

// What a new record is made of. Texts are UTF-8.
struct ChosenApplication {
    OSType signature;
    std::string fileName; // empty: nothing to make a record of
    std::string shownName;
};

// The application of a desktop entry, and of a path: an entry's file, an application folder "NAME.app", or a
// program.
[[nodiscard]] ChosenApplication ApplicationOfEntry(const DesktopEntry &entry);
[[nodiscard]] ChosenApplication ApplicationOfPath(const std::string &path, std::string_view locale);

// Modal to its window; the choice stands once exec was accepted.
class ApplicationChooser : public QDialog {
    Q_OBJECT

  public:
    explicit ApplicationChooser(QWidget *window);
    [[nodiscard]] const ChosenApplication &Chosen() const { return fChosen; }

    // As the button "Other...", with the panel's answer given: takes the application at a path and ends the
    // dialog.
    void ChoosePath(const QString &path);

  protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

  private:
    void FillList();
    void ShowMatches(const QString &text);
    void ChooseSelected();
    void actOther();

    ChosenApplication fChosen = {};
    QStandardItemModel fApplications;
    QSortFilterProxyModel fMatches;
    QLineEdit *fSearch;
    QListView *fList;
    QPushButton *fOk;
};

} // namespace drevix
