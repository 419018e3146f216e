#include "settings/prefs_dictionary.h"

#include "platform/base/status.h"
#include "platform/files/kept_bytes.h"
#include "settings/device_keys.h"
#include "settings/pascal_strings.h"

#include <algorithm>
#include <array>
#include <deque>
#include <new>
#include <type_traits>
#include <utility>

namespace drevix {
namespace {

// Writing

PropertyList Number(std::uint32_t value) {
    return std::int64_t{value};
}

PropertyListDictionary DictionaryOf(const ActionSlot &slot) {
    PropertyListDictionary entries;
    entries.Add("action", Number(slot.command));
    entries.Add("modifiers", Number(slot.modifiers));
    entries.Add("keyCode", Number(slot.keyCode));
    entries.Add("repeat", Number(slot.repeat));
    entries.Add("delay", Number(slot.delay));
    entries.Add("menu", Number(slot.crc));
    entries.Add("data", stringWithPascalString(slot.data.data()));
    return entries;
}

PropertyListDictionary DictionaryOf(const DevicePrefs &device) {
    PropertyListDictionary assignments;
    for (const ControlSlot &control : kControlSlots) {
        assignments.Add(std::string(control.key), DictionaryOf(device.action[control.slot]));
    }
    PropertyListDictionary entries;
    for (const DeviceKey &key : kDeviceKeys) {
        const std::uint8_t value = device.*key.field;
        entries.Add(std::string(key.key),
                    key.kind == DeviceValue::Flag ? PropertyList(value != 0) : Number(value));
    }
    entries.Add("assignments", std::move(assignments));
    return entries;
}

// Reading. A value of the wrong type counts as missing, so that one odd value cannot stop an import.

template <typename T>
const T *ValueOf(const PropertyListDictionary &entries, std::string_view key) {
    const PropertyList *value = entries.Find(key);
    return value == nullptr ? nullptr : value->As<T>();
}

// Keeps the low bits that fit the field.
template <typename Field>
Field NumberOf(const PropertyListDictionary &entries, std::string_view key) {
    if (const auto *value = ValueOf<std::int64_t>(entries, key)) {
        return static_cast<Field>(*value);
    }
    const auto *large = ValueOf<std::uint64_t>(entries, key);
    return large == nullptr ? Field{0} : static_cast<Field>(*large);
}

std::uint8_t FlagOf(const PropertyListDictionary &entries, std::string_view key) {
    const PropertyList *value = entries.Find(key);
    if (value == nullptr) {
        return 0;
    }
    const auto isSet = [](const auto &held) {
        if constexpr (std::is_arithmetic_v<std::decay_t<decltype(held)>>) {
            return held != 0;
        } else {
            return false;
        }
    };
    return std::visit(isSet, value->Get()) ? 1 : 0;
}

template <std::size_t Size>
void GetText(const PropertyListDictionary &entries, std::string_view key,
             std::array<std::uint8_t, Size> &field) {
    if (const auto *text = ValueOf<std::string>(entries, key)) {
        getPascalString(*text, field.data(), static_cast<std::int32_t>(Size) - 1);
    }
}

void GetSlot(const PropertyListDictionary &entries, ActionSlot &slot) {
    slot.command = NumberOf<std::uint16_t>(entries, "action");
    slot.modifiers = NumberOf<std::uint16_t>(entries, "modifiers");
    slot.keyCode = NumberOf<std::uint8_t>(entries, "keyCode");
    slot.repeat = NumberOf<std::uint8_t>(entries, "repeat");
    slot.delay = NumberOf<std::uint16_t>(entries, "delay");
    slot.crc = NumberOf<std::uint32_t>(entries, "menu");
    GetText(entries, "data", slot.data);
}

void GetDevice(const PropertyListDictionary &entries, DevicePrefs &device) {
    for (const DeviceKey &key : kDeviceKeys) {
        device.*key.field = key.kind == DeviceValue::Flag ? FlagOf(entries, key.key)
                                                          : NumberOf<std::uint8_t>(entries, key.key);
    }
    const auto *assignments = ValueOf<PropertyListDictionary>(entries, "assignments");
    if (assignments == nullptr) {
        return;
    }
    for (const ControlSlot &control : kControlSlots) {
        const PropertyList *slot = assignments->Find(control.key);
        if (const auto *fields = slot == nullptr ? nullptr : slot->As<PropertyListDictionary>()) {
            GetSlot(*fields, device.action[control.slot]);
        }
    }
}

// Records read from a file. Not a vector, which would hold most records twice while it grows.
using Records = std::deque<AppPrefs>;

// Makes a record from an element; false if out of memory. Must not throw: a C library calls it.
bool Collect(const PropertyList &element, Records &records) try {
    if (const auto *dictionary = element.As<PropertyListDictionary>()) {
        AppPrefs record = {};
        if (GetAppPrefsFromDictionary(&record, *dictionary)) {
            records.push_back(record);
        }
    }
    return true;
} catch (const std::bad_alloc &) {
    return false;
}

bool HandOver(const AppPrefs &record, const AppPrefsHandler &handler) try {
    handler(record);
    return true;
} catch (const std::bad_alloc &) {
    return false;
}

} // namespace

PropertyListDictionary GetAppPrefsDictionary(const AppPrefs &prefs) {
    PropertyListDictionary devices;
    devices.Add("veltrana", DictionaryOf(prefs.device[0]));
    PropertyListDictionary entries;
    entries.Add("signature", Number(prefs.application));
    entries.Add("fileName", stringWithPascalString(prefs.appFileName.data()));
    entries.Add("configName", stringWithPascalString(prefs.appName.data()));
    entries.Add("active", prefs.active != 0);
    entries.Add("devices", std::move(devices));
    return entries;
}

bool GetAppPrefsFromDictionary(AppPrefs *prefs, const PropertyListDictionary &dictionary) {
    prefs->application = NumberOf<OSType>(dictionary, "signature");
    GetText(dictionary, "fileName", prefs->appFileName);
    GetText(dictionary, "configName", prefs->appName);
    prefs->active = FlagOf(dictionary, "active");
    prefs->factory = FlagOf(dictionary, "factory");
    if (const auto *devices = ValueOf<PropertyListDictionary>(dictionary, "devices")) {
        if (const auto *device = ValueOf<PropertyListDictionary>(*devices, "veltrana")) {
            GetDevice(*device, prefs->device[0]);
        }
    }
    return true;
}

OSErr ReadAppPrefsFile(const std::string &path, const AppPrefsHandler &handler, PropertyListProblem *problem,
                       std::size_t *skipped) try {
    std::size_t withoutMemory = 0;
    MendFilesCutShort(); // an export that was cut short among them
    Records records;
    const auto collect = [&](const PropertyList &element) {
        withoutMemory += Collect(element, records) ? 0 : 1;
        return true;
    };
    if (const OSErr status = ReadPropertyListArray(path, collect, problem); status != noErr) {
        return status;
    }
    // Free each record once passed on, so that a handler that keeps them all does not hold them twice.
    for (; !records.empty(); records.pop_front()) {
        withoutMemory += HandOver(records.front(), handler) ? 0 : 1;
    }
    if (skipped != nullptr) {
        *skipped = withoutMemory;
    }
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr WriteAppPrefsFile(const std::string &path, const std::function<const AppPrefs *()> &next) try {
    PropertyListArrayWriter writer;
    OSErr status = writer.Open(path);
    while (status == noErr) {
        const AppPrefs *record = next();
        if (record == nullptr) {
            return writer.Finish();
        }
        status = writer.Add(GetAppPrefsDictionary(*record));
    }
    return status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

} // namespace drevix
