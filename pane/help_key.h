// The help key in the panels that stand in front of the window: dialogs and the list of actions.
#pragma once

#include <QObject>

#include <functional>

namespace drevix {

class HelpKey : public QObject {
    Q_OBJECT

  public:
    // Calls `open` with the page for what has the focus there; belongs to `window`.
    HelpKey(QWidget *window, std::function<void(const char *page)> open);

    bool eventFilter(QObject *watched, QEvent *event) override;

  private:
    std::function<void(const char *page)> fOpen;
};

} // namespace drevix
