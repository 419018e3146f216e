// Finds the help page for a part of the panel.
#pragma once

class QWidget;

namespace drevix {

inline constexpr const char *kFirstHelpPage = "index.html";

// The page about a widget, or else about the nearest part around it; the first page if there is none. Static
// storage.
[[nodiscard]] const char *HelpPageOf(const QWidget *widget);

} // namespace drevix
