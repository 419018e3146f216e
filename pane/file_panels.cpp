#include "pane/file_panels.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QGridLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardPaths>
#include <QUrl>

namespace drevix {

SettingsFilePanel::SettingsFilePanel(const QString &title, QFileDialog::AcceptMode mode, QWidget *window)
    : QFileDialog(window, title) {
    setOption(QFileDialog::DontUseNativeDialog); // one with room for a check box
    setWindowModality(Qt::WindowModal);
    setAcceptMode(mode);
    setFileMode(mode == QFileDialog::AcceptSave ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    setNameFilters({tr("Veltrana settings (*.%1)").arg(QLatin1String(kSettingsSuffix)), tr("All files (*)")});
    setDefaultSuffix(QLatin1String(kSettingsSuffix));
}

ExportPanel::ExportPanel(QWidget *window)
    : SettingsFilePanel(tr("Export Settings"), QFileDialog::AcceptSave, window),
      fExportAll(new QCheckBox(tr("E&xport all applications"))) {
    fExportAll->setObjectName(QStringLiteral("uiSaveBoxExportAll"));
    selectFile(QStringLiteral("Veltrana Config"));
    if (auto *const grid = qobject_cast<QGridLayout *>(layout()); grid != nullptr) {
        grid->addWidget(fExportAll, grid->rowCount(), 0, 1, grid->columnCount());
    } else {
        layout()->addWidget(fExportAll);
    }
}

ItemPanel::ItemPanel(QWidget *window)
    : QFileDialog(window, tr("Choose an Item to Open"), QStringLiteral("/")) {
    setOption(QFileDialog::DontUseNativeDialog); // none of them lets a person choose files and folders alike
    setOption(QFileDialog::ShowDirsOnly, false);
    setOption(QFileDialog::DontResolveSymlinks);
    setWindowModality(Qt::WindowModal);
    setFileMode(QFileDialog::Directory);
    setLabelText(QFileDialog::Accept, tr("Choose"));
    QList<QUrl> places = {QUrl::fromLocalFile(QStringLiteral("/"))};
    for (const auto place :
         {QStandardPaths::HomeLocation, QStandardPaths::DesktopLocation, QStandardPaths::DocumentsLocation}) {
        places += QUrl::fromLocalFile(QStandardPaths::writableLocation(place));
    }
    for (const QString &folder : QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation)) {
        places += QUrl::fromLocalFile(folder);
    }
    setSidebarUrls(places);
    if (auto *const name = findChild<QLineEdit *>(); name != nullptr) {
        // The panel dims its button for a file after it has told of the name.
        connect(name, &QLineEdit::textChanged, this, &ItemPanel::LightButton, Qt::QueuedConnection);
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
