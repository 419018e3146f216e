#include "companion/korvane_sync.h"

#include "companion/korvane_crc.h"
#include "companion/korvane_files.h"
#include "companion/notification_socket.h"
#include "helperlink/driver_messages.h"
#include "platform/base/status.h"
#include "platform/files/kept_bytes.h"
#include "platform/files/user_lock.h"
#include "settings/action_commands.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <new>
#include <set>
#include <tuple>

namespace drevix {
namespace {

// A button and its number for the companion.
struct Button {
    std::int32_t key;
    SlotIndex slot;
    std::int32_t virtualKey;
};
// In search order. Key 2 is button III.
constexpr auto kButtons = std::to_array<Button>({{1, 18, 4}, {2, 20, 16}, {3, 19, 8}});

constexpr std::uint16_t kNotificationPort = 5539;
constexpr int kMostTries = 5;                          // for a file that another program is writing
constexpr std::chrono::milliseconds kLongestTurn{500}; // of another of our programs with the files
constexpr std::string_view kLockName = "companion.lock";

ActionSlot &SlotOf(AppPrefs &prefs, const Button &button) {
    return prefs.device[0].action[button.slot];
}

void BindHotKey(KorvaneHotKey &hotKey, KorvaneHotKey::Value key, std::string_view device,
                KorvaneHotKey::Value virtualKey) {
    hotKey.Set(KorvaneKey::Key, std::move(key));
    hotKey.Set(KorvaneKey::Device, std::string(device));
    hotKey.Set(KorvaneKey::Modifier, std::string());
    hotKey.Set(KorvaneKey::VirtualKey, std::move(virtualKey));
}

// A button with this entry takes over a hotkey of another device; otherwise it is left alone.
void UpdateHotKey(KorvaneHotKey &hotKey, AppPrefs &prefs) {
    const std::uint32_t crc = KorvaneStringCRC(hotKey.Text(KorvaneKey::Menu));
    const auto *button = std::ranges::find_if(kButtons, [&](const Button &row) {
        const ActionSlot &slot = SlotOf(prefs, row);
        return slot.command == kActionToolMenu && slot.crc == crc;
    });
    if (button != kButtons.end()) {
        BindHotKey(hotKey, button->key, kKorvaneDevice, button->virtualKey);
    } else if (hotKey.Text(KorvaneKey::Device) == kKorvaneDevice) {
        BindHotKey(hotKey, {}, {}, {});
    }
}

// A hotkey's values as text, the title first. Do not copy the hotkey itself: if memory runs out, the library's copy of
// a variant with a string destroys a value that it never constructed.
using HotKeyTexts = std::array<std::string, kKorvaneKeyNames.size()>;

HotKeyTexts TextsOf(const KorvaneHotKey &hotKey) {
    HotKeyTexts texts;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        texts[i] = hotKey.Text(static_cast<KorvaneKey>(i));
    }
    return texts;
}

// Returns the hotkeys that have changed, as they were.
std::vector<HotKeyTexts> UpdateHotKeys(std::vector<KorvaneHotKey> &hotKeys, QBaseHandle base,
                                       const KorvaneApp &app) {
    const LockedBase lock(base);
    std::vector<HotKeyTexts> replaced;
    if (AppPrefs *prefs = KorvaneFindAppPrefs(base, app.creator, app.fileName)) {
        for (KorvaneHotKey &hotKey : hotKeys) {
            HotKeyTexts before = TextsOf(hotKey);
            UpdateHotKey(hotKey, *prefs);
            if (before != TextsOf(hotKey)) {
                replaced.push_back(std::move(before));
            }
        }
    }
    return replaced;
}

// Whether any of the replaced hotkeys had been changed by another program since they were seen. A new one without a
// binding had nothing to lose.
bool HasOthersChanges(const std::vector<HotKeyTexts> &replaced, const std::vector<KorvaneHotKey> &seen) {
    if (replaced.empty()) {
        return false; // as nearly always
    }
    std::set<HotKeyTexts> known;
    std::ranges::transform(seen, std::inserter(known, known.end()), TextsOf);
    return std::ranges::any_of(replaced, [&](const HotKeyTexts &texts) {
        const HotKeyTexts unbound = {texts[0]};
        const auto titled = known.lower_bound(unbound);
        const bool isNew = titled == known.end() || (*titled)[0] != texts[0];
        return isNew ? texts != unbound : !known.contains(texts);
    });
}

// Writes an updated list back and notes it as seen.
KorvaneFileResult WriteFile(KorvaneHotKeyList &list, const std::string &path,
                            const std::vector<HotKeyTexts> &replaced, SeenHotKeys *seen) {
    const bool isReplaced = *seen && HasOthersChanges(replaced, **seen);
    KorvaneFileResult result;
    result.status = WriteKorvanePrefs(list, path, isReplaced ? &result.kept : nullptr);
    if (result.status == noErr) {
        result.state = isReplaced ? KorvaneFileState::Replaced : KorvaneFileState::InStep;
        *seen = std::move(list.HotKeys);
        return result;
    }
    // A failed write leaves the old file, and the next one tries again. If not even the old bytes could be
    // written back, they are kept elsewhere, and the bytes in the file now are no other program's.
    const bool isTorn = !FindKeptCopy(path).empty();
    if (isTorn) {
        seen->reset();
    }
    if (isTorn || !replaced.empty()) {
        result.state = result.status == paramErr ? KorvaneFileState::TooLong : KorvaneFileState::NotWritten;
    }
    return result;
}

// Write back only if the file is still as read. Otherwise we would undo a change by the companion, or make a
// half-written file permanent.
KorvaneFileResult UpdateFile(QBaseHandle base, const KorvaneApp &app, bool isOurTurn, SeenHotKeys *seen) try {
    const std::string path = FindKorvaneFileForApp(app.folder);
    for (int tries = isOurTurn ? 0 : kMostTries; tries <= kMostTries; ++tries) {
        auto list = LoadKorvaneFile(path);
        if (!list || list->HotKeys.empty()) {
            return {};
        }
        const std::vector<HotKeyTexts> replaced = UpdateHotKeys(list->HotKeys, base, app);
        if (list->isPartial) {
            return {KorvaneFileState::ReadInPart, noErr};
        }
        if (tries == kMostTries) {
            return {replaced.empty() ? KorvaneFileState::InStep : KorvaneFileState::InUse, fBsyErr};
        }
        if (IsKorvaneFileUnchanged(*list, app.folder)) {
            return WriteFile(*list, path, replaced, seen);
        }
    }
    return {};
} catch (const std::bad_alloc &) {
    return {KorvaneFileState::NotWritten, memFullErr};
}

std::string NotificationMessage() {
    std::string message = "<update_cfg>";
    for (const KorvaneApp &app : kKorvaneApps) {
        message.append(&app == kKorvaneApps.data() ? "" : ",").append(app.folder);
    }
    return message + "</update_cfg>";
}

// The number at the start of a text, after white space and a sign; 0 if there is none or it is too large for
// a key.
std::int32_t IntegerValue(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    text.remove_prefix(text.starts_with('+') ? 1 : 0); // from_chars accepts a minus
    std::int32_t value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value); // stops at the first non-digit
    return value;
}

// Puts a menu entry in a slot, or nothing for command 0. Only the text's length byte is set, to 0.
void SetSlot(ActionSlot &slot, ActionCommand command, std::uint32_t crc) {
    slot.command = command;
    slot.modifiers = 0;
    slot.keyCode = 0;
    slot.repeat = 0;
    slot.delay = 0;
    slot.crc = crc;
    slot.reserved2 = 0;
    slot.data[0] = 0;
}

// What a file says of each button: the checksum of its entry, if any.
using ButtonEntries = std::array<std::optional<std::uint32_t>, kButtons.size()>;

ButtonEntries EntriesOf(const std::vector<KorvaneHotKey> &hotKeys) {
    ButtonEntries entries;
    for (const KorvaneHotKey &hotKey : hotKeys) {
        if (hotKey.Text(KorvaneKey::Device) != kKorvaneDevice) {
            continue;
        }
        const auto *button =
            std::ranges::find(kButtons, IntegerValue(hotKey.Text(KorvaneKey::Key)), &Button::key);
        if (button != kButtons.end()) {
            entries[static_cast<std::size_t>(button - kButtons.begin())] =
                KorvaneStringCRC(hotKey.Text(KorvaneKey::Menu));
        }
    }
    return entries;
}

// Whether the record has changed.
bool UpdateSlots(AppPrefs &prefs, const ButtonEntries &entries) {
    const AppPrefs before = prefs;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        ActionSlot &slot = SlotOf(prefs, kButtons[i]);
        if (entries[i]) {
            SetSlot(slot, kActionToolMenu, *entries[i]);
        } else if (slot.command == kActionToolMenu) {
            SetSlot(slot, kActionNone, 0);
        }
    }
    return std::memcmp(&before, &prefs, sizeof(before)) != 0;
}

void UpdateRecord(QBaseHandle base, OSType creator, ConstStringPtr fileName, const ButtonEntries &entries) {
    const LockedBase lock(base);
    AppPrefs *prefs = KorvaneFindAppPrefs(base, creator, fileName);
    if (prefs != nullptr && UpdateSlots(*prefs, entries)) {
        QBaseSetRecordsChanged(base, true);
    }
}

// As SyncAppFromKorvane, for each base. What takes memory comes before the first change.
KorvaneFileResult UpdateRecords(std::initializer_list<QBaseHandle> bases, const KorvaneApp &app,
                                SeenHotKeys *seen) try {
    OSErr status = noErr;
    auto list = LoadKorvaneFile(FindKorvaneFileForApp(app.folder), &status);
    if (!list || list->isPartial) { // an unreadable hotkey is no reason to free a button
        const bool isUnknown = !list && status != noErr && status != fnfErr && status != dirNFErr;
        if (!*seen && !isUnknown) {
            seen->emplace();
        }
        return {list ? KorvaneFileState::ReadInPart : KorvaneFileState::InStep, noErr};
    }
    const ButtonEntries entries = EntriesOf(list->HotKeys);
    *seen = std::move(list->HotKeys);
    for (QBaseHandle base : bases) {
        if (base != nullptr) {
            UpdateRecord(base, app.creator, app.fileName, entries);
        }
    }
    return {};
} catch (const std::bad_alloc &) {
    // Out of memory counts as no file: the record keeps its bindings.
    return {KorvaneFileState::NotRead, memFullErr};
}

} // namespace

std::int32_t SyncToKorvane(QBaseHandle base, KorvaneResults *results) try {
    KorvaneResults unasked;
    KorvaneResults &each = results != nullptr ? *results : unasked;
    // Keeps writes by two of our programs from interleaving. The companion does not use the lock.
    UserLock turn;
    const bool isOurTurn = turn.Acquire(kLockName, kLongestTurn) != fBsyErr;
    for (std::size_t row = 0; row < each.size(); ++row) {
        if (each[row].state != KorvaneFileState::NotRead) { // else the buttons do not know yet what it says
            auto seen = std::move(each[row].seen);
            each[row] = UpdateFile(base, kKorvaneApps[row], isOurTurn, &seen);
            each[row].seen = std::move(seen);
        }
    }
    turn.Release();
    // Either program may not be running.
    std::ignore = RequestDriverPrefsUpdate(kTarnixName.data());
    std::ignore = RequestDriverPrefsUpdate(kTarnixHelperName.data());
    return SocketSendMessage(NotificationMessage().c_str(), kNotificationPort, nullptr);
} catch (const std::bad_alloc &) {
    return kSocketNoAddress;
}

void SyncFromKorvane(QBaseHandle base, KorvaneResults *results, QBaseHandle other) {
    KorvaneResults unasked;
    KorvaneResults &each = results != nullptr ? *results : unasked;
    MendFilesCutShort();
    for (std::size_t row = 0; row < each.size(); ++row) {
        auto seen = std::move(each[row].seen);
        each[row] = UpdateRecords({base, other}, kKorvaneApps[row], &seen);
        each[row].seen = std::move(seen);
    }
}

void SyncAppFromKorvane(QBaseHandle base, OSType creator, ConstStringPtr fileName, std::string_view folder) {
    if (folder.empty()) {
        folder = FindKorvaneName(creator, fileName).value_or("");
    }
    if (!folder.empty()) {
        SeenHotKeys unasked;
        std::ignore = UpdateRecords({base}, {creator, fileName, folder}, &unasked);
    }
}

void AdoptSeenFiles(QBaseHandle base, KorvaneResults read, KorvaneResults *results) try {
    const LockedBase lock(base);
    for (std::size_t row = 0; row < read.size(); ++row) {
        const KorvaneApp &app = kKorvaneApps[row];
        SeenHotKeys &seen = read[row].seen;
        const AppPrefs *prefs = KorvaneFindAppPrefs(base, app.creator, app.fileName);
        if (seen && !seen->empty() && prefs != nullptr) {
            AppPrefs copy = *prefs;
            if (!UpdateSlots(copy, EntriesOf(*seen))) {
                (*results)[row].seen = std::move(seen);
            }
        }
    }
} catch (const std::bad_alloc &) {
    for (KorvaneFileResult &result : *results) {
        result.seen.reset();
    }
}

} // namespace drevix
