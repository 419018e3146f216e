#include "pane/look.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>

namespace drevix {
namespace {

constexpr qreal kSmallestPoints = 8;
constexpr qreal kHighContrast = 19.5; // of 21, black on white; the ratio is that of WCAG 2
constexpr qreal kDimShare = 0.36;
constexpr qreal kHairlineShare = 0.17;

qreal Linear(int channel) {
    const qreal share = channel / 255.0;
    return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
}

qreal Luminance(const QColor &color) {
    return 0.2126 * Linear(color.red()) + 0.7152 * Linear(color.green()) + 0.0722 * Linear(color.blue());
}

} // namespace

qreal EmOf(const QFont &font) {
    return std::ceil(QFontMetricsF(font).height());
}

qreal UnitOf(qreal em) {
    return std::max(4.0, em / 4);
}

QFont ScaledFont(const QFont &font, qreal factor) {
    QFont scaled = font;
    if (font.pointSizeF() > 0) {
        scaled.setPointSizeF(std::max(kSmallestPoints, font.pointSizeF() * factor));
    } else { // a font whose size is in pixels
        scaled.setPixelSize(std::max(11, static_cast<int>(std::lround(font.pixelSize() * factor))));
    }
    return scaled;
}

QColor Blend(const QColor &from, const QColor &to, qreal share) {
    const auto mix = [share](int a, int b) { return static_cast<int>(std::lround(a + (b - a) * share)); };
    return {mix(from.red(), to.red()), mix(from.green(), to.green()), mix(from.blue(), to.blue())};
}

qreal ContrastOf(const QColor &a, const QColor &b) {
    const auto [darker, lighter] = std::minmax({Luminance(a), Luminance(b)});
    return (lighter + 0.05) / (darker + 0.05);
}

bool IsHighContrast(const QPalette &palette) {
    return ContrastOf(palette.color(QPalette::Window), palette.color(QPalette::WindowText)) > kHighContrast;
}

QColor DimColor(const QPalette &palette) {
    const QColor text = palette.color(QPalette::Text);
    return IsHighContrast(palette) ? text : Blend(text, palette.color(QPalette::Base), kDimShare);
}

QColor HairlineColor(const QPalette &palette) {
    const QColor text = palette.color(QPalette::WindowText);
    return IsHighContrast(palette) ? text : Blend(palette.color(QPalette::Window), text, kHairlineShare);
}

} // namespace drevix
