// Draws a picture of the panel, for documents, tests and machines without a display.
#pragma once

#include <QCommandLineParser>
#include <QSize>

#include <optional>

namespace drevix {

class PanelWindow;
class PreferencePane;

// What the picture shows.
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

// Parses a scale for a picture: a number from 0.5 to 8.
[[nodiscard]] std::optional<double> ScaleFromText(const QString &text);

// The options for pictures; "scale" takes effect before the application starts.
[[nodiscard]] QList<QCommandLineOption> PictureOptions();
// The request on the command line; sets `problem` if it is invalid.
[[nodiscard]] PictureRequest ReadPictureRequest(const QCommandLineParser &options, QString *problem);
// Applies the request's colours and icons to all windows created from now on.
void UsePictureLook(const PictureRequest &request);
// Shows the requested record, page and control. False, with the reason in `problem`, if there is none.
[[nodiscard]] bool ShowRequested(PreferencePane &panel, const PictureRequest &request, QString *problem);
// Draws the window as it would appear and writes the file. False, with the reason in `problem`, on failure.
[[nodiscard]] bool WritePicture(PanelWindow &window, const PictureRequest &request, QString *problem);
// Shows the window, performs the request's steps, and draws it with everything open above it; for a panel
// loaded to be used. False, with the reason in `problem`, on failure. Changes that the steps have not saved
// are lost.
[[nodiscard]] bool WritePictureAfterSteps(PanelWindow &window, const PictureRequest &request,
                                          QString *problem);

} // namespace drevix
