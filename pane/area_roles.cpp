#include "pane/area_roles.h"

#include <QAccessibleWidget>
#include <QWidget>

#include <algorithm>
#include <array>

namespace drevix {
namespace {

struct AreaRole {
    const char *area; // the object name of a widget
    QAccessible::Role role;
};
constexpr auto kAreaRoles = std::to_array<AreaRole>({
    {"uiPaneSaveBar", QAccessible::StatusBar},
    {"uiPaneStrip", QAccessible::Notification},
    {"uiSettingsRadioDisable", QAccessible::Grouping},
    {"uiInfoTextStatus", QAccessible::Grouping},
    {"uiFindPanel", QAccessible::Dialog},
});

QAccessibleInterface *MakeAreaAccessible(const QString & /*className*/, QObject *object) {
    const auto *const found = std::ranges::find_if(kAreaRoles, [object](const AreaRole &row) {
        return object->objectName() == QLatin1String(row.area);
    });
    return found == kAreaRoles.end() || !object->isWidgetType()
               ? nullptr
               : new QAccessibleWidget(static_cast<QWidget *>(object), found->role);
}

} // namespace

void InstallAreaRoles() {
    // Removed again when the program ends or the plug-in with this code is unloaded.
    static const struct Roles {
        Roles() { QAccessible::installFactory(MakeAreaAccessible); }
        Roles(const Roles &) = delete;
        Roles &operator=(const Roles &) = delete;
        ~Roles() { QAccessible::removeFactory(MakeAreaAccessible); }
    } installed;
}

} // namespace drevix
