// drevix-settings: the window for choosing what the device's controls do.
#include "host/contrast_style.h"
#include "host/first_instance.h"
#include "host/fonts_ahead.h"
#include "host/host_text.h"
#include "host/panel_window.h"
#include "host/picture.h"
#include "platform/base/log.h"
#include "platform/base/status.h"
#include "platform/desktop/resources.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QLoggingCategory>
#include <QSocketNotifier>
#include <QTextStream>
#include <QTranslator>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <string_view>
#include <tuple>
#include <unistd.h>

using namespace drevix;

namespace {

constexpr int kWrongUsage = 2;

int Fail(const QString &problem, int status) {
    QTextStream(stderr) << "drevix-settings: " << problem << '\n';
    return status;
}

// The value of an option needed before the application starts; null without one. Leaves errors to the option
// parser.
const char *EarlyOption(int argc, char **argv, std::string_view option) {
    const char *value = nullptr;
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        if (word == option) {
            value = argv[i + 1]; // behind the last word stands a null
        } else if (word.starts_with(option) && word.substr(option.size()).starts_with('=')) {
            value = argv[i] + option.size() + 1;
        }
    }
    return value; // of an option that stands there twice, the last
}

void TakeScale(int argc, char **argv) {
    const char *const text = EarlyOption(argc, argv, "--scale");
    if (ScaleFromText(QString::fromLocal8Bit(text))) {
        qputenv("QT_SCALE_FACTOR", text);
    }
}

// Options that are answered without a window, and so without a display.
void DoWithoutDisplay(int argc, char **argv) {
    static constexpr auto kWords =
        std::to_array<std::string_view>({"--help", "-h", "--help-all", "--version", "-v", "--picture"});
    const auto isOne = [](std::string_view word) {
        return std::ranges::find(kWords, word.substr(0, word.find('='))) != kWords.end();
    };
    const bool hasDisplay =
        qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
    if (!hasDisplay && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM") &&
        std::any_of(argv, argv + argc, isOne)) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
}

// Pictures are also drawn where nobody is logged in. There Qt would complain that a session's folders are
// missing, and about window hints that do not apply.
void DrawInSilence(int argc, char **argv) {
    if (EarlyOption(argc, argv, "--picture") != nullptr) {
        QLoggingCategory::setFilterRules(QStringLiteral("default.warning=false"));
    }
}

// Set before the panel is loaded, and passed on to a helper that it may start.
void ObeyVerbose(int argc, char **argv) {
    if (std::any_of(argv, argv + argc, [](std::string_view word) { return word == "--verbose"; })) {
        BeVerbose();
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

std::array<int, 2> gEndRequests; // a pipe: where they are seen, where they are told

void TellEndRequest(int /*signal*/) {
    const int error = errno;
    std::ignore = ::write(gEndRequests[1], "", 1); // fails only when many were told before
    errno = error;
}

// A request to end (logging out, `kill`, Ctrl+C) closes the window as the user would, so the settings are
// saved. Handled, not blocked: programs started from here would inherit a block, and a terminal among them
// would ignore Ctrl+C. A signal that was ignored from the start, as with `nohup`, stays ignored.
void ObeyEndRequests(QApplication &application) {
    if (::pipe2(gEndRequests.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        return;
    }
    auto *const notifier = new QSocketNotifier(gEndRequests[0], QSocketNotifier::Read, &application);
    QObject::connect(notifier, &QSocketNotifier::activated, &application, &QApplication::quit);
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        if (std::signal(number, TellEndRequest) == SIG_IGN) {
            std::signal(number, SIG_IGN);
        }
    }
}

} // namespace

int main(int argc, char **argv) {
    TakeScale(argc, argv);
    DoWithoutDisplay(argc, argv);
    DrawInSilence(argc, argv);
    ObeyVerbose(argc, argv);
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("halcyra"));
    QApplication::setApplicationName(QStringLiteral("drevix-settings"));
    QApplication::setApplicationDisplayName(QStringLiteral("Drevix Veltrana"));
    QApplication::setDesktopFileName(QStringLiteral("com.halcyra.drevix.settings"));
    QApplication::setApplicationVersion(QStringLiteral(DREVIX_VERSION));
    LoadTranslations(application);

    QCommandLineParser options;
    options.setApplicationDescription(
        Host::tr("Decides, application by application, what every control of the device does."));
    options.addHelpOption();
    options.addVersionOption();
    options.addOption({QStringLiteral("verbose"), Host::tr("Tell on standard error what is done.")});
    options.addOptions(PictureOptions());
    options.addPositionalArgument(QStringLiteral("file"),
                                  Host::tr("Import the settings in this file, after a question."),
                                  QStringLiteral("[file]"));
    options.process(application);
    QString problem;
    const PictureRequest picture = ReadPictureRequest(options, &problem);
    const QStringList files = options.positionalArguments();
    if (files.size() > 1 || (!files.isEmpty() && !picture.file.isEmpty())) {
        problem = Host::tr("It takes one file, and none with --picture; see --help.");
    }
    if (!problem.isEmpty()) {
        return Fail(problem, kWrongUsage);
    }

    // Not earlier: an option that is answered at once ends the process.
    const std::future<void> fonts = LookForFontsAhead();
    const QString file = files.isEmpty() ? QString() : QFileInfo(files[0]).absoluteFilePath();
    FirstInstance instance;
    if (picture.file.isEmpty() && !instance.Acquire(file)) {
        return 0;
    }
    UsePictureLook(picture);
    UseContrastStyle();
    PanelWindow window;
    const bool isDrawnOnly = !picture.file.isEmpty() && picture.steps.isEmpty();
    const PanelUse use = isDrawnOnly ? PanelUse::Picture : PanelUse::Work;
    if (!window.LoadPanel(use, &problem)) {
        return Fail(problem, 1);
    }
    if (!ShowRequested(*window.Panel(), picture, &problem)) {
        return Fail(problem, 1);
    }
    if (!picture.file.isEmpty()) {
        const auto write = isDrawnOnly ? WritePicture : WritePictureAfterSteps;
        return write(window, picture, &problem) ? 0 : Fail(problem, 1);
    }
    ObeyEndRequests(application);
#if QT_CONFIG(sessionmanager)
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &window, &PanelWindow::SaveForSession,
                     Qt::DirectConnection);
#endif
    QObject::connect(&instance, &FirstInstance::startedAgain, &window, &PanelWindow::ComeToFront);
    QObject::connect(&instance, &FirstInstance::startedAgain, &window, &PanelWindow::OpenFile);
    window.RestorePlace();
    window.show();
    window.OpenFile(file);
    return QApplication::exec();
}
