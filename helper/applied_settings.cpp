#include "helper/applied_settings.h"

#include "document/settings_document.h"
#include "helper/front_settings.h"
#include "platform/base/plain_text.h"
#include "platform/base/status.h"
#include "platform/base/translation.h"
#include "settings/device_prefs.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_list.h"
#include "wording/action_text.h"

namespace drevix {
namespace {

std::string ActionText(const ActionSlot &slot) {
    const std::string details = ActionDetails(slot, nullptr, KeyNames::Own);
    return ActionTitle(slot.command) + (details.empty() ? "" : " ") + PlainText(details);
}

// Null if it is missing or damaged.
const AppPrefs *GlobalRecord(QBaseHandle base) {
    const AppPrefs *first = GetAppPrefs(base, 0);
    return first != nullptr && first->application == kGlobalSignature ? first : nullptr;
}

// The record for an application; the global one if it has none.
const AppPrefs *RecordFor(const std::string &front, QBaseHandle base) {
    Str63 name{};
    getPascalString(front, name.data(), kMaxFileNameLength);
    const RecordNumber number = front.empty() ? kNoRecord : FindAppPrefs(base, name.data());
    return number == kNoRecord ? GlobalRecord(base) : GetAppPrefs(base, number);
}

std::string ControlLines(const AppPrefs &record, const AppPrefs *global) {
    std::string lines;
    for (const ControlSlot &control : kControlSlots) {
        const ActionSlot &own = record.device[0].action[control.slot];
        const bool isLeft = own.command == kActionUseGlobal && global != nullptr;
        const ActionSlot &slot = isLeft ? global->device[0].action[control.slot] : own;
        if (slot.command != kActionNone) {
            const std::string action = ActionText(slot);
            lines.append("  ").append(control.key).append(": ");
            lines.append(isLeft ? Translated("%1 (as everywhere)", action) : action).append("\n");
        }
    }
    return lines;
}

} // namespace

bool DescribeSettings(const std::string &path, const FSRef &resources, const std::string &front,
                      std::string *text) {
    SettingsDocument document(resources, kPanelVersion);
    document.UseFileAlone(path);
    const OSErr status = OpenSettings(document);
    const AppPrefs *record = status == noErr ? RecordFor(front, document.Base()) : nullptr;
    if (record == nullptr) {
        *text = Translated(StatusText(status == noErr ? resNotFound : status));
        return false;
    }
    const std::string name = record->application == kGlobalSignature
                                 ? Translated("all applications without settings of their own")
                                 : PlainText(stringWithPascalString(record->appFileName.data()));
    *text = record->active != 0 ? Translated("settings for %1:", name)
                                : Translated("settings for %1: the device is switched off", name);
    *text += "\n";
    if (record->active != 0) {
        *text += ControlLines(*record, GlobalRecord(document.Base()));
    }
    return true;
}

} // namespace drevix
