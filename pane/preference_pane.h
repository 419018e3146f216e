// What the host knows of the panel, and the panel of its host.
#pragma once

#include <QObject>
#include <QString>

#include <functional>

class QWidget;

namespace drevix {

// A panel that a host loads as a plug-in and drives. The host calls mainViewDidLoad once, then didSelect and
// willUnselect in turn as the user shows and leaves the panel.
class PreferencePane {
  public:
    virtual ~PreferencePane() = default;

    // The view, made at the first call; it belongs to whom the host gives it as a child. It must stay until the
    // last willUnselect, and go before the plug-in is unloaded.
    virtual QWidget *mainView() = 0;
    // Told, if at all, before mainView: the panel will only be drawn. It then starts no program and
    // registers nothing with the system.
    virtual void setDrawnOnly() = 0;
    virtual void mainViewDidLoad() = 0;
    virtual void didSelect() = 0;
    virtual void willUnselect() = 0;
    // The user closes the window: leaves the panel as willUnselect does, and asks what is to become of settings
    // that could not be saved. False when the window is to stay; the panel is selected again then.
    virtual bool mayClose() = 0;

    // Told, in one line for people, what failed; told an empty text when the next operation of that kind
    // worked.
    using ProblemHandler = std::function<void(const QString &problem)>;
    virtual void setProblemHandler(ProblemHandler handler) = 0;

    // Shows a record by its application's file name (letter case ignored, empty: the global record), a page
    // by its index, a control by its key. False when there is none such.
    virtual bool showRecord(const QString &appFileName) = 0;
    virtual bool showPage(int page) = 0;
    virtual bool showControl(const QString &key) = 0;
    // Shows a control as if it were down on the device. False when there is none such.
    virtual bool showPressed(const QString &key) = 0;

    // The user has opened a file of settings from elsewhere, such as the file manager: asks, and imports it as the
    // panel's own command does.
    virtual void openFile(const QString &path) = 0;
};

} // namespace drevix

Q_DECLARE_INTERFACE(drevix::PreferencePane, "com.halcyra.drevix.PreferencePane/4")
