// The commands that change one record: set, add, delete, defaults.

#include "cli/edit_commands.h"

#include "cli/application_path.h"
#include "cli/commands.h"
#include "cli/record_text.h"
#include "cli/session.h"
#include "platform/base/mac_roman.h"
#include "platform/base/translation.h"
#include "platform/desktop/desktop_entries.h"
#include "settings/device_keys.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_list.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace drevix {
namespace {

// What can be set: the record's name, whether it is active, and its device's values.
constexpr std::string_view kNameKey = "configName";
constexpr std::string_view kActiveKey = "active";

// clang-format off
// The keys that identify a record.
constexpr auto kIdentityKeys = std::to_array<std::string_view>({"fileName", "signature", "factory"});

struct FlagWord {
    std::string_view word;
    std::uint8_t value;
};
constexpr auto kFlagWords = std::to_array<FlagWord>({
    {"true", 1}, {"yes", 1}, {"1", 1}, {"false", 0}, {"no", 0}, {"0", 0},
});

struct DefaultsGroup {
    std::string_view name;
    ControlGroup group;
};
constexpr auto kDefaultsGroups = std::to_array<DefaultsGroup>({
    {"ring", ControlGroup::Ring}, {"tuner", ControlGroup::Tuner}, {"buttons", ControlGroup::Buttons},
});
// clang-format on

// The key of a device value; null for the record's own keys.
const DeviceKey *FindDeviceKey(std::string_view name) {
    const auto *key = std::ranges::find(kDeviceKeys, name, &DeviceKey::key);
    return key == kDeviceKeys.end() ? nullptr : key;
}

Outcome ParseByte(std::string_view name, const std::string &text, std::uint8_t *value) {
    const DeviceKey *key = FindDeviceKey(name);
    if (key == nullptr || key->kind != DeviceValue::Number) {
        const auto *row = std::ranges::find(kFlagWords, text, &FlagWord::word);
        if (row == kFlagWords.end()) {
            return WrongUsage(Translated("%1 must be true or false, not %2", name, QuotedText(text)));
        }
        *value = row->value;
        return Done();
    }
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *value);
    return error == std::errc() && end == text.data() + text.size()
               ? Done()
               : WrongUsage(
                     Translated("%1 must be a whole number from 0 to 255, not %2", name, QuotedText(text)));
}

bool IsGoodName(const std::string &text) {
    const std::string encoded = MacRomanFromUtf8(text);
    return FitsMacRoman(text) && !encoded.empty() && encoded.size() <= kMaxAppNameLength &&
           std::ranges::none_of(text, [](char byte) { return static_cast<unsigned char>(byte) < ' '; });
}

Outcome CheckKey(const std::string &name) {
    if (std::ranges::find(kIdentityKeys, name) != kIdentityKeys.end()) {
        return WrongUsage(Translated("%1 identifies the record and cannot be set", name));
    }
    const std::vector<std::string_view> keys = SettingKeys();
    return std::ranges::find(keys, name) != keys.end()
               ? Done()
               : WrongUsage(Translated("unknown key %1", QuotedText(name)));
}

// Checks the value without looking at a record, and converts it unless it is a name.
Outcome ParseValue(const std::string &name, const std::string &text, std::uint8_t *value) {
    if (Outcome outcome = CheckKey(name); !outcome.IsDone()) {
        return outcome;
    }
    if (name != kNameKey) {
        return ParseByte(name, text, value);
    }
    return IsGoodName(text) ? Done()
                            : WrongUsage(Translated("a name has 1 to %1 characters of the Mac OS Roman set",
                                                    kMaxAppNameLength));
}

Outcome Rename(const std::string &text, AppPrefs &record) {
    if (record.application == kGlobalSignature) {
        return Failed(Translated(
            "the global record has no name of its own; nothing was changed; name an application's record "
            "with --app"));
    }
    record.appName = {};
    getPascalString(text, record.appName.data(), kMaxAppNameLength);
    return Done();
}

Outcome ChangeRecord(const std::string &name, const std::string &text, std::uint8_t value, AppPrefs &record) {
    if (name == kNameKey) {
        return Rename(text, record);
    }
    const DeviceKey *key = FindDeviceKey(name);
    if (key == nullptr) {
        record.active = value;
        return Done();
    }
    DevicePrefs &device = record.device[0];
    device.*key->field = value;
    if (key->kind == DeviceValue::Switch) { // the panel has one checkbox for both
        device.useSeparateNavSens = device.useSeparateNavSpeed = value;
    }
    return Done();
}

Outcome OpenAndFind(Session &session, RecordNumber *number, AppPrefs *record) {
    Outcome outcome = session.OpenForChanging();
    return outcome.IsDone() ? session.Find(number, record) : outcome;
}

Outcome StoreAndSave(Session &session, const AppPrefs &record, RecordNumber number) {
    Outcome outcome = session.Store(record, number);
    return outcome.IsDone() ? session.Save() : outcome;
}

} // namespace

std::vector<std::string_view> SettingKeys() {
    std::vector<std::string_view> keys = {kNameKey, kActiveKey};
    std::ranges::transform(kDeviceKeys, std::back_inserter(keys), &DeviceKey::key);
    return keys;
}

std::vector<std::string_view> DefaultsGroups() {
    std::vector<std::string_view> names;
    std::ranges::transform(kDefaultsGroups, std::back_inserter(names), &DefaultsGroup::name);
    return names;
}

Outcome SetValue(const Request &request) {
    const std::string &name = request.arguments[0];
    const std::string &text = request.arguments[1];
    std::uint8_t value = 0;
    Outcome outcome = ParseValue(name, text, &value);
    if (!outcome.IsDone()) {
        return outcome;
    }
    Session session(request);
    RecordNumber number = kNoRecord;
    AppPrefs record{};
    outcome = OpenAndFind(session, &number, &record);
    if (outcome.IsDone()) {
        outcome = ChangeRecord(name, text, value, record);
    }
    if (outcome.IsDone()) {
        outcome = StoreAndSave(session, record, number);
    }
    if (outcome.IsDone()) {
        SayWhatWasDone(request, ToTranslate("%1 changed"), record);
    }
    return outcome;
}

Outcome AddApplication(const Request &request) {
    NewApplication application;
    Outcome outcome = DescribeApplication(request.arguments[0], MessagesLocale(), &application);
    if (!outcome.IsDone()) {
        return outcome;
    }
    Session session(request);
    outcome = session.OpenForChanging();
    if (!outcome.IsDone()) {
        return outcome;
    }
    const AppPrefs record =
        MakeAppPrefs(session.Base(), application.signature, application.fileName, application.shownName);
    if (const RecordNumber number = FindReplacedAppPrefs(session.Base(), record); number != kNoRecord) {
        const AppPrefs *existing = GetAppPrefs(session.Base(), number);
        return Failed(
            Translated("%1 already has a record; nothing was added; change it with --app, or delete it first",
                       QuotedText(FileName(existing != nullptr ? *existing : record))));
    }
    outcome = StoreAndSave(session, record, kNoRecord);
    if (outcome.IsDone()) {
        SayWhatWasDone(request, ToTranslate("%1 added"), record);
    }
    return outcome;
}

Outcome DeleteApplication(const Request &request) {
    Session session(request);
    RecordNumber number = kNoRecord;
    AppPrefs record{};
    Outcome outcome = OpenAndFind(session, &number, &record);
    if (!outcome.IsDone()) {
        return outcome;
    }
    if (record.factory != 0) {
        return Failed(
            Translated("the record for %1 came with the panel and cannot be deleted; nothing was changed; "
                       "'drevixctl set active false' turns it off",
                       QuotedText(FileName(record))));
    }
    outcome = session.Remove(number);
    if (outcome.IsDone()) {
        outcome = session.Save();
    }
    if (outcome.IsDone()) {
        SayWhatWasDone(request, ToTranslate("%1 deleted"), record);
    }
    return outcome;
}

Outcome RestoreDefaults(const Request &request) {
    const auto *group = std::ranges::find(kDefaultsGroups, request.arguments[0], &DefaultsGroup::name);
    if (group == kDefaultsGroups.end()) {
        return WrongUsage(
            Translated("defaults takes ring, tuner or buttons, not %1", QuotedText(request.arguments[0])));
    }
    Session session(request);
    RecordNumber number = kNoRecord;
    AppPrefs record{};
    AppPrefs defaults{};
    Outcome outcome = OpenAndFind(session, &number, &record);
    if (!outcome.IsDone()) {
        return outcome;
    }
    if (!LoadDefaultPrefs(FactoryOfLayout(request), record, &defaults)) {
        return Failed(
            Translated("cannot read the factory defaults; nothing was changed; install the program again"));
    }
    CopyGroupFromDefaultPrefs(record, defaults, group->group);
    outcome = StoreAndSave(session, record, number);
    if (outcome.IsDone()) {
        SayWhatWasDone(request, ToTranslate("%1 was reset to its defaults"), record);
    }
    return outcome;
}

} // namespace drevix
