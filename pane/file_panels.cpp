#include "pane/file_panels.h"

#include "pane/look.h"
#include "pane/target_boxes.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTimer>
#include <QTreeView>
#include <QUrl>

namespace drevix {

FilePanel::FilePanel(const QString &title, const QString &folder, QWidget *window)
    : QFileDialog(window, title, folder) {
    setOption(QFileDialog::DontUseNativeDialog);
    setWindowModality(Qt::WindowModal);
    fPlacesOfOthers = sidebarUrls();
    for (const char *part : {"lookIn", "fileType"}) { // whose labels stand beside them alone
        auto *const label = findChild<QLabel *>(QLatin1String(part) + QLatin1String("Label"));
        if (auto *const menu = findChild<QWidget *>(QLatin1String(part) + QLatin1String("Combo"));
            label != nullptr) {
            label->setBuddy(menu);
        }
    }
}

// When a panel is destroyed, Qt stores its places for all programs.
FilePanel::~FilePanel() {
    setSidebarUrls(fPlacesOfOthers);
}

// Return in the open list of completions would close both at once, and then no window would have the
// keyboard.
void FilePanel::done(int result) {
    if (QWidget *completions = QApplication::activePopupWidget(); completions != nullptr) {
        completions->close();
        QTimer::singleShot(0, this, [this, result] { QFileDialog::done(result); });
    } else {
        QFileDialog::done(result);
    }
}

void FilePanel::ShowPlaces(std::initializer_list<QStandardPaths::StandardLocation> purposes) {
    QList<QUrl> places = {QUrl::fromLocalFile(QStringLiteral("/"))};
    for (const auto purpose : purposes) {
        for (const QString &folder : QStandardPaths::standardLocations(purpose)) {
            if (const QUrl place = QUrl::fromLocalFile(folder);
                QFileInfo(folder).isDir() && !places.contains(place)) {
                places += place;
            }
        }
    }
    setSidebarUrls(places);
}

// Not the desktop's own panel, because it has no room for a check box.
SettingsFilePanel::SettingsFilePanel(const QString &title, QFileDialog::AcceptMode mode, QWidget *window)
    : FilePanel(title, QDir::homePath(), window) {
    setObjectName(QStringLiteral("uiSettingsFilePanel"));
    ShowPlaces({QStandardPaths::HomeLocation, QStandardPaths::DesktopLocation,
                QStandardPaths::DocumentsLocation, QStandardPaths::DownloadLocation});
    setAcceptMode(mode);
    setFileMode(mode == QFileDialog::AcceptSave ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    setNameFilters({tr("Veltrana settings (*.%1)").arg(QLatin1String(kSettingsSuffix)), tr("All files (*)")});
    setDefaultSuffix(QLatin1String(kSettingsSuffix));
}

ExportPanel::ExportPanel(QWidget *window)
    : SettingsFilePanel(tr("Export Settings"), QFileDialog::AcceptSave, window),
      fExportAll(new CheckBox(tr("A&ll applications"))) {
    fExportAll->setObjectName(QStringLiteral("uiSaveBoxExportAll"));
    selectFile(QStringLiteral("Veltrana Config"));
    if (auto *const grid = qobject_cast<QGridLayout *>(layout()); grid != nullptr) {
        grid->addWidget(fExportAll, grid->rowCount(), 0, 1, grid->columnCount());
    } else {
        layout()->addWidget(fExportAll);
    }
}

void ExportPanel::InsistOnAll() {
    fExportAll->setChecked(true);
    fExportAll->setEnabled(false);
}

// Not the desktop's own panel, because none lets the user choose both files and folders.
ItemPanel::ItemPanel(QWidget *window) : FilePanel(tr("Choose an Item to Open"), QStringLiteral("/"), window) {
    setObjectName(QStringLiteral("uiItemPanel"));
    setOption(QFileDialog::ShowDirsOnly, false);
    setOption(QFileDialog::DontResolveSymlinks);
    setFileMode(QFileDialog::Directory);
    setLabelText(QFileDialog::Accept, tr("Choose"));
    setLabelText(QFileDialog::FileName, tr("&Item:"));
    ShowPlaces({QStandardPaths::HomeLocation, QStandardPaths::DesktopLocation,
                QStandardPaths::DocumentsLocation, QStandardPaths::ApplicationsLocation});
    if (auto *const name = findChild<QLineEdit *>(); name != nullptr) {
        // The panel dims its button for a file after it has reported the name.
        connect(name, &QLineEdit::textChanged, this, &ItemPanel::LightButton, Qt::QueuedConnection);
    }
    ArrangeView();
}

// There is only one kind of item, so the menu of kinds is no use; names and places need the room.
void ItemPanel::ArrangeView() {
    for (const char *part : {"fileTypeLabel", "fileTypeCombo"}) {
        if (auto *const shown = findChild<QWidget *>(QLatin1String(part)); shown != nullptr) {
            shown->hide();
        }
    }
    const int width = 42 * fontMetrics().averageCharWidth();
    ResizeOnScreen(this, {3 * width, 30 * fontMetrics().height()});
    if (auto *const parts = findChild<QSplitter *>(); parts != nullptr) {
        parts->setSizes({width * 2 / 3, width * 7 / 3});
    }
    if (auto *const names = findChild<QTreeView *>(); names != nullptr) {
        names->header()->resizeSection(0, width);
        names->header()->setSectionResizeMode(3, QHeaderView::ResizeToContents); // the dates
    }
}

bool ItemPanel::IsChosen() const {
    return QFileInfo::exists(Path()) || QFileInfo(Path()).isSymLink(); // a link that leads nowhere, too
}

void ItemPanel::LightButton() {
    auto *const buttons = findChild<QDialogButtonBox *>();
    if (QPushButton *const choose = buttons == nullptr ? nullptr : buttons->button(QDialogButtonBox::Open);
        choose != nullptr && IsChosen()) {
        choose->setEnabled(true);
    }
}

// A panel for folders would not take a file.
void ItemPanel::accept() {
    if (IsChosen()) {
        done(QDialog::Accepted);
    }
}

ImportPanel::ImportPanel(QWidget *window)
    : SettingsFilePanel(tr("Import Settings"), QFileDialog::AcceptOpen, window) {}

} // namespace drevix
