#include "settings/app_prefs.h"

#include <algorithm>

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

} // namespace drevix
