// The companion dial's hotkey files: which application has which, reading one, and writing it back.
// docs/hotkey-files.md has the format.
#pragma once

#include "platform/xml/xml_document.h"
#include "qbase/qbase.h"
#include "settings/app_prefs.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace drevix {

// An application that the companion knows.
struct KorvaneApp {
    OSType creator;          // of its settings record
    ConstStringPtr fileName; // what selects the row, letter case ignored; null: the creator does
    std::string_view folder; // of its hotkey file
};

inline constexpr auto kPhotoshopName = PascalLiteral("Adobe Photoshop CS2");
inline constexpr auto kIllustratorName = PascalLiteral("Adobe Illustrator CS2");
inline constexpr auto kInDesignName = PascalLiteral("Adobe InDesign CS2");

// clang-format off
// The companion's applications, in the order in which they are looked through and announced.
inline constexpr auto kKorvaneApps = std::to_array<KorvaneApp>({
    {kGlobalSignature,     nullptr,                 "_System_"},
    {FourCharCode("8BIM"), kPhotoshopName.data(),   "Photoshop"},
    {FourCharCode("ART5"), kIllustratorName.data(), "Illustrator"},
    {FourCharCode("InDn"), kInDesignName.data(),    "InDesign"},
    {FourCharCode("8ELE"), nullptr,                 "PSElements"},
});
// clang-format on

// The values of a hotkey, in the order in which a file has them.
enum class KorvaneKey : std::uint8_t { Menu, Key, Device, Modifier, VirtualKey };
inline constexpr auto kKorvaneKeyNames =
    std::to_array<std::string_view>({"Menu", "Key", "Device", "Modifier", "VirtualKey"});
static_assert(kKorvaneKeyNames.size() == static_cast<std::size_t>(KorvaneKey::VirtualKey) + 1);

// The device that a hotkey of ours names.
inline constexpr std::string_view kKorvaneDevice = "pyralis";

// One hotkey: a menu command of the application, and the key that it is bound to, if any. A value is text, as
// files have it, or a small number.
class KorvaneHotKey {
  public:
    using Value = std::variant<std::string, std::int32_t>;

    void Set(KorvaneKey key, Value value) { fValues[static_cast<std::size_t>(key)] = std::move(value); }
    // The value as text, a number as its decimal digits.
    [[nodiscard]] std::string Text(KorvaneKey key) const;

  private:
    std::array<Value, kKorvaneKeyNames.size()> fValues;
};

// A file of more is read, but could not be read again once we had written it.
inline constexpr std::size_t kMostKorvaneHotKeys = (kXmlMaxElements - 1) / (1 + kKorvaneKeyNames.size());

// One file's hotkeys.
struct KorvaneHotKeyList {
    std::string TargetApp; // carried along
    std::vector<KorvaneHotKey> HotKeys;
    // The file was damaged, and may hold hotkeys that could not be read. It is not written back.
    bool isPartial = false;
    std::string bytes; // the file as it was read
};

// Applications

// The row of a record: the first whose name is `fileName` (null: none), or which has no name and this creator;
// -1 without one.
[[nodiscard]] std::int16_t FindKorvaneIndex(OSType creator, ConstStringPtr fileName);
// That row's folder name.
[[nodiscard]] std::optional<std::string_view> FindKorvaneName(OSType creator, ConstStringPtr fileName);
// Orders two application file names as PStringCmp does, but with ".app" at the end, in small letters and
// behind something, not counted.
[[nodiscard]] std::int16_t KorvanePStrCmpNoApp(ConstStringPtr a, ConstStringPtr b);
// The first record, in index order, that has this application file name as KorvanePStrCmpNoApp compares, or,
// for a null or empty name, this creator; null if none. Lock the base while the pointer is in use.
[[nodiscard]] AppPrefs *KorvaneFindAppPrefs(QBaseHandle base, OSType creator, ConstStringPtr fileName);

// Files. None is ever made where there was no folder for it, and nothing here tells a missing file from one
// that is not understood: either has no hotkeys for us. All may throw std::bad_alloc.

// The path of the hotkey file in that folder of the companion's preferences.
[[nodiscard]] std::string FindKorvaneFileForApp(std::string_view folder);
// Every "HotKey" in the root, whatever stands before or between. Nothing for a file that cannot be read, is
// no hotkey file or names no target application. A file that another program seems to be writing is looked at
// again for up to 20 ms. A file that is not well-formed is read as far as it makes sense.
[[nodiscard]] std::optional<KorvaneHotKeyList> LoadKorvaneFile(const std::string &path);
[[nodiscard]] std::optional<KorvaneHotKeyList> LoadKorvaneFileForApp(std::string_view folder);
// Writes the list to the file itself. False, with the file as it was, for a list without hotkeys, a partial one, one
// that is too long to be read again, or a write that failed.
[[nodiscard]] bool SaveKorvanePrefs(const KorvaneHotKeyList &list, const std::string &path);
// The same: noErr, paramErr for a list that is not written, or the file's error.
[[nodiscard]] OSErr WriteKorvanePrefs(const KorvaneHotKeyList &list, const std::string &path);
[[nodiscard]] bool SaveKorvanePrefsForApp(const KorvaneHotKeyList &list, std::string_view folder);
// A file's bytes as a list, and a list as a file's bytes. *isWellFormed tells whether the bytes are XML as it
// should be.
[[nodiscard]] std::optional<KorvaneHotKeyList> ParseKorvaneFile(std::string bytes, bool *isWellFormed);
[[nodiscard]] std::string KorvaneFileText(const KorvaneHotKeyList &list);
// Whether the file still holds what the list was read from.
[[nodiscard]] bool IsKorvaneFileUnchanged(const KorvaneHotKeyList &list, std::string_view folder);

} // namespace drevix
