#include "settings/app_prefs.h"

#include "settings/pascal_strings.h"

#include <algorithm>
#include <array>

namespace drevix {
namespace {

const ControlSlot *RowOrNull(const ControlSlot *row) {
    return row == kControlSlots.end() ? nullptr : row;
}

} // namespace

const ControlSlot *FindControlSlot(SlotIndex slot) {
    return RowOrNull(std::ranges::find(kControlSlots, slot, &ControlSlot::slot));
}

const ControlSlot *FindControlSlot(std::string_view key) {
    return RowOrNull(std::ranges::find(kControlSlots, key, &ControlSlot::key));
}

std::string SignatureText(OSType signature) {
    if (signature == kGlobalSignature) {
        return "";
    }
    if (signature == kWildcardSignature) {
        return "any";
    }
    std::array<std::uint8_t, 5> text{4};
    for (std::size_t i = 0; i < 4; ++i) {
        text[i + 1] = static_cast<std::uint8_t>(signature >> (24 - 8 * i));
    }
    return stringWithPascalString(text.data());
}

} // namespace drevix
