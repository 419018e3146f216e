// Plays a user's clicks, keys and pauses on the panel before it is drawn.
#pragma once

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <chrono>
#include <functional>

namespace drevix {

class PictureSteps : public QObject {
    Q_OBJECT

  public:
    // Steps such as "click uiPaneButtonApply"; the manual page lists the words.
    explicit PictureSteps(QStringList steps);
    // Whether the text begins with one of the words.
    [[nodiscard]] static bool IsStep(const QString &text);

    // Performs them from the event loop, then calls `done`: with an empty text, or with what could not be
    // done within ten seconds.
    void Start(std::function<void(const QString &problem)> done);

  private:
    void DoNext();

    QStringList fSteps; // those left
    QTimer fTimer;
    std::chrono::steady_clock::time_point fDeadline; // of the first of them
    std::function<void(const QString &problem)> fDone;
};

} // namespace drevix
