#include "host/picture.h"

#include "host/host_text.h"
#include "host/panel_window.h"
#include "host/picture_steps.h"

#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTimer>

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace drevix {
namespace {

constexpr int kMaxPictureSide = 8000; // pixels; Qt gives up on pictures that do not fit into memory
constexpr double kMinScale = 0.5;
constexpr double kMaxScale = 8;
constexpr auto kRestTime =
    std::chrono::milliseconds(300); // icons and names of applications come after the first paint

std::optional<QSize> SizeFromText(const QString &text) {
    static const QRegularExpression form(QStringLiteral("^(\\d{1,5})x(\\d{1,5})$"));
    const QRegularExpressionMatch match = form.match(text);
    const QSize size(match.captured(1).toInt(), match.captured(2).toInt());
    const bool fits = size.width() > 0 && size.height() > 0 && size.width() <= kMaxPictureSide &&
                      size.height() <= kMaxPictureSide;
    return match.hasMatch() && fits ? std::optional(size) : std::nullopt;
}

struct DarkColor {
    QPalette::ColorRole role;
    QRgb color;
    QRgb whenDisabled;
};
constexpr auto kDarkColors = std::to_array<DarkColor>({
    {QPalette::Window, 0xFF3A3C40, 0xFF3A3C40},
    {QPalette::WindowText, 0xFFECEDEE, 0xFF84878B},
    {QPalette::Base, 0xFF222426, 0xFF303235},
    {QPalette::AlternateBase, 0xFF2A2C2F, 0xFF2A2C2F},
    {QPalette::Text, 0xFFECEDEE, 0xFF84878B},
    {QPalette::PlaceholderText, 0xFFA0A3A7, 0xFF84878B},
    {QPalette::Button, 0xFF45484D, 0xFF3D4044},
    {QPalette::ButtonText, 0xFFECEDEE, 0xFF84878B},
    {QPalette::BrightText, 0xFFFF6B6B, 0xFFFF6B6B},
    {QPalette::Highlight, 0xFF2F6FDE, 0xFF4A4D52},
    {QPalette::HighlightedText, 0xFFFFFFFF, 0xFFB5B8BC},
    {QPalette::Link, 0xFF7FB0FF, 0xFF84878B},
    {QPalette::ToolTipBase, 0xFF1D1F21, 0xFF1D1F21},
    {QPalette::ToolTipText, 0xFFECEDEE, 0xFFECEDEE},
});

void UseContrast(const QColor &ground, const QColor &text) {
    QPalette palette(ground, ground);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                                           QPalette::ToolTipText, QPalette::PlaceholderText}) {
        palette.setColor(role, text);
        palette.setColor(QPalette::Disabled, role, Qt::gray);
    }
    for (const QPalette::ColorRole role : {QPalette::Window, QPalette::Base, QPalette::AlternateBase,
                                           QPalette::Button, QPalette::ToolTipBase}) {
        palette.setColor(role, ground);
    }
    palette.setColor(QPalette::Highlight, text);
    palette.setColor(QPalette::HighlightedText, ground);
    palette.setColor(QPalette::Link, text);
    QApplication::setPalette(palette);
}

} // namespace

std::optional<double> ScaleFromText(const QString &text) {
    bool isNumber = false;
    const double scale = text.toDouble(&isNumber);
    return isNumber && scale >= kMinScale && scale <= kMaxScale ? std::optional(scale) : std::nullopt;
}

QList<QCommandLineOption> PictureOptions() {
    const auto option = [](const char *name, const QString &text, const char *value) {
        return QCommandLineOption(QString::fromLatin1(name), text, QString::fromLatin1(value));
    };
    return {
        option("picture", Host::tr("Write a picture of the panel to FILE and exit."), "FILE.png"),
        option("app", Host::tr("Show the settings of the application APP."), "APP"),
        option("page", Host::tr("Show page N, from 0."), "N"),
        option("control", Host::tr("Show the control KEY, such as buttonII."), "KEY"),
        option("pressed", Host::tr("Show the control KEY as pressed on the device."), "KEY"),
        option("step", Host::tr("Do this at the panel before, such as \"press Ctrl+K\"; see the manual."),
               "STEP"),
        option("icons", Host::tr("Take the icons of THEME."), "THEME"),
        option("size", Host::tr("Make the picture's window this large."), "WIDTHxHEIGHT"),
        option("scale", Host::tr("Draw FACTOR times as large."), "FACTOR"),
        QCommandLineOption(QStringLiteral("dark"), Host::tr("Draw light text on dark ground.")),
        QCommandLineOption(QStringLiteral("contrast"), Host::tr("Draw in black and white.")),
    };
}

PictureRequest ReadPictureRequest(const QCommandLineParser &options, QString *problem) {
    PictureRequest request;
    request.file = options.value(QStringLiteral("picture"));
    request.app = options.value(QStringLiteral("app"));
    request.control = options.value(QStringLiteral("control"));
    request.pressed = options.value(QStringLiteral("pressed"));
    request.icons = options.value(QStringLiteral("icons"));
    request.steps = options.values(QStringLiteral("step"));
    for (const QString &step : std::as_const(request.steps)) {
        if (!PictureSteps::IsStep(step)) {
            *problem = Host::tr("There is no step \"%1\".").arg(step);
        }
    }
    request.isDark = options.isSet(QStringLiteral("dark"));
    request.isContrast = options.isSet(QStringLiteral("contrast"));
    if (options.isSet(QStringLiteral("page"))) {
        bool isNumber = false;
        request.page = options.value(QStringLiteral("page")).toInt(&isNumber);
        if (!isNumber) {
            *problem = Host::tr("--page takes a number.");
        }
    }
    if (options.isSet(QStringLiteral("size"))) {
        request.size = SizeFromText(options.value(QStringLiteral("size")));
        if (!request.size) {
            *problem = Host::tr("--size takes a width and a height, such as 800x600.");
        }
    }
    if (options.isSet(QStringLiteral("scale"))) {
        const std::optional<double> scale = ScaleFromText(options.value(QStringLiteral("scale")));
        const QSize size = request.size.value_or(QSize());
        if (!scale || *scale * std::max(size.width(), size.height()) > kMaxPictureSide) {
            *problem = Host::tr("--scale takes a number from 0.5 to 8, for pictures of up to 8000 pixels.");
        }
    }
    return request;
}

void UsePictureLook(const PictureRequest &request) {
    if (!request.icons.isEmpty()) {
        QStringList folders = QIcon::themeSearchPaths(); // none without a desktop
        folders += QStandardPaths::locateAll(QStandardPaths::GenericDataLocation, QStringLiteral("icons"),
                                             QStandardPaths::LocateDirectory);
        QIcon::setThemeSearchPaths(folders);
        QIcon::setThemeName(request.icons);
    }
    if (request.isContrast) {
        UseContrast(request.isDark ? Qt::black : Qt::white, request.isDark ? Qt::white : Qt::black);
        return;
    }
    if (!request.isDark) {
        return;
    }
    QPalette palette(QColor::fromRgb(0x45484D), QColor::fromRgb(0x3A3C40)); // the shades of frames follow
    for (const DarkColor &row : kDarkColors) {
        palette.setColor(row.role, QColor::fromRgb(row.color));
        palette.setColor(QPalette::Disabled, row.role, QColor::fromRgb(row.whenDisabled));
    }
    QApplication::setPalette(palette);
}

bool ShowRequested(PreferencePane &panel, const PictureRequest &request, QString *problem) {
    if (!request.app.isEmpty() && !panel.showRecord(request.app)) {
        *problem = Host::tr("There are no settings for \"%1\".").arg(request.app);
        return false;
    }
    if (request.page && !panel.showPage(*request.page)) {
        *problem = Host::tr("There is no page %1.").arg(*request.page);
        return false;
    }
    using Show = bool (PreferencePane::*)(const QString &key);
    for (const auto &[key, show] :
         {std::pair<const QString &, Show>{request.control, &PreferencePane::showControl},
          {request.pressed, &PreferencePane::showPressed}}) {
        if (!key.isEmpty() && !(panel.*show)(key)) {
            *problem = Host::tr("There is no control \"%1\".").arg(key);
            return false;
        }
    }
    return true;
}

namespace {

bool Save(const QPixmap &picture, const PictureRequest &request, QString *problem) {
    if (!picture.save(request.file, "PNG")) {
        *problem = Host::tr("The picture could not be written to \"%1\".").arg(request.file);
        return false;
    }
    return true;
}

// The window and everything open above it, as on a screen; a dialog gets the border that a window manager
// would draw.
QPixmap GrabWithDialogs(const QWidget &window) {
    QWidgetList shown = QApplication::topLevelWidgets();
    shown.removeIf([](const QWidget *widget) { return !widget->isVisible(); });
    std::ranges::stable_sort(shown, {}, [&window](const QWidget *widget) {
        return widget == &window ? 0 : widget->windowType() != Qt::Popup ? 1 : 2;
    });
    QRect area;
    for (const QWidget *widget : shown) {
        area |= widget->geometry();
    }
    const qreal ratio = window.devicePixelRatioF();
    QPixmap picture(area.size() * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::gray);
    QPainter painter(&picture);
    painter.translate(-area.topLeft());
    for (QWidget *widget : shown) {
        painter.drawPixmap(widget->geometry().topLeft(), widget->grab());
        if (widget != &window) {
            painter.setPen(Qt::gray);
            painter.drawRect(widget->geometry().adjusted(-1, -1, 0, 0));
        }
    }
    return picture;
}

} // namespace

bool WritePicture(PanelWindow &window, const PictureRequest &request, QString *problem) {
    if (request.size) {
        window.resize(*request.size);
    }
    window.ShowForPicture();
    QCoreApplication::processEvents(); // the lists lay themselves out once they are shown
    return Save(window.grab(), request, problem);
}

bool WritePictureAfterSteps(PanelWindow &window, const PictureRequest &request, QString *problem) {
    PictureSteps steps(request.steps);
    QApplication::setCursorFlashTime(0);
    window.resize(request.size.value_or(window.sizeHint()));
    window.show();
    bool isWritten = false;
    steps.Start([&](const QString &undone) {
        QTimer::singleShot(kRestTime, &window, [&, undone] {
            *problem = undone;
            isWritten = undone.isEmpty() && Save(GrabWithDialogs(window), request, problem);
            QApplication::exit(); // to quit would close the window, which saves
        });
    });
    QApplication::exec();
    return isWritten;
}

} // namespace drevix
