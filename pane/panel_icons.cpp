#include "pane/panel_icons.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

#include <algorithm>

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

class DrawnIcon : public QIconEngine {
  public:
    explicit DrawnIcon(Drawing drawing) : fDrawing(drawing) {}
    void paint(QPainter *painter, const QRect &place, QIcon::Mode mode, QIcon::State /*state*/) override {
        const qreal side = std::min(place.width(), place.height());
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(QRectF(place).center() - QPointF(side, side) / 2);
        painter->scale(side / kGrid, side / kGrid);
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        const auto role = mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::WindowText;
        painter->setPen(
            QPen(QGuiApplication::palette().color(group, role), kPen, Qt::SolidLine, Qt::RoundCap));
        painter->drawPath(PathOf(fDrawing));
        painter->restore();
    }
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }
    [[nodiscard]] QIconEngine *clone() const override { return new DrawnIcon(fDrawing); }

  private:
    Drawing fDrawing;
};

} // namespace

QIcon PanelIcon(const char *name, const char *standIn, Drawing drawing) {
    for (const char *wanted : {name, standIn}) {
        for (const char *form : {"", "-symbolic"}) {
            QIcon found =
                wanted != nullptr ? QIcon::fromTheme(QLatin1String(wanted) + QLatin1String(form)) : QIcon();
            if (!found.availableSizes().isEmpty()) {
                return found;
            }
        }
    }
    return drawing == Drawing::None ? QIcon() : QIcon(new DrawnIcon(drawing));
}

} // namespace drevix
