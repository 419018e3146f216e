#include "pane/control_map.h"

#include "pane/device_picture.h"

#include <QImage>
#include <QPainter>

#include <limits>

namespace drevix {
namespace {

constexpr QRect kWhole(0, 0, ControlMap::kSide, ControlMap::kSide);

std::size_t PlaceOf(const QPoint &point) {
    return static_cast<std::size_t>(point.y()) * ControlMap::kSide + static_cast<std::size_t>(point.x());
}

} // namespace

QString ElementOfControl(const char *kind, int index) {
    const std::string_view key = FindControlSlot(kPictureSlots[static_cast<std::size_t>(index)])->key;
    return QLatin1String(kind) + QLatin1String(key.data(), static_cast<qsizetype>(key.size()));
}

// Draws each area alone, because blended edges would mix colours; later ones lie on top.
ControlMap::ControlMap(QSvgRenderer &drawing) : fControls(static_cast<std::size_t>(kSide) * kSide, -1) {
    for (int i = 0; i < kPictureControls; ++i) {
        DrawArea(drawing, i);
    }
    for (int i = 0; i < kPictureControls; ++i) {
        fAnchors.push_back(FindAnchor(drawing, i));
    }
}

void ControlMap::DrawArea(QSvgRenderer &drawing, int index) {
    const QString element = ElementOfControl("hit-", index);
    const QRectF bounds = drawing.boundsOnElement(element);
    const QRect area = bounds.toAlignedRect() & kWhole;
    QImage image(kSide, kSide, QImage::Format_Alpha8);
    image.fill(0);
    QPainter painter(&image);
    drawing.render(&painter, element, bounds);
    painter.end();
    for (int y = area.top(); y <= area.bottom(); ++y) {
        const uchar *line = image.constScanLine(y);
        for (int x = area.left(); x <= area.right(); ++x) {
            if (line[x] > 127) {
                fControls[PlaceOf({x, y})] = static_cast<std::int8_t>(index);
            }
        }
    }
}

// The point of a control's area nearest to the centre of its light; the centre itself may belong to another
// control.
QPoint ControlMap::FindAnchor(const QSvgRenderer &drawing, int index) const {
    const QRect light = drawing.boundsOnElement(ElementOfControl("lit-", index)).toAlignedRect();
    const QPoint middle = light.center();
    QPoint nearest = middle;
    int shortest = std::numeric_limits<int>::max();
    for (int y = light.top(); y <= light.bottom(); ++y) {
        for (int x = light.left(); x <= light.right(); ++x) {
            const QPoint away = QPoint(x, y) - middle;
            if (IsWellWithin({x, y}, index) && QPoint::dotProduct(away, away) < shortest) {
                shortest = QPoint::dotProduct(away, away);
                nearest = {x, y};
            }
        }
    }
    return nearest;
}

// Drawn smaller, a picture rounds a point to a pixel, which may be some units away.
bool ControlMap::IsWellWithin(const QPoint &point, int index) const {
    constexpr int kMargin = 2;
    return At(point + QPoint(kMargin, kMargin)) == index && At(point - QPoint(kMargin, kMargin)) == index &&
           At(point + QPoint(kMargin, -kMargin)) == index && At(point + QPoint(-kMargin, kMargin)) == index;
}

int ControlMap::At(const QPoint &point) const {
    return kWhole.contains(point) ? fControls[PlaceOf(point)] : -1;
}

} // namespace drevix
