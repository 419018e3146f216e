#include "host/picture.h"

#include "host/panel_window.h"

#include <QCoreApplication>
#include <QPixmap>
#include <QRegularExpression>

namespace drevix {
namespace {

constexpr int kMaxPictureSide = 8000; // pixels

QString Tr(const char *text) {
    return QCoreApplication::translate("Host", text);
}

std::optional<QSize> SizeFromText(const QString &text) {
    static const QRegularExpression form(QStringLiteral("^(\\d{1,5})x(\\d{1,5})$"));
    const QRegularExpressionMatch match = form.match(text);
    const QSize size(match.captured(1).toInt(), match.captured(2).toInt());
    const bool fits = size.width() > 0 && size.height() > 0 && size.width() <= kMaxPictureSide &&
                      size.height() <= kMaxPictureSide;
    return match.hasMatch() && fits ? std::optional(size) : std::nullopt;
}

} // namespace

QList<QCommandLineOption> PictureOptions() {
    const auto option = [](const char *name, const char *text, const char *value) {
        return QCommandLineOption(QString::fromLatin1(name), Tr(text), QString::fromLatin1(value));
    };
    return {
        option("picture", QT_TRANSLATE_NOOP("Host", "Write a picture of the panel to FILE and exit."),
               "FILE.png"),
        option("app", QT_TRANSLATE_NOOP("Host", "Show the settings of the application APP."), "APP"),
        option("page", QT_TRANSLATE_NOOP("Host", "Show page N, from 0."), "N"),
        option("control", QT_TRANSLATE_NOOP("Host", "Show the control KEY, such as buttonII."), "KEY"),
        option("size", QT_TRANSLATE_NOOP("Host", "Make the picture's window this large."), "WIDTHxHEIGHT"),
        option("scale", QT_TRANSLATE_NOOP("Host", "Draw FACTOR times as large."), "FACTOR"),
    };
}

PictureRequest ReadPictureRequest(const QCommandLineParser &options, QString *problem) {
    PictureRequest request;
    request.file = options.value(QStringLiteral("picture"));
    request.app = options.value(QStringLiteral("app"));
    request.control = options.value(QStringLiteral("control"));
    if (options.isSet(QStringLiteral("page"))) {
        bool isNumber = false;
        request.page = options.value(QStringLiteral("page")).toInt(&isNumber);
        if (!isNumber) {
            *problem = Tr("--page takes a number.");
        }
    }
    if (options.isSet(QStringLiteral("size"))) {
        request.size = SizeFromText(options.value(QStringLiteral("size")));
        if (!request.size) {
            *problem = Tr("--size takes a width and a height, such as 800x600.");
        }
    }
    return request;
}

bool WritePicture(PanelWindow &window, const PictureRequest &request, QString *problem) {
    PreferencePane *const panel = window.Panel();
    if (!panel->showRecord(request.app)) {
        *problem = Tr("There are no settings for \"%1\".").arg(request.app);
        return false;
    }
    if (request.page && !panel->showPage(*request.page)) {
        *problem = Tr("There is no page %1.").arg(*request.page);
        return false;
    }
    if (!request.control.isEmpty() && !panel->showControl(request.control)) {
        *problem = Tr("There is no control \"%1\".").arg(request.control);
        return false;
    }
    if (request.size) {
        window.resize(*request.size);
    }
    window.ShowForPicture();
    QCoreApplication::processEvents(); // the lists lay themselves out once they are shown
    if (!window.grab().save(request.file, "PNG")) {
        *problem = Tr("The picture could not be written to \"%1\".").arg(request.file);
        return false;
    }
    return true;
}

} // namespace drevix
