// The tests of the panel run in a program with windows that no display shows.
#include <QApplication>
#include <QStandardPaths>
#include <gtest/gtest.h>

#include <cstdio>

// What the font libraries keep for the life of the program is no leak of ours.
extern "C" const char *__lsan_default_suppressions(); // NOLINT(bugprone-reserved-identifier)
extern "C" const char *__lsan_default_suppressions() {
    return "leak:libfontconfig\n";
}

// Prints what is logged, but for what windows without a display complain of at every turn.
static void PrintLog(QtMsgType /*type*/, const QMessageLogContext & /*context*/, const QString &text) {
    if (!text.startsWith(QLatin1String("This plugin does not support"))) {
        std::fprintf(stderr, "%s\n", qPrintable(text));
    }
}

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    qputenv("LC_ALL", "C.UTF-8");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"); // no helper of the user's is asked
    qInstallMessageHandler(PrintLog);
    const QApplication application(argc, argv);
    QApplication::setStyle(QStringLiteral("Fusion"));
    QCoreApplication::setOrganizationName(QStringLiteral("tests")); // keeps what is chosen in the window
    QStandardPaths::setTestModeEnabled(true);
    return RUN_ALL_TESTS();
}
