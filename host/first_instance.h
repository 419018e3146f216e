// One window a user: a second start of the program raises the first one's window.
#pragma once

#include <QLocalServer>

namespace drevix {

// Makes this process the first instance, or tells the first one that another was started.
class FirstInstance : public QObject {
    Q_OBJECT

  public:
    // Whether this process is the first. When it is not, the first has been told; when the first does not answer
    // within a second, it counts as gone. Where no socket can be made, every process is the first.
    [[nodiscard]] bool Acquire();

  Q_SIGNALS:
    void startedAgain();

  private:
    QLocalServer fServer;
};

} // namespace drevix
