#include "host/first_instance.h"

#include <QLocalSocket>
#include <QStandardPaths>

#include <memory>
#include <unistd.h>

namespace drevix {
namespace {

constexpr int kAnswerMilliseconds = 1000;

QString SocketPath() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    return folder.isEmpty() ? QStringLiteral("drevix-settings-%1").arg(::getuid())
                            : folder + QStringLiteral("/drevix-settings");
}

} // namespace

bool FirstInstance::Acquire() {
    const QString path = SocketPath();
    QLocalSocket first;
    first.connectToServer(path);
    // The first answers with a byte when it has come to the front; a hung one must not keep the user out.
    if (first.waitForConnected(kAnswerMilliseconds) && first.waitForReadyRead(kAnswerMilliseconds)) {
        return false;
    }
    QLocalServer::removeServer(path); // a dead one's socket
    fServer.setSocketOptions(QLocalServer::UserAccessOption);
    fServer.listen(path);
    connect(&fServer, &QLocalServer::newConnection, this, [this] {
        const std::unique_ptr<QLocalSocket> second(fServer.nextPendingConnection());
        if (second) {
            second->write("1");
            second->waitForBytesWritten(kAnswerMilliseconds);
            Q_EMIT startedAgain();
        }
    });
    return true;
}

} // namespace drevix
