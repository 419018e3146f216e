// Sizes and colours that the panel's parts share. All follow the desktop's font and palette.
#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

#include <cstdint>

class QPainter;
class QRectF;
class QSize;
class QWidget;

namespace drevix {

// In pixels: the radius of rounded corners, the width of the focus ring, and the smallest height of a touch
// target.
inline constexpr qreal kRadius = 4;
inline constexpr qreal kRingWidth = 2;
inline constexpr int kLeastTarget = 24;

// Whether a key activates what has the focus.
[[nodiscard]] bool IsChoosingKey(int key);

// The em, which is the height of a line of the font, in device-independent pixels; and the unit u of all
// small distances, a quarter of it but at least 4.
[[nodiscard]] qreal EmOf(const QFont &font);
[[nodiscard]] qreal UnitOf(qreal em);
// The font scaled by `factor`, but at least 8 pt.
[[nodiscard]] QFont ScaledFont(const QFont &font, qreal factor);

// Mixes two colours: all `from` at 0, all `to` at 1.
[[nodiscard]] QColor Blend(const QColor &from, const QColor &to, qreal share);
// The contrast ratio of two colours, 1 to 21, as the Web Content Accessibility Guidelines 2.1 define it.
[[nodiscard]] qreal ContrastOf(const QColor &a, const QColor &b);
// Whether the palette's text contrasts so strongly with its window that the user must want high contrast.
[[nodiscard]] bool IsHighContrast(const QPalette &palette);
// The colour of names and hints, and of thin lines.
[[nodiscard]] QColor DimColor(const QPalette &palette);
[[nodiscard]] QColor HairlineColor(const QPalette &palette);

// Pixels, independent of the device, that a window's frame and a desktop's bars take of a screen's height.
inline constexpr int kFrameAndBars = 40;
// Resizes a window to `size`, or to what the screen has room for beside these.
void ResizeOnScreen(QWidget *window, const QSize &size);
// Paints a widget's foreground in another colour made from its parent's palette, and keeps following that
// palette.
void KeepForeground(QWidget *widget, QColor (*color)(const QPalette &palette));

// What a bar across the panel is about.
enum class Tint : std::uint8_t { None, Unsaved, News, Failure };
// The colours of its stripe and its background; None has the window's background and no stripe.
[[nodiscard]] QColor StripeColor(const QPalette &palette, Tint tint);
[[nodiscard]] QColor GroundColor(const QPalette &palette, Tint tint);

// The ring around what has the keyboard focus. One of its two colours is visible on any background.
void PaintFocusRing(QPainter &painter, const QRectF &around, const QPalette &palette);

} // namespace drevix
