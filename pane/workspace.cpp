#include "pane/workspace.h"

#include "platform/base/status.h"
#include "platform/desktop/app_folder.h"
#include "platform/desktop/desktop_entries.h"

#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

namespace drevix {

std::string FindApplication(const std::string &resources, const char *name) {
    const std::string folder = resources + '/' + name;
    const QFileInfo program(QString::fromStdString(ProgramOfAppFolder(folder)));
    return !resources.empty() && program.isFile() && program.isExecutable() ? folder : std::string();
}

bool LaunchApplication(const std::string &folder) {
    return QProcess::startDetached(QString::fromStdString(ProgramOfAppFolder(folder)), {}, QDir::homePath());
}

bool OpenItem(const QString &path) {
    const std::string bytes = QFile::encodeName(path).toStdString();
    std::vector<std::string> command;
    DesktopEntry entry;
    if (const QFileInfo item(path); item.isDir()) {
        if (const std::string program = ProgramOfAppFolder(bytes); !program.empty()) {
            command = {program};
        }
    } else if (ReadDesktopEntry(bytes, MessagesLocale(), &entry) == noErr) {
        command = CommandOfEntry(entry);
    } else if (item.isExecutable()) {
        command = {bytes};
    }
    QStringList words;
    for (const std::string &word : command) {
        words += QString::fromLocal8Bit(word.c_str());
    }
    // On some disks every file counts as a program; what cannot be run is opened.
    return (!words.isEmpty() && QProcess::startDetached(words.front(), words.mid(1), QDir::homePath())) ||
           OpenAddress(QUrl::fromLocalFile(path));
}

bool OpenAddress(const QUrl &address) {
    return QDesktopServices::openUrl(address);
}

} // namespace drevix
