// The drawing of the device in the colours of a palette.
#pragma once

#include <QByteArray>
#include <QPalette>

namespace drevix {

// The drawing as SVG, with body, parts, lines and light in the palette's colours; empty if it is missing.
[[nodiscard]] QByteArray DeviceDrawing(const QPalette &palette);

} // namespace drevix
