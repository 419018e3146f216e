// The commands that change one record: set, add, delete, defaults.

#include "cli/edit_commands.h"

#include "cli/application_path.h"
#include "cli/commands.h"
#include "cli/record_text.h"
#include "cli/session.h"
#include "platform/base/mac_roman.h"
#include "platform/desktop/desktop_entries.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_list.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace drevix {
namespace {

constexpr std::size_t InDevice(std::size_t offset) {
    return offsetof(AppPrefs, device) + offset;
}

enum class ValueKind : std::uint8_t { Name, Flag, Number };

// One value of a record: a name, or a byte.
struct SettingKey {
    std::string_view key;
    ValueKind kind;
    std::size_t offset; // in AppPrefs
};

// clang-format off
constexpr std::size_t kSeparateSensitivity = InDevice(offsetof(DevicePrefs, useSeparateNavSens));
constexpr std::size_t kSeparateSpeed = InDevice(offsetof(DevicePrefs, useSeparateNavSpeed));
constexpr auto kSettingKeys = std::to_array<SettingKey>({
    {"configName",              ValueKind::Name,   offsetof(AppPrefs, appName)},
    {"active",                  ValueKind::Flag,   offsetof(AppPrefs, active)},
    {"clickEnabled",            ValueKind::Flag,   InDevice(offsetof(DevicePrefs, click))},
    {"ringSensitivity",         ValueKind::Number, InDevice(offsetof(DevicePrefs, navSensitivity))},
    {"ringSpeed",               ValueKind::Number, InDevice(offsetof(DevicePrefs, navSpeed))},
    {"tunerSensitivity",        ValueKind::Number, InDevice(offsetof(DevicePrefs, toolSensitivity))},
    {"ringSensitivitySeparate", ValueKind::Flag,   kSeparateSensitivity},
    {"ringSensitivityX",        ValueKind::Number, InDevice(offsetof(DevicePrefs, navSensitivityX))},
    {"ringSensitivityY",        ValueKind::Number, InDevice(offsetof(DevicePrefs, navSensitivityY))},
    {"ringSensitivityZ",        ValueKind::Number, InDevice(offsetof(DevicePrefs, navSensitivityZ))},
    {"ringSpeedSeparate",       ValueKind::Flag,   kSeparateSpeed},
    {"ringSpeedX",              ValueKind::Number, InDevice(offsetof(DevicePrefs, navSpeedX))},
    {"ringSpeedY",              ValueKind::Number, InDevice(offsetof(DevicePrefs, navSpeedY))},
    {"ringSpeedZ",              ValueKind::Number, InDevice(offsetof(DevicePrefs, navSpeedZ))},
});

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

Outcome ParseByte(const SettingKey &key, const std::string &text, std::uint8_t *value) {
    if (key.kind == ValueKind::Flag) {
        const auto *row = std::ranges::find(kFlagWords, text, &FlagWord::word);
        if (row == kFlagWords.end()) {
            return WrongUsage(std::string(key.key) + " must be true or false, not " + QuotedText(text));
        }
        *value = row->value;
        return Done();
    }
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *value);
    return error == std::errc() && end == text.data() + text.size()
               ? Done()
               : WrongUsage(std::string(key.key) + " must be a whole number from 0 to 255, not " +
                            QuotedText(text));
}

bool IsGoodName(const std::string &text) {
    const std::string encoded = MacRomanFromUtf8(text);
    return FitsMacRoman(text) && !encoded.empty() && encoded.size() <= kMaxAppNameLength &&
           std::ranges::none_of(text, [](char byte) { return static_cast<unsigned char>(byte) < ' '; });
}

// Checks the value without looking at a record, and converts it unless it is a name.
Outcome ParseValue(const SettingKey &key, const std::string &text, std::uint8_t *value) {
    if (key.kind != ValueKind::Name) {
        return ParseByte(key, text, value);
    }
    return IsGoodName(text) ? Done()
                            : WrongUsage("a name has 1 to " + std::to_string(kMaxAppNameLength) +
                                         " characters of the Mac OS Roman set");
}

Outcome FindKey(const std::string &name, const SettingKey **found) {
    if (std::ranges::find(kIdentityKeys, name) != kIdentityKeys.end()) {
        return WrongUsage(name + " identifies the record and cannot be set");
    }
    const auto *key = std::ranges::find(kSettingKeys, name, &SettingKey::key);
    *found = key;
    return key != kSettingKeys.end() ? Done() : WrongUsage("unknown key " + QuotedText(name));
}

void StoreByte(AppPrefs &record, std::size_t offset, std::uint8_t value) {
    reinterpret_cast<std::uint8_t *>(&record)[offset] = value;
}

Outcome ChangeRecord(const SettingKey &key, const std::string &text, std::uint8_t value, AppPrefs &record) {
    if (key.kind == ValueKind::Name) {
        if (record.application == kGlobalSignature) {
            return Failed(
                "the global record has no name of its own; nothing was changed; name an application's record "
                "with --app");
        }
        record.appName = {};
        getPascalString(text, record.appName.data(), kMaxAppNameLength);
        return Done();
    }
    StoreByte(record, key.offset, value);
    if (key.offset == kSeparateSensitivity || key.offset == kSeparateSpeed) {
        // The panel has one checkbox for both.
        StoreByte(record, kSeparateSensitivity, value);
        StoreByte(record, kSeparateSpeed, value);
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

template <class Rows>
std::vector<std::string_view> NamesOf(const Rows &rows, auto name) {
    std::vector<std::string_view> names;
    std::ranges::transform(rows, std::back_inserter(names), name);
    return names;
}

} // namespace

std::vector<std::string_view> SettingKeys() {
    return NamesOf(kSettingKeys, [](const SettingKey &key) { return key.key; });
}

std::vector<std::string_view> DefaultsGroups() {
    return NamesOf(kDefaultsGroups, [](const DefaultsGroup &group) { return group.name; });
}

Outcome SetValue(const Request &request) {
    const SettingKey *key = nullptr;
    const std::string &text = request.arguments[1];
    std::uint8_t value = 0;
    Outcome outcome = FindKey(request.arguments[0], &key);
    if (outcome.IsDone()) {
        outcome = ParseValue(*key, text, &value);
    }
    if (!outcome.IsDone()) {
        return outcome;
    }
    Session session(request);
    RecordNumber number = kNoRecord;
    AppPrefs record{};
    outcome = OpenAndFind(session, &number, &record);
    if (outcome.IsDone()) {
        outcome = ChangeRecord(*key, text, value, record);
    }
    if (outcome.IsDone()) {
        outcome = StoreAndSave(session, record, number);
    }
    if (outcome.IsDone()) {
        SayWhatWasDone(request, "changed", record);
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
        return Failed(QuotedText(FileName(existing != nullptr ? *existing : record)) +
                      " already has a record; nothing was added; change it with --app, or delete it first");
    }
    outcome = StoreAndSave(session, record, kNoRecord);
    if (outcome.IsDone()) {
        SayWhatWasDone(request, "added", record);
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
            "the record for " + QuotedText(FileName(record)) +
            " came with the panel and cannot be deleted; nothing was changed; 'drevixctl set active false' "
            "turns it off");
    }
    outcome = session.Remove(number);
    if (outcome.IsDone()) {
        outcome = session.Save();
    }
    if (outcome.IsDone()) {
        SayWhatWasDone(request, "deleted", record);
    }
    return outcome;
}

Outcome RestoreDefaults(const Request &request) {
    const auto *group = std::ranges::find(kDefaultsGroups, request.arguments[0], &DefaultsGroup::name);
    if (group == kDefaultsGroups.end()) {
        return WrongUsage("defaults takes ring, tuner or buttons, not " + QuotedText(request.arguments[0]));
    }
    Session session(request);
    RecordNumber number = kNoRecord;
    AppPrefs record{};
    AppPrefs defaults{};
    Outcome outcome = OpenAndFind(session, &number, &record);
    if (!outcome.IsDone()) {
        return outcome;
    }
    if (!LoadDefaultPrefs(request.surroundings.resources, record, &defaults)) {
        return Failed("cannot read the factory defaults; nothing was changed; install the program again");
    }
    CopyGroupFromDefaultPrefs(record, defaults, group->group);
    outcome = StoreAndSave(session, record, number);
    if (outcome.IsDone()) {
        SayWhatWasDone(request, "was reset to its defaults", record);
    }
    return outcome;
}

} // namespace drevix
