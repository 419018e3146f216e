#include "document/record_changes.h"

#include "document/record_keys.h"
#include "settings/device_keys.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_list.h"

#include <cstring>

namespace drevix {
namespace {

std::vector<std::string_view> KeysThatDiffer(const AppPrefs &a, const AppPrefs &b) {
    std::vector<std::string_view> keys;
    if (a.appName != b.appName) {
        keys.emplace_back("configName");
    }
    if (a.active != b.active) {
        keys.emplace_back("active");
    }
    for (const ControlSlot &control : kControlSlots) {
        const ActionSlot &ofA = a.device[0].action[control.slot];
        const ActionSlot &ofB = b.device[0].action[control.slot];
        if (std::memcmp(&ofA, &ofB, sizeof ofA) != 0) {
            keys.push_back(control.key);
        }
    }
    for (const DeviceKey &value : kDeviceKeys) {
        if (a.device[0].*value.field != b.device[0].*value.field) {
            keys.push_back(value.key);
        }
    }
    return keys;
}

RecordChange ChangeOf(ChangeKind kind, const AppPrefs &record) {
    const bool isGlobal = record.application == kGlobalSignature;
    return {kind,
            isGlobal ? std::string() : stringWithPascalString(record.appName.data()),
            isGlobal ? std::string() : stringWithPascalString(record.appFileName.data()),
            {}};
}

} // namespace

std::vector<RecordChange> ChangesBetween(QBaseHandle before, QBaseHandle after) {
    const KeyedRecords old = RecordsByKey(before);
    const KeyedRecords now = RecordsByKey(after);
    std::vector<RecordChange> changes;
    for (const auto &[key, number] : now) {
        const AppPrefs *record = GetAppPrefs(after, number);
        const auto found = old.find(key);
        const AppPrefs *former = found == old.end() ? nullptr : GetAppPrefs(before, found->second);
        if (record == nullptr || (former != nullptr && std::memcmp(record, former, sizeof *record) == 0)) {
            continue;
        }
        changes.push_back(ChangeOf(former == nullptr ? ChangeKind::Added : ChangeKind::Changed, *record));
        if (former != nullptr) {
            changes.back().keys = KeysThatDiffer(*former, *record);
        }
    }
    for (const auto &[key, number] : old) {
        const AppPrefs *former = GetAppPrefs(before, number);
        if (former != nullptr && !now.contains(key)) {
            changes.push_back(ChangeOf(ChangeKind::Removed, *former));
        }
    }
    return changes;
}

} // namespace drevix
