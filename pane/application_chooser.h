// The panel in which a person picks an application: one of those that are installed, or a program's file.
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

// Modal to its window; the choice stands once exec was accepted.
class ApplicationChooser : public QDialog {
    Q_OBJECT

  public:
    // Those that have settings already, by `hasSettings` of a file name, are marked, and their settings can be shown
    // instead; not offered without it.
    using SettingsTest = std::function<bool(const std::string &fileName)>;
    explicit ApplicationChooser(QWidget *window, const SettingsTest &hasSettings = {});
    [[nodiscard]] const NewApplication &Chosen() const { return fChosen; }
    // Whether the settings that the chosen one has are to be shown.
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
