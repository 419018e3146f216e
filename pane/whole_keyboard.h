// The whole keyboard for a window for a while, the desktop's own combinations (Alt+Tab, Alt+F4) with it.
#pragma once

#include <QObject>

#include <memory>

class QWidget;

namespace drevix {

class WaylandShortcuts;

// Asks for it as the platform lets it: X11 gives it or not, a Wayland compositor may know no such request, refuse
// it, or ask the user.
class WholeKeyboard : public QObject {
    Q_OBJECT

  public:
    // For the window of `user`, which owns this.
    explicit WholeKeyboard(QWidget *user);
    ~WholeKeyboard() override;

    void Ask();
    // Gives back what was asked for.
    void Release();

  Q_SIGNALS:
    // Between Ask and Release, at once or later: whether the window has the desktop's combinations now. On a
    // platform that has no desktop it is not emitted.
    void answered(bool isGiven);

  private:
    QWidget *fUser;
    std::unique_ptr<WaylandShortcuts> fShortcuts; // null but on Wayland
};

} // namespace drevix
