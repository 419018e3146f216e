// One window a user: a second start of the program raises the first one's window.
#pragma once

#include <QLocalServer>
#include <QLocalSocket>

namespace drevix {

// Makes this process the first instance, or tells the first one that another was started.
class FirstInstance : public QObject {
    Q_OBJECT

  public:
    // Whether this process is the first. When it is not, the first has been told; when the first does not answer
    // within a second, it counts as gone. Where no socket can be made, every process is the first.
    // The first is told of this process's activation token too, and of the file that it was started with (an absolute
    // path; empty: none).
    [[nodiscard]] bool Acquire(const QString &file);

  Q_SIGNALS:
    // While it is emitted, the other process's activation token stands in the environment, where Qt takes it from
    // when a window is activated.
    void startedAgain(const QString &file);

  private:
    void Answer(QLocalSocket *second);

    QLocalServer fServer;
};

} // namespace drevix
