// A sheet to lay beside the device: what its controls do in one application.
#pragma once

#include "pane/callout_layout.h"
#include "pane/callout_painter.h"

#include <QString>
#include <QStringList>

#include <array>
#include <vector>

class QIODevice;
class QPainter;

namespace drevix {

struct SheetContents {
    QString title;                               // the application
    std::array<ControlText, kCallouts> controls; // in the order of kPictureSlots
    QStringList values;                          // "Ring: sensitivity 120 %, speed 100 %", ...
};

// The sheet's size in its painting units of 1/96 inch: A4 landscape, or Letter where that is usual.
[[nodiscard]] QSizeF SheetSize();
// Paints a sheet, black on white, with its corner at the painter's origin.
void PaintSheet(QPainter &painter, const SheetContents &sheet);
// The sheet as lines of text.
[[nodiscard]] QString SheetText(const SheetContents &sheet);
// Writes a PDF file, one page per sheet, to a device open for writing. False if it cannot be written.
[[nodiscard]] bool WriteSheets(QIODevice &device, const std::vector<SheetContents> &sheets);

} // namespace drevix
