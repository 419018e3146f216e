#include "wording/action_text.h"

#include "keyboard/key_names.h"
#include "platform/base/translation.h"
#include "settings/pascal_strings.h"
#include "util/items/items_folder.h"

namespace drevix {
namespace {

constexpr const char *kGone = ToTranslate("%1 (gone)");

// The path of the slot's item, marked when it no longer exists.
std::string ItemName(const Str31 &stored, Reader reader) {
    const DrevixItem item = ResolveDrevixItem(stored);
    if (!item.path.empty()) {
        return item.exists ? item.path : TextFor(reader, {kGone, {item.path}});
    }
    Str31 name{};
    PStringCopy(stored.data(), name.data(), kMaxAppNameLength); // a damaged length must not overrun
    return TextFor(reader, {kGone, {stringWithPascalString(name.data())}});
}

std::string MainDetail(const ActionSlot &slot, const std::string *menuTitle, KeyNames names, Reader reader) {
    if (slot.command == kActionKeystroke) {
        return names == KeyNames::Own ? KeystrokeText(slot.keyCode, slot.modifiers)
                                      : LabelledKeystrokeText(slot.keyCode, slot.modifiers);
    }
    if (slot.command == kActionToolMenu) {
        return menuTitle != nullptr ? '"' + *menuTitle + '"'
                                    : TextFor(reader, {ToTranslate("number %1"), {std::to_string(slot.crc)}});
    }
    if (slot.command == kActionOpenItem) {
        return ItemName(slot.data, reader);
    }
    const bool scrolls = IsScrolling(slot.command);
    const std::string modifiers = scrolls ? ModifiersText(slot.modifiers) : "";
    return modifiers.empty() ? "" : TextFor(reader, {ToTranslate("with %1"), {modifiers}});
}

} // namespace

std::string ActionTitle(ActionCommand code) {
    const ActionInfo *action = FindAction(code);
    return action != nullptr ? std::string(action->title) : "Action " + std::to_string(code);
}

std::string ActionDetails(const ActionSlot &slot, const std::string *menuTitle, KeyNames names,
                          Reader reader) {
    std::string details = MainDetail(slot, menuTitle, names, reader);
    if (slot.delay != 0) {
        const bool isHeld = IsHeldKeystroke(slot.command, slot.delay);
        const std::string repeat = isHeld ? "-1" : std::to_string(slot.delay);
        details.append(details.empty() ? "" : ", ")
            .append(TextFor(reader, {ToTranslate("repeat %1"), {repeat}}));
    }
    return details;
}

} // namespace drevix
