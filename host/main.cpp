// drevix-settings: the window in which a person decides what the device's controls do.
#include "host/first_instance.h"
#include "host/host_text.h"
#include "host/panel_window.h"
#include "host/picture.h"
#include "platform/resources.h"
#include "platform/status.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QLibraryInfo>
#include <QSocketNotifier>
#include <QTextStream>
#include <QTranslator>

#include <csignal>
#include <cstring>
#include <sys/signalfd.h>
#include <unistd.h>

using namespace drevix;

namespace {

constexpr int kWrongUsage = 2;

int Fail(const QString &problem, int status) {
    QTextStream(stderr) << "drevix-settings: " << problem << '\n';
    return status;
}

// The scale must be known before the application starts.
void TakeScale(int argc, char **argv) {
    constexpr const char *kOption = "--scale=";
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], kOption, std::strlen(kOption)) == 0) {
            qputenv("QT_SCALE_FACTOR", argv[i] + std::strlen(kOption));
        } else if (std::strcmp(argv[i], "--scale") == 0 && i + 1 < argc) {
            qputenv("QT_SCALE_FACTOR", argv[i + 1]);
        }
    }
}

void LoadTranslations(QApplication &application) {
    FSRef resources;
    if (FindResourceFolder(&resources) == noErr) {
        auto *const own = new QTranslator(&application);
        if (own->load(QLocale(), QStringLiteral("drevix"), QStringLiteral("_"),
                      QString::fromStdString(resources.path) + QStringLiteral("/translations"))) {
            QCoreApplication::installTranslator(own);
        }
    }
    auto *const qt = new QTranslator(&application);
    if (qt->load(QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"),
                 QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QCoreApplication::installTranslator(qt);
    }
}

// A request to end (logging out, `kill`, Ctrl+C) closes the window as its user would, so the settings are
// saved.
class EndRequests {
  public:
    EndRequests() {
        sigset_t requests;
        sigemptyset(&requests);
        for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
            sigaddset(&requests, number);
        }
        sigprocmask(SIG_BLOCK, &requests, nullptr);
        fDescriptor = ::signalfd(-1, &requests, SFD_CLOEXEC | SFD_NONBLOCK);
    }
    EndRequests(const EndRequests &) = delete;
    EndRequests &operator=(const EndRequests &) = delete;
    ~EndRequests() {
        if (fDescriptor >= 0) {
            ::close(fDescriptor);
        }
    }
    void Obey(QApplication &application) const {
        if (fDescriptor >= 0) {
            auto *const notifier = new QSocketNotifier(fDescriptor, QSocketNotifier::Read, &application);
            QObject::connect(notifier, &QSocketNotifier::activated, &application, &QApplication::quit);
        }
    }

  private:
    int fDescriptor = -1;
};

} // namespace

int main(int argc, char **argv) {
    const EndRequests endRequests; // before the first thread starts, which would not block the signals
    TakeScale(argc, argv);
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("halcyra"));
    QApplication::setApplicationName(QStringLiteral("drevix-settings"));
    QApplication::setApplicationDisplayName(QStringLiteral("Drevix Veltrana"));
    QApplication::setDesktopFileName(QStringLiteral("com.halcyra.drevix.settings"));
    LoadTranslations(application);

    QCommandLineParser options;
    options.setApplicationDescription(
        Host::tr("Decides, application by application, what every control of the device does."));
    options.addHelpOption();
    options.addOptions(PictureOptions());
    options.process(application);
    QString problem;
    const PictureRequest picture = ReadPictureRequest(options, &problem);
    if (!options.positionalArguments().isEmpty()) {
        problem = Host::tr("It takes options only; see --help.");
    }
    if (!problem.isEmpty()) {
        return Fail(problem, kWrongUsage);
    }

    FirstInstance instance;
    if (picture.file.isEmpty() && !instance.Acquire()) {
        return 0;
    }
    UsePictureColors(picture);
    PanelWindow window;
    const PanelUse use = picture.file.isEmpty() ? PanelUse::Work : PanelUse::Picture;
    if (!window.LoadPanel(use, &problem)) {
        return Fail(problem, 1);
    }
    if (!picture.file.isEmpty()) {
        return WritePicture(window, picture, &problem) ? 0 : Fail(problem, 1);
    }
    endRequests.Obey(application);
    QObject::connect(&instance, &FirstInstance::startedAgain, &window, &PanelWindow::ComeToFront);
    window.RestorePlace();
    window.show();
    return QApplication::exec();
}
