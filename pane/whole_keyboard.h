// Grabs the whole keyboard for a window for a while, including the desktop's own combinations (Alt+Tab,
// Alt+F4).
#pragma once

#include <QObject>

#include <memory>

class QWidget;

namespace drevix {

class WaylandShortcuts;

// Requests it as the platform allows: X11 grants it or not; a Wayland compositor may not support the request,
// refuse it, or ask the user.
class WholeKeyboard : public QObject {
    Q_OBJECT

  public:
    // For the window of `user`, its owner.
    explicit WholeKeyboard(QWidget *user);
    ~WholeKeyboard() override;

    void Ask();
    // Ends the request.
    void Release();

  Q_SIGNALS:
    // Emitted between Ask and Release, at once or later: whether the window now gets the desktop's
    // combinations. Not emitted on a platform without a desktop.
    void answered(bool isGiven);

  private:
    QWidget *fUser;
    std::unique_ptr<WaylandShortcuts> fShortcuts; // null but on Wayland
};

} // namespace drevix
