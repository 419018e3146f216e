#include "pane/help_pages.h"

#include <QWidget>

#include <algorithm>
#include <array>

namespace drevix {
namespace {

struct HelpPage {
    const char *part; // the object name of a widget
    const char *page;
};

// clang-format off
constexpr auto kHelpPages = std::to_array<HelpPage>({
    {"uiTargetSideBar",           "applications.html"},
    {"uiPaneHeader",              "applications.html"},
    {"uiSettingsRadioDisable",    "applications.html"},
    {"uiSettingsTabsImages",      "controls.html"},
    {"uiPaneTabs",                "controls.html"},
    {"uiTargetMenuMore",          "applications.html"},
    {"uiControlMenu",             "actions.html"},
    {"uiSettingsTabToolMenu",     "companion.html"},
    {"uiSettingsGroupAction",     "actions.html"},
    {"uiInfoTextStatus",          "trouble.html"},
    {"uiApplicationPanel",        "applications.html"},
    {"uiRemovePanel",             "applications.html"},
    {"uiReplacePanel",            "applications.html"},
    {"uiImportPanel",             "import-export.html"},
    {"uiSettingsFilePanel",       "import-export.html"},
    {"uiItemPanel",               "actions.html"},
    {"uiFindPanel",               "actions.html"},
    {"uiOverviewPanel",           "controls.html"},
    {"uiUnsavedPanel",            "trouble.html"},
});
// clang-format on

} // namespace

const char *HelpPageOf(const QWidget *widget) {
    for (; widget != nullptr; widget = widget->parentWidget()) {
        const auto *const found =
            std::ranges::find_if(kHelpPages, [name = widget->objectName()](const HelpPage &row) {
                return name == QLatin1String(row.part);
            });
        if (found != kHelpPages.end()) {
            return found->page;
        }
    }
    return kFirstHelpPage;
}

} // namespace drevix
