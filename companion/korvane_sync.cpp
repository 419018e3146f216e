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
#include <new>
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

constexpr auto kBindingKeys =
    std::to_array({KorvaneKey::Key, KorvaneKey::Device, KorvaneKey::Modifier, KorvaneKey::VirtualKey});

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

// What a button may change, as text. Do not copy the hotkey itself: if memory runs out, the library's copy of
// a variant with a string destroys a value that it never constructed.
std::array<std::string, kBindingKeys.size()> BindingOf(const KorvaneHotKey &hotKey) {
    std::array<std::string, kBindingKeys.size()> texts;
    std::ranges::transform(kBindingKeys, texts.begin(), [&](KorvaneKey key) { return hotKey.Text(key); });
    return texts;
}

// Returns whether any hotkey has changed.
bool UpdateHotKeys(KorvaneHotKeyList &list, QBaseHandle base, const KorvaneApp &app) {
    const LockedBase lock(base);
    bool isChanged = false;
    if (AppPrefs *prefs = KorvaneFindAppPrefs(base, app.creator, app.fileName)) {
        for (KorvaneHotKey &hotKey : list.HotKeys) {
            const auto before = BindingOf(hotKey);
            UpdateHotKey(hotKey, *prefs);
            isChanged = isChanged || before != BindingOf(hotKey);
        }
    }
    return isChanged;
}

// Write back only if the file is still as read. Otherwise we would undo a change by the companion, or make a
// half-written file permanent.
KorvaneFileResult UpdateFile(QBaseHandle base, const KorvaneApp &app, bool isOurTurn) try {
    const std::string path = FindKorvaneFileForApp(app.folder);
    for (int tries = isOurTurn ? 0 : kMostTries; tries <= kMostTries; ++tries) {
        auto list = LoadKorvaneFile(path);
        if (!list || list->HotKeys.empty()) {
            return {};
        }
        const bool isInStep = !UpdateHotKeys(*list, base, app);
        if (list->isPartial) {
            return {KorvaneFileState::ReadInPart, noErr};
        }
        if (tries == kMostTries) {
            return {isInStep ? KorvaneFileState::InStep : KorvaneFileState::InUse, fBsyErr};
        }
        if (IsKorvaneFileUnchanged(*list, app.folder)) {
            // A failed write leaves the old file, and the next one tries again; where the disk does not even take
            // the old bytes, they are kept elsewhere.
            const OSErr status = WriteKorvanePrefs(*list, path);
            const bool isLost = status != noErr && (!isInStep || !FindKeptCopy(path).empty());
            const auto state = status == paramErr ? KorvaneFileState::TooLong : KorvaneFileState::NotWritten;
            return {isLost ? state : KorvaneFileState::InStep, status};
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

void UpdateSlots(AppPrefs &prefs, const KorvaneHotKeyList &list) {
    for (const Button &button : kButtons) {
        if (SlotOf(prefs, button).command == kActionToolMenu) {
            SetSlot(SlotOf(prefs, button), kActionNone, 0);
        }
    }
    for (const KorvaneHotKey &hotKey : list.HotKeys) {
        if (hotKey.Text(KorvaneKey::Device) != kKorvaneDevice) {
            continue;
        }
        const auto *button =
            std::ranges::find(kButtons, IntegerValue(hotKey.Text(KorvaneKey::Key)), &Button::key);
        if (button != kButtons.end()) {
            SetSlot(SlotOf(prefs, *button), kActionToolMenu, KorvaneStringCRC(hotKey.Text(KorvaneKey::Menu)));
        }
    }
}

// As SyncAppFromKorvane.
KorvaneFileResult UpdateRecord(QBaseHandle base, OSType creator, ConstStringPtr fileName,
                               std::string_view folder) try {
    if (folder.empty()) {
        folder = FindKorvaneName(creator, fileName).value_or("");
    }
    const auto list = folder.empty() ? std::nullopt : LoadKorvaneFileForApp(folder);
    if (list && list->isPartial) { // an unreadable hotkey is no reason to free a button
        return {KorvaneFileState::ReadInPart, noErr};
    }
    const LockedBase lock(base);
    AppPrefs *prefs = list ? KorvaneFindAppPrefs(base, creator, fileName) : nullptr;
    if (prefs == nullptr) {
        return {};
    }
    AppPrefs updated = *prefs; // a copy, in case memory runs out midway
    UpdateSlots(updated, *list);
    if (std::memcmp(&updated, prefs, sizeof(updated)) != 0) {
        *prefs = updated;
        QBaseSetRecordsChanged(base, true);
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
            each[row] = UpdateFile(base, kKorvaneApps[row], isOurTurn);
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

void SyncFromKorvane(QBaseHandle base, KorvaneResults *results) {
    KorvaneResults unasked;
    KorvaneResults &each = results != nullptr ? *results : unasked;
    MendFilesCutShort();
    std::ranges::transform(kKorvaneApps, each.begin(), [base](const KorvaneApp &app) {
        return UpdateRecord(base, app.creator, app.fileName, app.folder);
    });
}

void SyncAppFromKorvane(QBaseHandle base, OSType creator, ConstStringPtr fileName, std::string_view folder) {
    std::ignore = UpdateRecord(base, creator, fileName, folder);
}

} // namespace drevix
