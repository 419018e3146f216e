// A panel for picking an application: an installed one, or a program's file.
#pragma once

#include "settings/new_application.h"

#include <QDialog>
#include <QListView>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>

#include <functional>
#include <string>

class QLineEdit;
class QPushButton;

namespace drevix {

// Modal to its window; the choice is valid once exec was accepted.
class ApplicationChooser : public QDialog {
    Q_OBJECT

  public:
    // Marks the applications that have settings already, by `hasSettings` of a file name, and offers to show
    // these settings instead. Neither without it.
    using SettingsTest = std::function<bool(const std::string &fileName)>;
    explicit ApplicationChooser(QWidget *window, const SettingsTest &hasSettings = {});
    [[nodiscard]] const NewApplication &Chosen() const { return fChosen; }
    // Whether to show the settings that the chosen application already has.
    [[nodiscard]] bool IsToShow() const { return fIsToShow; }

  protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

  private:
    void FillList(const SettingsTest &hasSettings);
    void ShowButtons();
    void ShowMatches(const QString &text);
    void ChooseSelected();
    void actOther();

    NewApplication fChosen;
    QStandardItemModel fApplications;
    QSortFilterProxyModel fMatches;
    QLineEdit *fSearch;
    QListView *fList;
    QPushButton *fOk;
    QPushButton *fShow;
    bool fIsToShow = false;
};

} // namespace drevix
