// The panels that ask for the file of an export or import, and for an item to open.
#pragma once

#include <QCheckBox>
#include <QFileDialog>
#include <QStandardPaths>

namespace drevix {

// Files of settings, as exports and imports have them.
inline constexpr const char *kSettingsSuffix = "veltrana";

// A file panel with places of its own at its side; those of the user's other Qt programs stay as they were.
// Modal to its window.
class FilePanel : public QFileDialog {
    Q_OBJECT

  public:
    FilePanel(const QString &title, const QString &folder, QWidget *window);
    ~FilePanel() override;

    // What was chosen, once exec was accepted.
    [[nodiscard]] QString Path() const { return selectedFiles().value(0); }
    void done(int result) override;

  protected:
    // The root, and of the folders for these purposes those that are there.
    void ShowPlaces(std::initializer_list<QStandardPaths::StandardLocation> purposes);

  private:
    QList<QUrl> fPlacesOfOthers;
};

// A file panel that shows files of settings.
class SettingsFilePanel : public FilePanel {
    Q_OBJECT

  public:
    SettingsFilePanel(const QString &title, QFileDialog::AcceptMode mode, QWidget *window);
};

// Asks where to export to, and whether all records are to be exported.
class ExportPanel : public SettingsFilePanel {
    Q_OBJECT

  public:
    explicit ExportPanel(QWidget *window);
    [[nodiscard]] bool IsForAll() const { return fExportAll->isChecked(); }
    // Asks for the file alone: all records are exported.
    void InsistOnAll();

  private:
    QCheckBox *fExportAll;
};

// Asks for an item to open: a file, a folder, an application, a disk.
class ItemPanel : public FilePanel {
    Q_OBJECT

  public:
    explicit ItemPanel(QWidget *window);

  protected:
    void accept() override;

  private:
    [[nodiscard]] bool IsChosen() const;
    void LightButton();
    void ArrangeView();
};

// Asks what to import.
class ImportPanel : public SettingsFilePanel {
    Q_OBJECT

  public:
    explicit ImportPanel(QWidget *window);
};

} // namespace drevix
