// The interfaces between the panel and its host.
#pragma once

#include <QObject>
#include <QString>

#include <functional>

class QWidget;

namespace drevix {

// A panel that a host loads as a plug-in. The host calls mainViewDidLoad once, then didSelect and
// willUnselect in turn as the user shows and leaves the panel.
class PreferencePane {
  public:
    virtual ~PreferencePane() = default;

    // The view, made at the first call; owned by the parent that the host gives it. It must live until the
    // last willUnselect, and be deleted before the plug-in is unloaded.
    virtual QWidget *mainView() = 0;
    // Called, if at all, before mainView: the panel will only be drawn. It then starts no program and
    // registers nothing with the system.
    virtual void setDrawnOnly() = 0;
    virtual void mainViewDidLoad() = 0;
    virtual void didSelect() = 0;
    virtual void willUnselect() = 0;
    // The user closes the window: leaves the panel as willUnselect does, and asks what to do with settings
    // that could not be saved. False if the window must stay; the panel is then selected again.
    virtual bool mayClose() = 0;

    // Called with one line for people about what failed, and with an empty text when the next operation of
    // that kind worked.
    using ProblemHandler = std::function<void(const QString &problem)>;
    virtual void setProblemHandler(ProblemHandler handler) = 0;

    // Shows a record by its application's file name (ignoring letter case; empty: the global record), a page
    // by its index, a control by its key. False if there is none.
    virtual bool showRecord(const QString &appFileName) = 0;
    virtual bool showPage(int page) = 0;
    virtual bool showControl(const QString &key) = 0;
    // Shows a control as if it were down on the device. False if there is none.
    virtual bool showPressed(const QString &key) = 0;

    // The user opened a settings file elsewhere, such as in the file manager: asks, then imports it like the
    // panel's own command.
    virtual void openFile(const QString &path) = 0;
};

} // namespace drevix

Q_DECLARE_INTERFACE(drevix::PreferencePane, "com.halcyra.drevix.PreferencePane/4")
