// The companion dial's hotkey files: finding an application's file, reading it and writing it back.
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
    OSType creator;          // creator in its settings record
    ConstStringPtr fileName; // selects the row, ignoring letter case; null: the creator selects it
    std::string_view folder; // folder of its hotkey file
};

inline constexpr auto kPhotoshopName = PascalLiteral("Adobe Photoshop CS2");
inline constexpr auto kIllustratorName = PascalLiteral("Adobe Illustrator CS2");
inline constexpr auto kInDesignName = PascalLiteral("Adobe InDesign CS2");

// clang-format off
// The companion's applications, in the order in which they are searched and announced.
inline constexpr auto kKorvaneApps = std::to_array<KorvaneApp>({
    {kGlobalSignature,     nullptr,                 "_System_"},
    {FourCharCode("8BIM"), kPhotoshopName.data(),   "Photoshop"},
    {FourCharCode("ART5"), kIllustratorName.data(), "Illustrator"},
    {FourCharCode("InDn"), kInDesignName.data(),    "InDesign"},
    {FourCharCode("8ELE"), nullptr,                 "PSElements"},
});
// clang-format on

// The values of a hotkey, in file order.
enum class KorvaneKey : std::uint8_t { Menu, Key, Device, Modifier, VirtualKey };
inline constexpr auto kKorvaneKeyNames =
    std::to_array<std::string_view>({"Menu", "Key", "Device", "Modifier", "VirtualKey"});
static_assert(kKorvaneKeyNames.size() == static_cast<std::size_t>(KorvaneKey::VirtualKey) + 1);

// The device name in our hotkeys.
inline constexpr std::string_view kKorvaneDevice = "pyralis";

// One hotkey: a menu command of the application and the key bound to it, if any. A value is text, as in the
// file, or a small number.
class KorvaneHotKey {
  public:
    using Value = std::variant<std::string, std::int32_t>;

    void Set(KorvaneKey key, Value value) { fValues[static_cast<std::size_t>(key)] = std::move(value); }
    // The value as text; a number in decimal.
    [[nodiscard]] std::string Text(KorvaneKey key) const;

  private:
    std::array<Value, kKorvaneKeyNames.size()> fValues;
};

// A file with more can be read, but would be too large to read again once we had written it.
inline constexpr std::size_t kMostKorvaneHotKeys = (kXmlMaxElements - 1) / (1 + kKorvaneKeyNames.size());

// One file's hotkeys.
struct KorvaneHotKeyList {
    std::string TargetApp; // kept as it is
    std::vector<KorvaneHotKey> HotKeys;
    // The file was damaged and may have hotkeys that could not be read. It is never written back.
    bool isPartial = false;
    std::string bytes; // the file as read
};

// Applications

// The row of a record: the first with the name `fileName` (null: none), or without a name and with this
// creator; -1 if none.
[[nodiscard]] std::int16_t FindKorvaneIndex(OSType creator, ConstStringPtr fileName);
// That row's folder name.
[[nodiscard]] std::optional<std::string_view> FindKorvaneName(OSType creator, ConstStringPtr fileName);
// Compares two application file names like PStringCmp, but ignores a lower-case ".app" at the end unless it
// is the whole name.
[[nodiscard]] std::int16_t KorvanePStrCmpNoApp(ConstStringPtr a, ConstStringPtr b);
// The first record, in index order, with this application file name (by KorvanePStrCmpNoApp) or, for a null
// or empty name, this creator; null if none. Lock the base while using the pointer.
[[nodiscard]] AppPrefs *KorvaneFindAppPrefs(QBaseHandle base, OSType creator, ConstStringPtr fileName);

// Files. Never creates a folder for one. A missing file and an invalid one are treated alike: no hotkeys for
// us. All may throw std::bad_alloc.

// The path of the hotkey file in that folder of the companion's preferences.
[[nodiscard]] std::string FindKorvaneFileForApp(std::string_view folder);
// Reads every "HotKey" in the root, skipping anything else. nullopt for a file that cannot be read, is not a
// hotkey file or names no target application. Retries for up to 20 ms while another program seems to be
// writing the file. Reads what it can of a malformed file. If an interrupted write of ours left two texts in
// the file, reads the intact one; the next write repairs the file. *status, if given, gets the status of the
// last reading: noErr, even for a file that is not a hotkey file; fBsyErr; or the file's error.
[[nodiscard]] std::optional<KorvaneHotKeyList> LoadKorvaneFile(const std::string &path,
                                                               OSErr *status = nullptr);
[[nodiscard]] std::optional<KorvaneHotKeyList> LoadKorvaneFileForApp(std::string_view folder);
// Writes the list to the file in place. False, with the file unchanged, for a list without hotkeys, a partial
// one, one too long to be read again, or a failed write.
[[nodiscard]] bool SaveKorvanePrefs(const KorvaneHotKeyList &list, const std::string &path);
// The same with a status: noErr, paramErr for a list that cannot be written, or the file's error. `old` as for
// WriteSharedFile ("platform/files/shared_file.h").
[[nodiscard]] OSErr WriteKorvanePrefs(const KorvaneHotKeyList &list, const std::string &path,
                                      std::string *old = nullptr);
[[nodiscard]] bool SaveKorvanePrefsForApp(const KorvaneHotKeyList &list, std::string_view folder);
// Convert a file's bytes to a list and back. *isWellFormed gets whether the bytes are well-formed XML.
[[nodiscard]] std::optional<KorvaneHotKeyList> ParseKorvaneFile(std::string bytes, bool *isWellFormed);
[[nodiscard]] std::string KorvaneFileText(const KorvaneHotKeyList &list);
// Whether the file still has the bytes that the list was read from.
[[nodiscard]] bool IsKorvaneFileUnchanged(const KorvaneHotKeyList &list, std::string_view folder);

} // namespace drevix
