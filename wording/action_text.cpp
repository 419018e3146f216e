#include "wording/action_text.h"

#include "keyboard/key_names.h"
#include "settings/pascal_strings.h"
#include "util/items/items_folder.h"

namespace drevix {
namespace {

// The path of the slot's item, marked when it no longer exists.
std::string ItemName(const Str31 &stored) {
    const DrevixItem item = ResolveDrevixItem(stored);
    if (!item.path.empty()) {
        return item.path + (item.exists ? "" : " (gone)");
    }
    Str31 name{};
    PStringCopy(stored.data(), name.data(), kMaxAppNameLength); // a damaged length must not overrun
    return stringWithPascalString(name.data()) + " (gone)";
}

std::string MainDetail(const ActionSlot &slot, const std::string *menuTitle, KeyNames names) {
    if (slot.command == kActionKeystroke) {
        return names == KeyNames::Own ? KeystrokeText(slot.keyCode, slot.modifiers)
                                      : LabelledKeystrokeText(slot.keyCode, slot.modifiers);
    }
    if (slot.command == kActionToolMenu) {
        return menuTitle != nullptr ? '"' + *menuTitle + '"' : "number " + std::to_string(slot.crc);
    }
    if (slot.command == kActionOpenItem) {
        return ItemName(slot.data);
    }
    const bool scrolls = IsScrolling(slot.command);
    const std::string modifiers = scrolls ? ModifiersText(slot.modifiers) : "";
    return modifiers.empty() ? "" : "with " + modifiers;
}

} // namespace

std::string ActionTitle(ActionCommand code) {
    const ActionInfo *action = FindAction(code);
    return action != nullptr ? std::string(action->title) : "Action " + std::to_string(code);
}

std::string ActionDetails(const ActionSlot &slot, const std::string *menuTitle, KeyNames names) {
    std::string details = MainDetail(slot, menuTitle, names);
    if (slot.delay != 0) {
        const bool isHeld = IsHeldKeystroke(slot.command, slot.delay);
        const std::string repeat = isHeld ? "-1" : std::to_string(slot.delay);
        details += (details.empty() ? "repeat " : ", repeat ") + repeat;
    }
    return details;
}

} // namespace drevix
