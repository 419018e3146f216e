// The panels that ask for the file of an export or import.
#pragma once

#include <QCheckBox>
#include <QFileDialog>

namespace drevix {

// Files of settings, as exports and imports have them.
inline constexpr const char *kSettingsSuffix = "veltrana";

// A file panel that shows files of settings. Modal to its window.
class SettingsFilePanel : public QFileDialog {
    Q_OBJECT

  public:
    SettingsFilePanel(const QString &title, QFileDialog::AcceptMode mode, QWidget *window);

    // The chosen file, once exec was accepted.
    [[nodiscard]] QString Path() const { return selectedFiles().value(0); }
};

// Asks where to export to, and whether all records are to be exported.
class ExportPanel : public SettingsFilePanel {
    Q_OBJECT

  public:
    explicit ExportPanel(QWidget *window);
    [[nodiscard]] bool IsForAll() const { return fExportAll->isChecked(); }

  private:
    QCheckBox *fExportAll;
};

// Asks for an item to open: a file, a folder, an application, a disk.
class ItemPanel : public QFileDialog {
    Q_OBJECT

  public:
    explicit ItemPanel(QWidget *window);
    [[nodiscard]] QString Path() const { return selectedFiles().value(0); }

  protected:
    void accept() override;

  private:
    [[nodiscard]] bool IsChosen() const;
    void LightButton();
};

// Asks what to import.
class ImportPanel : public SettingsFilePanel {
    Q_OBJECT

  public:
    explicit ImportPanel(QWidget *window);
};

} // namespace drevix
