// Find Action: a list of all actions that a few typed letters narrow, worked by the keyboard alone.
#pragma once

#include "pane/action_search.h"
#include "pane/key_texts.h"

#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>

#include <functional>
#include <optional>

namespace drevix {

// A pop-up over a window: the arrow keys choose, Return takes, Escape closes. Actions that the control may not have
// stand last, dim, with the reason.
class FindPanel : public QFrame {
    Q_OBJECT

  public:
    // Why an action cannot be taken, empty for one that can.
    using Reason = std::function<QString(const SearchEntry &)>;

    explicit FindPanel(QWidget *parent);

    // Opens it at a corner of its window for the control of this name.
    void Open(const QString &control, Reason reason);

  Q_SIGNALS:
    void chosen(const drevix::SearchEntry &entry);
    // A keystroke was typed, and taken.
    void keystrokeChosen(const drevix::TypedKeystroke &keystroke);

  protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

  private:
    void Show(const QString &query);
    void AddKeystroke(const TypedKeystroke &keystroke);
    void AddAction(const FoundAction &found, const QString &reason);
    void Take(QListWidgetItem *item);
    bool PassToList(QKeyEvent *event);

    std::vector<SearchEntry> fEntries;
    Reason fReason;
    std::optional<TypedKeystroke> fTyped;
    QLineEdit *fQuery;
    QListWidget *fList;
    QLabel *fHint;
    QList<QIcon> fIcons; // by position in the action menu
};

} // namespace drevix
