// The program's one window: it loads the panel as a plug-in and tells it when it is shown and left.
#pragma once

#include "pane/preference_pane.h"

#include <QPluginLoader>
#include <QWidget>

namespace drevix {

// What a panel is loaded for: to be worked with, or to be drawn once.
enum class PanelUse : bool { Work, Picture };

class PanelWindow : public QWidget {
    Q_OBJECT

  public:
    PanelWindow();
    ~PanelWindow() override;

    // Loads the plug-in and its view. False, with the reason in `problem`, when it cannot be.
    [[nodiscard]] bool LoadPanel(PanelUse use, QString *problem);
    // The panel, null before it is loaded.
    [[nodiscard]] PreferencePane *Panel() const { return fPanel; }

    // Takes the window's place and size from the last time, the size that it would have where there is none, and keeps them for the
    // next.
    void RestorePlace();
    void KeepPlace() const;
    // Shows a window whose panel was loaded for a picture: the panel is not selected, so nothing is saved when
    // the window goes.
    void ShowForPicture();
    // Brings the window to the front, as a second start of the program asks.
    void ComeToFront();
    // Hands a file that the user opened to the panel, as soon as no question is open there.
    void OpenFile(const QString &path);
    // Saves as leaving the panel does, and goes on: the session may end, or may not.
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
