#include "companion/korvane_files.h"

#include "platform/base/ascii.h"
#include "platform/base/status.h"
#include "platform/files/paths.h"
#include "platform/files/shared_file.h"
#include "platform/xml/xml_document.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_list.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <span>
#include <thread>

namespace drevix {
namespace {

constexpr std::string_view kPreferences = "Library/Preferences/Drevix Tarnix Preferences/";
constexpr std::string_view kFileName = "/~hotkeys";
constexpr const char *kRootName = "HotKeys";
constexpr const char *kHotKeyName = "HotKey";
constexpr const char *kTargetAppName = "TargetApp";

// How often a malformed file is read before it counts as damaged, and the pause between.
constexpr int kMostReadings = 5;
constexpr std::chrono::milliseconds kBetweenReadings{5};

// A name without the ignored suffix.
std::span<const std::uint8_t> WithoutApp(ConstStringPtr name) {
    constexpr std::string_view kSuffix = ".app";
    const std::span characters(name + 1, name[0]);
    const bool hasSuffix =
        characters.size() > kSuffix.size() && std::ranges::equal(characters.last(kSuffix.size()), kSuffix);
    return characters.first(characters.size() - (hasSuffix ? kSuffix.size() : 0));
}

std::string ChildText(const XmlNode &element, std::string_view name) {
    const XmlNode *child = FindXmlChild(element, name);
    return child != nullptr ? XmlStringValue(*child) : std::string();
}

KorvaneHotKey HotKeyFromXml(const XmlNode &element) {
    KorvaneHotKey hotKey;
    for (std::size_t i = 0; i < kKorvaneKeyNames.size(); ++i) {
        hotKey.Set(static_cast<KorvaneKey>(i), ChildText(element, kKorvaneKeyNames[i]));
    }
    return hotKey;
}

XmlNode XmlFromHotKey(const KorvaneHotKey &hotKey) {
    XmlNode element{kHotKeyName, {}, {}, {}};
    element.children.reserve(kKorvaneKeyNames.size());
    for (std::size_t i = 0; i < kKorvaneKeyNames.size(); ++i) {
        element.children.push_back(
            XmlTextElement(std::string(kKorvaneKeyNames[i]), hotKey.Text(static_cast<KorvaneKey>(i))));
    }
    return element;
}

std::size_t CountHotKeysWithin(const XmlNode &node) {
    std::size_t count = node.name == kHotKeyName ? 1 : 0;
    for (const XmlNode &child : node.children) {
        count += CountHotKeysWithin(child);
    }
    return count;
}

// Out of memory must not look like a file without hotkeys.
OSErr ThrowIfMemoryFull(OSErr status) {
    if (status == memFullErr) {
        throw std::bad_alloc();
    }
    return status;
}

std::optional<KorvaneHotKeyList> ListFromXml(const XmlNode &root) {
    const std::string *target = FindXmlAttribute(root, kTargetAppName);
    if (root.name != kRootName || target == nullptr || target->empty()) {
        return std::nullopt;
    }
    KorvaneHotKeyList list;
    list.TargetApp = *target;
    for (const XmlNode *child : FindXmlChildren(root, kHotKeyName)) {
        list.HotKeys.push_back(HotKeyFromXml(*child));
    }
    return list;
}

// The list of a hotkey file that is well-formed and complete.
std::optional<KorvaneHotKeyList> StrictList(std::string_view bytes) {
    XmlDocument document;
    if (ThrowIfMemoryFull(ParseXmlDocument(bytes, XmlReading::Strict, &document)) != noErr) {
        return std::nullopt;
    }
    return ListFromXml(document.root);
}

// Earlier versions wrote the new text behind the old one, then over it, and kept no copy. A file that such a
// write left when it was interrupted holds both. The second text counts if it is complete, because the first
// may be overwritten in part; otherwise the first, if that is complete.
std::optional<KorvaneHotKeyList> ListOfCutShortFile(std::string_view bytes) {
    const std::string head = KorvaneFileText({});
    const std::string_view declaration = std::string_view(head).substr(0, head.find('\n') + 1);
    const std::size_t second = bytes.rfind(declaration);
    if (second == bytes.npos || second == 0) {
        return std::nullopt;
    }
    const std::string_view behind = bytes.substr(second);
    auto list = StrictList(behind);
    if (list && KorvaneFileText(*list) == behind) {
        return list;
    }
    return StrictList(bytes.substr(0, bytes.find_last_not_of('\0', second - 1) + 1));
}

} // namespace

std::string KorvaneHotKey::Text(KorvaneKey key) const {
    const Value &value = fValues[static_cast<std::size_t>(key)];
    const auto *text = std::get_if<std::string>(&value);
    return text != nullptr ? *text : std::to_string(std::get<std::int32_t>(value));
}

std::int16_t FindKorvaneIndex(OSType creator, ConstStringPtr fileName) {
    const auto *row = std::ranges::find_if(kKorvaneApps, [&](const KorvaneApp &app) {
        return app.fileName == nullptr ? app.creator == creator
                                       : fileName != nullptr && PStringCmp(fileName, app.fileName) == 0;
    });
    return row == kKorvaneApps.end() ? std::int16_t{-1}
                                     : static_cast<std::int16_t>(row - kKorvaneApps.begin());
}

std::optional<std::string_view> FindKorvaneName(OSType creator, ConstStringPtr fileName) {
    const std::int16_t index = FindKorvaneIndex(creator, fileName);
    return index < 0 ? std::nullopt : std::optional(kKorvaneApps[static_cast<std::size_t>(index)].folder);
}

std::int16_t KorvanePStrCmpNoApp(ConstStringPtr a, ConstStringPtr b) {
    const auto first = WithoutApp(a);
    const auto second = WithoutApp(b);
    const auto [inFirst, inSecond] =
        std::ranges::mismatch(first, second, {}, SmallLetter<std::uint8_t>, SmallLetter<std::uint8_t>);
    const bool differ = inFirst != first.end() && inSecond != second.end();
    const int lengths = static_cast<int>(first.size()) - static_cast<int>(second.size());
    return static_cast<std::int16_t>(differ ? SmallLetter(*inFirst) - SmallLetter(*inSecond) : lengths);
}

AppPrefs *KorvaneFindAppPrefs(QBaseHandle base, OSType creator, ConstStringPtr fileName) {
    const bool hasName = fileName != nullptr && fileName[0] != 0;
    for (RecordNumber number = 0; number < QBaseCountRecords(base); ++number) {
        AppPrefs *prefs = GetAppPrefs(base, number);
        if (prefs != nullptr && (hasName ? KorvanePStrCmpNoApp(prefs->appFileName.data(), fileName) == 0
                                         : prefs->application == creator)) {
            return prefs;
        }
    }
    return nullptr;
}

std::string FindKorvaneFileForApp(std::string_view folder) {
    return HomeFolder().append("/").append(kPreferences).append(folder).append(kFileName);
}

std::optional<KorvaneHotKeyList> ParseKorvaneFile(std::string bytes, bool *isWellFormed) {
    XmlDocument document;
    const auto parse = [&](XmlReading reading) {
        return ThrowIfMemoryFull(ParseXmlDocument(bytes, reading, &document)) == noErr;
    };
    *isWellFormed = parse(XmlReading::Strict);
    if (!*isWellFormed && !parse(XmlReading::Recovering)) {
        document = {};
    }
    auto list = ListFromXml(document.root);
    auto mended = *isWellFormed ? std::nullopt : ListOfCutShortFile(bytes);
    if (mended) {
        list = std::move(mended);
        list->bytes = std::move(bytes);
    } else if (list) {
        // A missing end tag in a damaged file can nest a hotkey in the one before it.
        list->isPartial =
            !document.isWhole || (!*isWellFormed && list->HotKeys.size() < CountHotKeysWithin(document.root));
        list->bytes = std::move(bytes);
    }
    return list;
}

// While the companion writes the file it is empty or incomplete. So read a malformed file until it is
// well-formed or stops changing.
std::optional<KorvaneHotKeyList> LoadKorvaneFile(const std::string &path, OSErr *result) {
    std::string before;
    for (int readings = 1;; ++readings) {
        std::string bytes;
        bool isWellFormed = false;
        const OSErr status = ThrowIfMemoryFull(ReadSharedFile(path, kXmlMaxBytes, &bytes));
        if (result != nullptr) {
            *result = status;
        }
        if (status != noErr && status != fBsyErr) {
            return std::nullopt;
        }
        auto list = ParseKorvaneFile(bytes, &isWellFormed);
        const bool isSettled = readings > 1 && !bytes.empty() && bytes == before;
        if (isWellFormed || isSettled || readings == kMostReadings) {
            return list;
        }
        before = std::move(bytes);
        std::this_thread::sleep_for(kBetweenReadings);
    }
}

std::optional<KorvaneHotKeyList> LoadKorvaneFileForApp(std::string_view folder) {
    return LoadKorvaneFile(FindKorvaneFileForApp(folder));
}

std::string KorvaneFileText(const KorvaneHotKeyList &list) {
    XmlNode root{kRootName, {}, {{kTargetAppName, list.TargetApp}}, {}};
    root.children.reserve(list.HotKeys.size());
    std::ranges::transform(list.HotKeys, std::back_inserter(root.children), XmlFromHotKey);
    return XmlDocumentText(root);
}

OSErr WriteKorvanePrefs(const KorvaneHotKeyList &list, const std::string &path, std::string *old) {
    if (list.HotKeys.empty() || list.isPartial || list.HotKeys.size() > kMostKorvaneHotKeys) {
        return paramErr;
    }
    const std::string text = KorvaneFileText(list);
    return text.size() > kXmlMaxBytes ? paramErr : WriteSharedFile(path, text, old);
}

bool SaveKorvanePrefs(const KorvaneHotKeyList &list, const std::string &path) {
    return WriteKorvanePrefs(list, path) == noErr;
}

bool SaveKorvanePrefsForApp(const KorvaneHotKeyList &list, std::string_view folder) {
    return SaveKorvanePrefs(list, FindKorvaneFileForApp(folder));
}

bool IsKorvaneFileUnchanged(const KorvaneHotKeyList &list, std::string_view folder) {
    std::string bytes;
    return ReadSharedFile(FindKorvaneFileForApp(folder), kXmlMaxBytes, &bytes) == noErr &&
           bytes == list.bytes;
}

} // namespace drevix
