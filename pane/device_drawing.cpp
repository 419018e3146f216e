#include "pane/device_drawing.h"

#include "pane/look.h"

#include <QFile>

#include <array>

namespace drevix {
namespace {

// The colours in the drawing's file, and the palette colours that replace them.
struct DrawingColor {
    const char *inFile;
    QColor (*inTheme)(const QPalette &palette);
};
constexpr auto kDrawingColors = std::to_array<DrawingColor>({
    {"#e6e7ea",
     [](const QPalette &p) { return Blend(p.color(QPalette::Window), p.color(QPalette::WindowText), 0.05); }},
    {"#f7f7f9",
     [](const QPalette &p) { return Blend(p.color(QPalette::Base), p.color(QPalette::Text), 0.02); }},
    {"#4a4f57",
     [](const QPalette &p) {
         return Blend(p.color(QPalette::Window), p.color(QPalette::WindowText), IsHighContrast(p) ? 1 : 0.7);
     }},
    {"#2f6fde", [](const QPalette &p) { return p.color(QPalette::Highlight); }},
});

} // namespace

QByteArray DeviceDrawing(const QPalette &palette) {
    QFile file(QStringLiteral(":/drevix/device.svg"));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QByteArray drawing = file.readAll();
    for (const DrawingColor &color : kDrawingColors) {
        drawing.replace(color.inFile, color.inTheme(palette).name().toLatin1());
    }
    return drawing;
}

} // namespace drevix
