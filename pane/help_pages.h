// Which page of the help book explains what.
#pragma once

class QWidget;

namespace drevix {

inline constexpr const char *kFirstHelpPage = "index.html";

// The page of the help book about a part of the panel: the one that is meant for the widget, else for the
// nearest part around it; the first page for none. Static storage.
[[nodiscard]] const char *HelpPageOf(const QWidget *widget);

} // namespace drevix
