// Maps points of the drawing to controls of the device.
#pragma once

#include <QPoint>
#include <QSvgRenderer>

#include <cstdint>
#include <vector>

namespace drevix {

// The drawing's element for a control of the picture, such as its light, "lit-", or its area, "hit-".
[[nodiscard]] QString ElementOfControl(const char *kind, int index);

// The map of a drawing, one point per unit. Making it draws every control.
class ControlMap {
  public:
    static constexpr int kSide = 320; // the drawing's width and height in its own units

    explicit ControlMap(QSvgRenderer &drawing);

    // The control at a point of the drawing, -1 for none.
    [[nodiscard]] int At(const QPoint &point) const;
    // A point in the middle of a control, away from its edges.
    [[nodiscard]] QPoint Anchor(int index) const { return fAnchors[static_cast<std::size_t>(index)]; }

  private:
    void DrawArea(QSvgRenderer &drawing, int index);
    [[nodiscard]] bool IsWellWithin(const QPoint &point, int index) const;
    [[nodiscard]] QPoint FindAnchor(const QSvgRenderer &drawing, int index) const;

    std::vector<std::int8_t> fControls; // row by row
    std::vector<QPoint> fAnchors;
};

} // namespace drevix
