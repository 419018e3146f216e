// The measures and colours that the panel's parts share. All follow the desktop's font and palette.
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

// In pixels: of rounded corners, of the ring around what has the focus, and the least height of what a finger hits.
inline constexpr qreal kRadius = 4;
inline constexpr qreal kRingWidth = 2;
inline constexpr int kLeastTarget = 24;

// The keys that choose what has the focus.
[[nodiscard]] bool IsChoosingKey(int key);

// The em, the height of a line of the font, in device-independent pixels, and the unit u of all small
// distances: a quarter of it, 4 at least.
[[nodiscard]] qreal EmOf(const QFont &font);
[[nodiscard]] qreal UnitOf(qreal em);
// The font `factor` times as large, never under 8 pt.
[[nodiscard]] QFont ScaledFont(const QFont &font, qreal factor);

// One colour on its way to another: all `from` at 0, all `to` at 1.
[[nodiscard]] QColor Blend(const QColor &from, const QColor &to, qreal share);
// How much two colours stand out against each other, 1 to 21, as the Web Content Accessibility Guidelines 2.1
// define it.
[[nodiscard]] qreal ContrastOf(const QColor &a, const QColor &b);
// Whether text stands out from the window so far that the user wants all contrast there is.
[[nodiscard]] bool IsHighContrast(const QPalette &palette);
// The colour of names and hints, and of thin lines.
[[nodiscard]] QColor DimColor(const QPalette &palette);
[[nodiscard]] QColor HairlineColor(const QPalette &palette);

// Pixels, independent of the device, that a window's frame and a desktop's bars take of a screen's height.
inline constexpr int kFrameAndBars = 40;
// Makes a window as large as wanted, or as the screen has room beside these.
void ResizeOnScreen(QWidget *window, const QSize &size);
// Keeps what a widget paints in the window's text colour in another one, made of its parent's palette, whatever that
// becomes.
void KeepForeground(QWidget *widget, QColor (*color)(const QPalette &palette));

// What a bar across the panel is about.
enum class Tint : std::uint8_t { None, Unsaved, News, Failure };
// The colour of its stripe, and of its ground; None has the window's ground and no stripe.
[[nodiscard]] QColor StripeColor(const QPalette &palette, Tint tint);
[[nodiscard]] QColor GroundColor(const QPalette &palette, Tint tint);

// The ring around what has the keyboard. Its two colours stand out on every ground.
void PaintFocusRing(QPainter &painter, const QRectF &around, const QPalette &palette);

} // namespace drevix
