// The panel's icons: from the desktop's theme, else drawn by us.
#pragma once

#include <QIcon>
#include <QList>

#include <cstdint>

namespace drevix {

// Drawings for fields and buttons without text: a theme may lack any icon.
enum class Drawing : std::uint8_t { None, Plus, Bin, Lens };

// The theme's icon of that name with "-symbolic", painted in the colour of text, or of the name as it is; else the same of
// `standIn` (null: none); else the drawing, also in that colour. A null icon when there is none of these.
[[nodiscard]] QIcon PanelIcon(const char *name, const char *standIn = nullptr,
                              Drawing drawing = Drawing::None);

// The icons of the action menu's positions. One without an icon has an empty one of this size, so that all titles begin in
// one line; with a theme that has none of the icons, all are null.
[[nodiscard]] QList<QIcon> ActionMenuIcons(const QSize &size);

} // namespace drevix
