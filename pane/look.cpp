#include "pane/look.h"

#include <QEvent>
#include <QFontMetricsF>
#include <QPainter>
#include <QScreen>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <utility>

namespace drevix {
namespace {

constexpr qreal kSmallestPoints = 8;
constexpr qreal kHighContrast = 19.5; // of 21, black on white; the ratio is that of WCAG 2
constexpr qreal kDimShare = 0.36;
constexpr qreal kHairlineShare = 0.17;
constexpr qreal kGroundShare = 0.16;
constexpr QRgb kNewsColor = 0xFFD98A00;
constexpr QRgb kFailureColor = 0xFFD04030;
constexpr qreal kGroundOfRing = 4; // below it, seen on both sides

qreal Linear(int channel) {
    const qreal share = channel / 255.0;
    return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
}

qreal Luminance(const QColor &color) {
    return 0.2126 * Linear(color.red()) + 0.7152 * Linear(color.green()) + 0.0722 * Linear(color.blue());
}

class ForegroundKeeper : public QObject {
  public:
    ForegroundKeeper(QWidget *widget, QColor (*color)(const QPalette &palette))
        : QObject(widget), fWidget(widget), fColor(color) {
        Apply();
    }

  protected:
    bool eventFilter(QObject *watched, QEvent *event) override {
        if (event->type() == QEvent::PaletteChange) {
            Apply();
        }
        return QObject::eventFilter(watched, event);
    }

  private:
    // Setting the same palette again changes nothing, so this ends.
    void Apply() {
        QPalette palette = fWidget->palette();
        const QColor color = fColor(fWidget->parentWidget()->palette());
        palette.setColor(QPalette::Active, QPalette::WindowText, color);
        palette.setColor(QPalette::Inactive, QPalette::WindowText, color);
        fWidget->setPalette(palette);
    }

    QWidget *fWidget;
    QColor (*fColor)(const QPalette &palette);
};

} // namespace

bool IsChoosingKey(int key) {
    return key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space;
}

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
    const auto mix = [part = static_cast<float>(share)](float a, float b) { return std::lerp(a, b, part); };
    return QColor::fromRgbF(mix(from.redF(), to.redF()), mix(from.greenF(), to.greenF()),
                            mix(from.blueF(), to.blueF()));
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

void ResizeOnScreen(QWidget *window, const QSize &size) {
    window->resize(size.boundedTo(window->screen()->availableSize() - QSize(0, kFrameAndBars)));
}

void KeepForeground(QWidget *widget, QColor (*color)(const QPalette &palette)) {
    widget->installEventFilter(new ForegroundKeeper(widget, color));
}

QColor StripeColor(const QPalette &palette, Tint tint) {
    switch (tint) {
    case Tint::Unsaved:
        return palette.color(QPalette::Highlight);
    case Tint::News:
        return QColor::fromRgb(kNewsColor);
    case Tint::Failure:
        return QColor::fromRgb(kFailureColor);
    case Tint::None:
        break;
    }
    return palette.color(QPalette::Window);
}

// High contrast means black or white under the text.
QColor GroundColor(const QPalette &palette, Tint tint) {
    const QColor ground = palette.color(QPalette::Window);
    return IsHighContrast(palette) ? ground : Blend(ground, StripeColor(palette, tint), kGroundShare);
}

void PaintFocusRing(QPainter &painter, const QRectF &around, const QPalette &palette) {
    painter.setBrush(Qt::NoBrush);
    for (const auto &[role, width] :
         {std::pair(QPalette::Base, kGroundOfRing), {QPalette::Text, kRingWidth}}) {
        painter.setPen(QPen(palette.color(role), width));
        painter.drawRoundedRect(around, kRadius, kRadius);
    }
}

} // namespace drevix
