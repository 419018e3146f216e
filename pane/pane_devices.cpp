// The helper and the connected devices, the information panel and the help book.
#include "pane/drevix_pane.h"

#include "helperlink/device_text.h"
#include "helperlink/login_items.h"
#include "pane/help_key.h"
#include "pane/help_pages.h"
#include "pane/information_panel.h"
#include "pane/look.h"
#include "pane/pane_text.h"
#include "pane/panel_icons.h"
#include "pane/workspace.h"
#include "platform/base/ascii.h"
#include "platform/base/status.h"
#include "platform/desktop/app_folder.h"

#include <QFileInfo>
#include <QLocale>
#include <QPainter>
#include <QShortcut>

#include <algorithm>
#include <iterator>
#include <tuple>

namespace drevix {
namespace {

constexpr const char *kTrainerApplication = "Drevix Trainer.app";
constexpr const char *kMainAddress = "https://www.halcyra.example/veltrana";
constexpr const char *kSupportAddress = "https://www.halcyra.example/veltrana/support";
constexpr int kDeviceCheckInterval = 1000; // milliseconds
constexpr int kTicksToMiss = 2;            // a helper that is just being started is no news
constexpr QRgb kConnectedColor = 0xFF2E9E5B;
constexpr qreal kDotEms = 0.6;

// A page of the help book "Drevix veltrana Help": in the first of the user's languages that has it, else English.
QString HelpPagePath(const FSRef &resources, const char *page) {
    const QString book = TextOf(resources.path) + QLatin1String("/help/");
    for (const QString &language : QLocale().uiLanguages()) {
        const QString code = language.section(QLatin1Char('-'), 0, 0);
        QString path = book + code + QLatin1Char('/') + QLatin1String(page);
        if (code == QLatin1String("en")) {
            break;
        }
        if (QFileInfo(path).isFile()) {
            return path;
        }
    }
    return book + QLatin1String(page);
}

} // namespace

void DrevixPane::BuildDeviceControls() {
    for (DvTextField *field : {uiInfoTextCount, uiInfoTextFirmwareVers, uiInfoTextSerialNumber}) {
        field->rememberTitle();
    }
    uiPaneButtonManual->setSign(QLatin1Char('?'));
    uiPaneButtonInfo->setSign(QLatin1Char('i'));
    connect(uiPaneButtonManual, &QToolButton::clicked, this, &DrevixPane::actPaneButtonManual);
    connect(uiPaneButtonInfo, &QToolButton::clicked, this, &DrevixPane::actPaneButtonInfo);
    connect(uiPaneButtonOverview, &QToolButton::clicked, this, &DrevixPane::actOverview);
    uiPaneButtonOverview->setIcon(PanelIcon("document-print"));
    auto *const help = new QShortcut(QKeySequence::HelpContents, fMainView);
    connect(help, &QShortcut::activated, this,
            [this] { OpenHelpPage(HelpPageOf(fMainView->window()->focusWidget())); });
    new HelpKey(fMainView, [this](const char *page) { OpenHelpPage(page); });

    fDeviceCheckTimer.setObjectName(QStringLiteral("fDeviceCheckTimer"));
    fDeviceCheckTimer.setInterval(kDeviceCheckInterval);
    connect(&fDeviceCheckTimer, &QTimer::timeout, this, &DrevixPane::CheckDevices);
}

// The device works as long as the helper runs: now, and from the next login on.
void DrevixPane::StartHelper() {
    const std::string helper = FindApplication(fPrefPaneBundle.resources.path, kHelperApplication);
    if (helper.empty()) {
        return; // a panel without one works on the settings all the same
    }
    if (FindNamedProcess(kDrevixHelperName.data(), nullptr) != noErr && !LaunchApplication(helper)) {
        Tell(tr("Couldn't start the device helper."));
    }
    if (!IsAscii(helper)) { // which the list of login items has as a lack of memory
        Tell(tr(
            "The device helper won't start when you log in: move the program to a folder whose path has no "
            "letters but those of English."));
        return;
    }
    if (const std::int32_t status = AddLoginItem(helper.c_str(), nullptr, 0, 1, nullptr); status != noErr) {
        Report(static_cast<OSErr>(status), tr("The device helper won't start when you log in"));
    }
}

// What is shown is what the answer to an earlier request has brought; this one's comes later.
void DrevixPane::CheckDevices() {
    const OSStatus status = GetConnectedDevices(&fDeviceList); // without a helper the last state stays shown
    if (!fIsDrawnOnly) {
        fTicksWithoutHelper = status == procNotFound ? fTicksWithoutHelper + 1 : 0;
        ShowHelperState();
    }
    if (fDeviceList.count == fDeviceCount) {
        ShowDevices();
        return;
    }
    fDeviceCount = fDeviceList.count;
    uiInfoTextCount->replaceMarkWith(QString::number(fDeviceCount));
    std::optional<QString> version;
    std::optional<QString> serialNumber;
    if (fDeviceCount > 0) {
        version = TextOf(DeviceVersionText(fDeviceList.device[0].productVers));
        serialNumber = TextOf(DeviceSerialText(fDeviceList.device[0]));
    }
    QStringList all; // the texts tell of the first, this of each
    const int listed = std::min(fDeviceCount, static_cast<int>(std::size(fDeviceList.device)));
    for (int i = 0; i < listed; ++i) {
        const ConnectedDevice &device = fDeviceList.device[i];
        all += tr("Version %1, serial %2")
                   .arg(TextOf(DeviceVersionText(device.productVers)), TextOf(DeviceSerialText(device)));
    }
    ShowToolTip(uiInfoTextStatus, all.join(QLatin1Char('\n')));
    uiInfoTextFirmwareVers->replaceMarkWith(version);
    uiInfoTextSerialNumber->replaceMarkWith(serialNumber);
    ShowDevices();
}

bool DrevixPane::HasDevice() const {
    return fDeviceCount > 0 && !IsHelperMissing();
}

bool DrevixPane::IsHelperMissing() const {
    return fTicksWithoutHelper >= kTicksToMiss;
}

// A dot and a text: which device there is, or why there is none.
void DrevixPane::ShowDevices() {
    const bool isMissed = IsHelperMissing();
    const QString text = isMissed ? tr("Helper not running") : tr("No device connected");
    const QColor color = HasDevice() ? QColor::fromRgb(kConnectedColor)
                         : isMissed  ? StripeColor(fMainView->palette(), Tint::News)
                                     : HairlineColor(fMainView->palette());
    const QString state = text + color.name();
    if (uiInfoDot->property("state").toString() == state) {
        return;
    }
    uiInfoDot->setProperty("state", state);
    uiInfoTextNone->setText(text);
    const int side = static_cast<int>(EmOf(fMainView->font()) * kDotEms);
    QPixmap dot(QSize(side, side) * fMainView->devicePixelRatioF());
    dot.setDevicePixelRatio(fMainView->devicePixelRatioF());
    dot.fill(Qt::transparent);
    QPainter painter(&dot);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(QRectF(0, 0, side, side));
    painter.end();
    uiInfoDot->setPixmap(dot);
    FitSaveBar();
}

void DrevixPane::actPaneButtonInfo() {
    std::optional<QString> version;
    if (AppFolderInfo info; ReadInfoList(fPrefPaneBundle.resources.path + "/Info.plist", &info) == noErr &&
                            !info.version.empty()) {
        version = TextOf(info.version);
    }
    const bool hasTrainer = !FindApplication(fPrefPaneBundle.resources.path, kTrainerApplication).empty();
    InformationPanel panel(version, hasTrainer, fMainView->window());
    connect(panel.ManualButton(), &QPushButton::clicked, this, &DrevixPane::actInfoButtonManual);
    connect(panel.TrainerButton(), &QPushButton::clicked, this, &DrevixPane::actInfoButtonTrainer);
    connect(panel.MainURLButton(), &QPushButton::clicked, this, &DrevixPane::actInfoButtonMainURL);
    connect(panel.SupportURLButton(), &QPushButton::clicked, this, &DrevixPane::actInfoButtonSupportURL);
    panel.exec();
}

// Whether the help book is there: a browser needs no more to show it.
std::int32_t DrevixPane::RegisterHelpBooks() const {
    return QFileInfo(HelpPagePath(fPrefPaneBundle.resources, kFirstHelpPage)).isFile() ? noErr : resNotFound;
}

void DrevixPane::OpenHelpPage(const char *page) {
    const QString path = HelpPagePath(fPrefPaneBundle.resources, page);
    const bool isOpen = QFileInfo(path).isFile() && OpenAddress(QUrl::fromLocalFile(path));
    Tell(isOpen ? QString() : tr("Couldn't open the help."));
}

void DrevixPane::actPaneButtonManual() {
    OpenHelpPage(kFirstHelpPage);
}

void DrevixPane::actInfoButtonManual() {
    OpenHelpPage(kFirstHelpPage);
}

void DrevixPane::actInfoButtonTrainer() {
    const std::string trainer = FindApplication(fPrefPaneBundle.resources.path, kTrainerApplication);
    const bool isStarted = !trainer.empty() && LaunchApplication(trainer);
    Tell(isStarted ? QString() : tr("Couldn't start the trainer."));
}

void DrevixPane::actInfoButtonMainURL() {
    OpenWebPage(kMainAddress);
}

void DrevixPane::actInfoButtonSupportURL() {
    OpenWebPage(kSupportAddress);
}

void DrevixPane::OpenWebPage(const char *address) {
    const bool isOpen = OpenAddress(QUrl(QLatin1String(address)));
    Tell(isOpen ? QString() : tr("Couldn't open %1.").arg(QLatin1String(address)));
}

} // namespace drevix
