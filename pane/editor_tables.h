// The panel's menus by position: which record, slot, command, key or repeat value an item stands for.
#pragma once

#include "qbase/qbase.h"
#include "settings/app_prefs.h"

#include <QtGlobal>

#include <array>
#include <cstdint>

namespace drevix {

// The list of applications: the global record's item, a separator, a record an item, and the commands.
inline constexpr int kFirstRecordItem = 2;

// The item of a record and the record of an item; the separator counts as the global record's.
[[nodiscard]] constexpr int TargetItemOfRecord(RecordNumber number) {
    return number == 0 ? 0 : number + 1;
}
[[nodiscard]] constexpr RecordNumber RecordOfTargetItem(int item) {
    return item >= kFirstRecordItem ? item - 1 : 0;
}

// The record flag that marks the edited record while the base is sorted.
inline constexpr std::uint16_t kSelectedRecordFlag = 1;

// The commands behind the records, by their tag.
inline constexpr int kTagNew = 10;
inline constexpr int kTagDelete = 11;
inline constexpr int kTagExport = 20;
inline constexpr int kTagImport = 21;
inline constexpr int kTagInstall = 30;
inline constexpr int kTagInformation = 40;

struct TargetCommand {
    int tag;
    const char *title; // null: a separator
};

// One item of a repeat menu. The tag is what a slot's `delay` stores, in ticks of 1/60 s.
struct RepeatItem {
    int tag; // negative: the key stays down as long as the control
    const char *title;
};
inline constexpr std::uint16_t kDelayOfNegativeTag = 0xFFFF;

// A key that types no character.
struct ExtraKey {
    std::uint8_t keyCode;
    const char *title; // null: a separator
};

// clang-format off
inline constexpr auto kTargetCommands = std::to_array<TargetCommand>({
    {0,               nullptr},
    {kTagNew,         QT_TRANSLATE_NOOP("Menus", "Add Application…")},
    {kTagDelete,      QT_TRANSLATE_NOOP("Menus", "Delete…")},
    {0,               nullptr},
    {kTagExport,      QT_TRANSLATE_NOOP("Menus", "Export…")},
    {kTagImport,      QT_TRANSLATE_NOOP("Menus", "Import…")},
    {0,               nullptr},
    {kTagInstall,     QT_TRANSLATE_NOOP("Menus", "Install Plug-ins…")},
    {0,               nullptr},
    {kTagInformation, QT_TRANSLATE_NOOP("Menus", "About Veltrana…")},
});

// The theme's icons of the action menu's items, by position; null: none.
inline constexpr auto kActionIcons = std::to_array<const char *>({
    nullptr, "preferences-desktop-peripherals", nullptr, nullptr, nullptr, nullptr,
    "input-keyboard", nullptr, "audio-volume-high", nullptr,
    "go-up", "go-down", "go-previous", "go-next", nullptr,
    "user-desktop", "document-open", nullptr, "media-playback-start",
});

// The slots of the three pages' controls, by position.
inline constexpr auto kRingPageSlots = std::to_array<SlotIndex>({5, 4, 9, 1, 0, 2, 3, 8});
inline constexpr auto kTunerPageSlots = std::to_array<SlotIndex>({7, 6});
inline constexpr auto kButtonPageSlots = std::to_array<SlotIndex>({16, 17, 18, 20, 19});

inline constexpr auto kKeyRepeatItems = std::to_array<RepeatItem>({
    {-1, QT_TRANSLATE_NOOP("Menus", "Hold the keys down")},
    {0,  QT_TRANSLATE_NOOP("Menus", "Press once")},
    {6,  QT_TRANSLATE_NOOP("Menus", "Repeat 10 times a second")},
    {15, QT_TRANSLATE_NOOP("Menus", "Repeat 4 times a second")},
    {30, QT_TRANSLATE_NOOP("Menus", "Repeat twice a second")},
});
inline constexpr auto kAutoRepeatItems = std::to_array<RepeatItem>({
    {0,  QT_TRANSLATE_NOOP("Menus", "Scroll once")},
    {3,  QT_TRANSLATE_NOOP("Menus", "Scroll 20 times a second")},
    {6,  QT_TRANSLATE_NOOP("Menus", "Scroll 10 times a second")},
    {15, QT_TRANSLATE_NOOP("Menus", "Scroll 4 times a second")},
});

// The items that the two menus show for the tuner, which has no repeat of its own.
inline constexpr int kTunerKeyRepeatItem = 1;
inline constexpr int kTunerAutoRepeatItem = 0;

inline constexpr auto kExtraKeys = std::to_array<ExtraKey>({
    {kNoKeyCode, QT_TRANSLATE_NOOP("Menus", "Other key")}, {kNoKeyCode, nullptr},
    {kNoKeyCode, QT_TRANSLATE_NOOP("Menus", "No key")},
    {0x35, QT_TRANSLATE_NOOP("Menus", "Escape")},      {0x33, QT_TRANSLATE_NOOP("Menus", "Backspace")},
    {0x24, QT_TRANSLATE_NOOP("Menus", "Enter")},      {0x30, QT_TRANSLATE_NOOP("Menus", "Tab")},
    {0x4C, QT_TRANSLATE_NOOP("Menus", "Num Enter")},       {0x72, QT_TRANSLATE_NOOP("Menus", "Insert")},
    {0x75, QT_TRANSLATE_NOOP("Menus", "Delete")},      {0x73, QT_TRANSLATE_NOOP("Menus", "Home")},
    {0x77, QT_TRANSLATE_NOOP("Menus", "End")},         {0x74, QT_TRANSLATE_NOOP("Menus", "Page Up")},
    {0x79, QT_TRANSLATE_NOOP("Menus", "Page Down")},   {0x47, QT_TRANSLATE_NOOP("Menus", "Num Lock")},
    {kNoKeyCode, nullptr},
    {0x7A, "F1"}, {0x78, "F2"}, {0x63, "F3"}, {0x76, "F4"}, {0x60, "F5"}, {0x61, "F6"}, {0x62, "F7"},
    {0x64, "F8"}, {0x65, "F9"}, {0x6D, "F10"}, {0x67, "F11"}, {0x6F, "F12"},
    {0x69, QT_TRANSLATE_NOOP("Menus", "Print")},       {0x6B, QT_TRANSLATE_NOOP("Menus", "Scroll Lock")},
    {0x71, QT_TRANSLATE_NOOP("Menus", "Pause")},
});
// clang-format on
inline constexpr int kTargetFixedItems = static_cast<int>(kTargetCommands.size());
static_assert(kTargetFixedItems == 10);
static_assert(kRingPageSlots.size() + kTunerPageSlots.size() + kButtonPageSlots.size() ==
              kControlSlots.size());
static_assert(kExtraKeys.size() == 31);

// How far before the end of the list a command's item stands.
[[nodiscard]] constexpr int TargetItemFromEnd(int tag) {
    int item = kTargetFixedItems;
    for (const TargetCommand &command : kTargetCommands) {
        if (command.tag == tag) {
            break;
        }
        --item;
    }
    return item;
}

// The key code of a position of the menu; no key beyond it.
[[nodiscard]] constexpr std::uint8_t KeyMenuToKeycode(int position) {
    return position < 1 || position >= static_cast<int>(kExtraKeys.size())
               ? kNoKeyCode
               : kExtraKeys[static_cast<std::size_t>(position)].keyCode;
}

} // namespace drevix
