// The side bar: the applications that have settings, a search for them and for others, and the list's commands.
#pragma once

#include "pane/target_rows.h"

#include <QWidget>

class QAbstractButton;
class QAction;
class QComboBox;
class QLabel;
class QLineEdit;
class QListView;
class QMenu;
class QToolButton;

namespace drevix {

// Shows the list of applications that a pop-up menu holds, and makes choices in it as its user would.
class TargetSideBar : public QWidget {
    Q_OBJECT

  public:
    explicit TargetSideBar(QWidget *parent = nullptr);

    // Call once, when the list has its items and fonts are loaded. Both must outlive the side bar.
    void UseList(QComboBox *list, ApplicationIcons *icons);
    // The commands of the buttons below the list.
    void SetActions(QAction *add, QAction *remove, QMenu *more);
    void FocusSearch();
    void FocusList();

  Q_SIGNALS:
    // A record's item of the list was chosen and is now the current one.
    void chosen(int item);
    // The user asked to add settings for an installed application.
    void addAsked(const drevix::NewApplication &application);

  protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

  private:
    void BuildSearch();
    void SetSizes();
    void TakeSearch(const QString &text);
    void ShowCurrent();
    void ShowRebuilt();
    void Choose(int item);
    void ChooseRow(const QModelIndex &row);
    void ClickRow(const QModelIndex &row);
    bool TakeSearchKey(int key);
    bool TakeListKey(int key);
    void GoToFirst();

    TargetRows fRows;
    QComboBox *fList = nullptr;
    QLineEdit *fSearch = nullptr;
    QAbstractButton *fGlobal;
    QListView *fView;
    QLabel *fNone;
    QToolButton *fAdd;
    QToolButton *fRemove;
    QToolButton *fMore;
};

} // namespace drevix
