// One window per user: a second start of the program raises the first one's window.
#pragma once

#include <QLocalServer>
#include <QLocalSocket>

namespace drevix {

// Makes this process the first instance, or notifies the existing one.
class FirstInstance : public QObject {
    Q_OBJECT

  public:
    // Whether this process is the first instance. If not, the first has been notified; if that does not
    // answer within a second, it counts as gone. If no socket can be made, every process is the first. The
    // first also gets this process's activation token and the file that it was started with (an absolute
    // path; empty: none).
    [[nodiscard]] bool Acquire(const QString &file);

  Q_SIGNALS:
    // During this signal, the other process's activation token is in the environment, where Qt looks for it
    // when a window is activated.
    void startedAgain(const QString &file);

  private:
    void Answer(QLocalSocket *second);

    QLocalServer fServer;
};

} // namespace drevix
