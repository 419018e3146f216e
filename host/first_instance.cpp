#include "host/first_instance.h"

#include <QStandardPaths>

namespace drevix {
namespace {

constexpr int kAnswerMilliseconds = 1000;

// Empty without a private folder: elsewhere another user could answer.
QString SocketPath() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    return folder.isEmpty() ? QString() : folder + QStringLiteral("/drevix-settings");
}

// The environment variable in which a launcher on Wayland gives a program permission to take the keyboard
// focus.
constexpr const char *kActivationToken = "XDG_ACTIVATION_TOKEN";
constexpr qint64 kLongestGreeting = 16384; // bytes: a token of a few dozen, and a path

} // namespace

bool FirstInstance::Acquire(const QString &file) {
    const QString path = SocketPath();
    if (path.isEmpty()) {
        return true;
    }
    QLocalSocket first;
    first.connectToServer(path);
    if (first.waitForConnected(kAnswerMilliseconds)) {
        first.write(qgetenv(kActivationToken) + ' ' + file.toUtf8().toPercentEncoding("/") + '\n');
        // The first instance answers with a byte when it has come to the front; a hung one must not lock the
        // user out.
        if (first.waitForReadyRead(kAnswerMilliseconds)) {
            return false;
        }
    }
    QLocalServer::removeServer(path); // a dead one's socket
    fServer.setSocketOptions(QLocalServer::UserAccessOption);
    fServer.listen(path);
    connect(&fServer, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *second = fServer.nextPendingConnection()) {
            connect(second, &QLocalSocket::disconnected, second, &QObject::deleteLater);
            connect(second, &QLocalSocket::readyRead, this, [this, second] { Answer(second); });
        }
    });
    return true;
}

// The window needs the launcher's permission to take the focus, which the other program got. It is valid
// once, and not for programs started from here.
void FirstInstance::Answer(QLocalSocket *second) {
    if (!second->canReadLine() && second->bytesAvailable() < kLongestGreeting) {
        return;
    }
    second->disconnect(this); // it is answered once, whatever it says after that
    const QByteArrayList words = second->readLine(kLongestGreeting).replace('\n', "").split(' ');
    qputenv(kActivationToken, words.first());
    Q_EMIT startedAgain(QString::fromUtf8(QByteArray::fromPercentEncoding(words.value(1))));
    qunsetenv(kActivationToken);
    second->write("1");
    second->disconnectFromServer(); // when the answer is written
}

} // namespace drevix
