// The program's only window: it loads the panel as a plug-in and tells it when it is shown and left.
#pragma once

#include "pane/preference_pane.h"

#include <QPluginLoader>
#include <QWidget>

namespace drevix {

// What a panel is loaded for: to be used, or to be drawn once.
enum class PanelUse : bool { Work, Picture };

class PanelWindow : public QWidget {
    Q_OBJECT

  public:
    PanelWindow();
    ~PanelWindow() override;

    // Loads the plug-in and its view. False, with the reason in `problem`, if that fails.
    [[nodiscard]] bool LoadPanel(PanelUse use, QString *problem);
    // The panel, null before it is loaded.
    [[nodiscard]] PreferencePane *Panel() const { return fPanel; }

    // Restores the window's last position and size, or the default size, and stores them for next time.
    void RestorePlace();
    void KeepPlace() const;
    // Shows a window whose panel was loaded for a picture: the panel is not selected, so nothing is saved
    // when the window closes.
    void ShowForPicture();
    // Brings the window to the front, when the program is started again.
    void ComeToFront();
    // Passes a file that the user opened to the panel, as soon as no question is open there.
    void OpenFile(const QString &path);
    // Saves like leaving the panel, but stays open: the session may not end after all.
    void SaveForSession();

  protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

  private:
    QPluginLoader fLoader;
    PreferencePane *fPanel = nullptr; // belongs to the loader
    PanelUse fUse = PanelUse::Work;
    bool fMayAsk = true; // whether somebody is there to answer when the window closes
};

} // namespace drevix
