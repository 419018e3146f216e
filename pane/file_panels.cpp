#include "pane/file_panels.h"

#include <QGridLayout>

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

ImportPanel::ImportPanel(QWidget *window)
    : SettingsFilePanel(tr("Import Settings"), QFileDialog::AcceptOpen, window) {}

} // namespace drevix
