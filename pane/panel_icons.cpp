#include "pane/panel_icons.h"

#include "pane/editor_tables.h"
#include "pane/painted_icon.h"

#include <QGuiApplication>
#include <QPainterPath>
#include <QPalette>

#include <algorithm>
#include <utility>

namespace drevix {
namespace {

constexpr qreal kGrid = 16; // units of the drawings below, across
constexpr qreal kPen = 1.5;

QPainterPath PathOf(Drawing drawing) {
    QPainterPath path;
    const auto line = [&path](QPointF from, QPointF to) {
        path.moveTo(from);
        path.lineTo(to);
    };
    switch (drawing) {
    case Drawing::None:
        break;
    case Drawing::Plus:
        line({8, 3}, {8, 13});
        line({3, 8}, {13, 8});
        break;
    case Drawing::Bin:
        line({2.5, 4}, {13.5, 4});
        line({6, 4}, {6, 2.5});
        line({6, 2.5}, {10, 2.5});
        line({10, 2.5}, {10, 4});
        path.addRoundedRect(QRectF(4, 4, 8, 9.5), 1, 1);
        line({6.7, 6.5}, {6.7, 11});
        line({9.3, 6.5}, {9.3, 11});
        break;
    case Drawing::Lens:
        path.addEllipse(QPointF(6.8, 6.8), 4.3, 4.3);
        line({10, 10}, {13.5, 13.5});
        break;
    }
    return path;
}

// The text colour, in which signs are painted.
QColor ColorOfSign(QIcon::Mode mode) {
    return QGuiApplication::palette().color(mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active,
                                            mode == QIcon::Selected ? QPalette::HighlightedText
                                                                    : QPalette::WindowText);
}

class DrawnIcon : public PaintedIcon {
  public:
    explicit DrawnIcon(Drawing drawing) : fDrawing(drawing) {}
    void paint(QPainter *painter, const QRect &place, QIcon::Mode mode, QIcon::State /*state*/) override {
        const qreal side = std::min(place.width(), place.height());
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(QRectF(place).center() - QPointF(side, side) / 2);
        painter->scale(side / kGrid, side / kGrid);
        painter->setPen(QPen(ColorOfSign(mode), kPen, Qt::SolidLine, Qt::RoundCap));
        painter->drawPath(PathOf(fDrawing));
        painter->restore();
    }
    [[nodiscard]] QIconEngine *clone() const override { return new DrawnIcon(fDrawing); }

  private:
    Drawing fDrawing;
};

// A symbolic icon of the theme. Only its shape is used, because its own colour is visible on a light
// background only.
class SymbolicIcon : public PaintedIcon {
  public:
    explicit SymbolicIcon(QIcon shape) : fShape(std::move(shape)) {}
    void paint(QPainter *painter, const QRect &place, QIcon::Mode mode, QIcon::State /*state*/) override {
        QPixmap sign = fShape.pixmap(place.size(), painter->device()->devicePixelRatioF());
        QPainter color(&sign);
        color.setCompositionMode(QPainter::CompositionMode_SourceIn);
        color.fillRect(QRect(QPoint(), place.size()), ColorOfSign(mode));
        color.end();
        const QSize size = sign.deviceIndependentSize().toSize();
        painter->drawPixmap(place.center() - QRect(QPoint(), size).center(), sign);
    }
    [[nodiscard]] QIconEngine *clone() const override { return new SymbolicIcon(fShape); }

  private:
    QIcon fShape;
};

constexpr QLatin1String kSymbolic("-symbolic");

} // namespace

QIcon PanelIcon(const char *name, const char *standIn, Drawing drawing) {
    for (const char *wanted : {name, standIn}) {
        for (const QLatin1String form : {kSymbolic, QLatin1String()}) {
            const QString full = QLatin1String(wanted) + form;
            QIcon found = wanted != nullptr ? QIcon::fromTheme(full) : QIcon();
            if (!found.availableSizes().isEmpty()) {
                return full.endsWith(kSymbolic) ? QIcon(new SymbolicIcon(found)) : found;
            }
        }
    }
    return drawing == Drawing::None ? QIcon() : QIcon(new DrawnIcon(drawing));
}

QList<QIcon> ActionMenuIcons(const QSize &size) {
    QList<QIcon> icons;
    for (const char *const name : kActionIcons) {
        icons += name != nullptr ? PanelIcon(name) : QIcon();
    }
    if (std::ranges::any_of(icons, [](const QIcon &icon) { return !icon.isNull(); })) {
        QPixmap nothing(size);
        nothing.fill(Qt::transparent);
        std::ranges::replace_if(icons, &QIcon::isNull, QIcon(nothing));
    }
    return icons;
}

} // namespace drevix
