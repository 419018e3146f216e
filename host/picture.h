// A picture of the panel, for documents, tests and people without a display.
#pragma once

#include <QCommandLineParser>
#include <QSize>

#include <optional>

namespace drevix {

class PanelWindow;
class PreferencePane;

// What of the panel the picture shows.
struct PictureRequest {
    QString file;      // PNG
    QString app;       // a record's application file name; empty: the global record
    QString control;   // a control's key; empty: the page's first
    QString pressed;   // a control's key; empty: none
    QString icons;     // a theme of icons; empty: the desktop's
    QStringList steps; // done before, each as the manual page has them
    std::optional<int> page;
    std::optional<QSize> size; // of the window, in device-independent pixels
    bool isDark = false;       // light text on dark ground, whatever the desktop has
    bool isContrast = false;   // black and white
};

// A scale that a picture can have: a number from 0.5 to 8.
[[nodiscard]] std::optional<double> ScaleFromText(const QString &text);

// The options of a picture; "scale" is put in force before the application starts.
[[nodiscard]] QList<QCommandLineOption> PictureOptions();
// The request on the command line, with `problem` set when it is invalid.
[[nodiscard]] PictureRequest ReadPictureRequest(const QCommandLineParser &options, QString *problem);
// Puts the request's colours and icons in force for all windows made from now on.
void UsePictureLook(const PictureRequest &request);
// Brings up the record, page and control that are asked for. False, with the reason in `problem`, when there
// is none such.
[[nodiscard]] bool ShowRequested(PreferencePane &panel, const PictureRequest &request, QString *problem);
// Draws the window as it would be shown and writes the file. False, with the reason in `problem`, when it cannot.
[[nodiscard]] bool WritePicture(PanelWindow &window, const PictureRequest &request, QString *problem);
// Shows the window, does the request's steps, and draws it with all that is open above it; for a panel that was loaded to be
// worked with. False, with the reason in `problem`, when it cannot. What the steps have not saved is lost.
[[nodiscard]] bool WritePictureAfterSteps(PanelWindow &window, const PictureRequest &request,
                                          QString *problem);

} // namespace drevix
