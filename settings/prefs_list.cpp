#include "settings/prefs_list.h"

#include "platform/base/ascii.h"
#include "platform/base/status.h"
#include "qbase/qbase_sort.h"
#include "settings/device_keys.h"
#include "settings/device_prefs.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_dictionary.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <functional>
#include <new>
#include <optional>
#include <string>

namespace drevix {
namespace {

constexpr std::string_view kAppExtension = ".app";

// A record's bytes as settings; null if they are not settings.
const AppPrefs *AsAppPrefs(const void *data, std::int32_t length) {
    return length == sizeof(AppPrefs) ? static_cast<const AppPrefs *>(data) : nullptr;
}

// The three parts of the list, then records that are not settings.
enum class ListPart { Global, Factory, User, Unknown };

ListPart ListPartOf(const AppPrefs *prefs) {
    if (prefs == nullptr) {
        return ListPart::Unknown;
    }
    if (IsGlobalPrefs(prefs)) {
        return ListPart::Global;
    }
    return prefs->factory != 0 ? ListPart::Factory : ListPart::User;
}

bool EndsInAppExtension(std::string_view name) {
    if (name.size() <= kAppExtension.size()) { // ".app" alone is a valid name
        return false;
    }
    return IsEqualWithoutCase(name.substr(name.size() - kAppExtension.size()), kAppExtension);
}

// Signatures identify applications, except the wildcard: many factory records have it, so the name decides.
bool IsFactoryRecordOf(const AppPrefs &factory, const AppPrefs &prefs) {
    return factory.application == prefs.application &&
           (factory.application != kWildcardSignature ||
            PStringCmp(factory.appFileName.data(), prefs.appFileName.data()) == 0);
}

// The list's order, and data order among equals: both records lie in the base's record data.
std::int32_t CompareByListAndPlace(const void *a, std::int32_t lengthA, const void *b, std::int32_t lengthB) {
    const std::int32_t order = CompareDrevixBaseRecords(a, lengthA, b, lengthB);
    if (order != 0 || a == b) {
        return order;
    }
    return std::less<>()(a, b) ? -1 : 1;
}

bool HasName(const AppPrefs *prefs, ConstStringPtr appFileName) {
    return prefs != nullptr && PStringCmp(prefs->appFileName.data(), appFileName) == 0;
}

// Whether the text is its signature, or that as a number.
bool HasSignature(const AppPrefs &prefs, std::string_view text) {
    const std::string number = std::to_string(OSType{prefs.application});
    return number == text || SignatureText(prefs.application) == text;
}

// How well a record matches `former`; 0: not at all.
int LikenessOf(const AppPrefs *prefs, const AppPrefs &former) {
    if (!HasName(prefs, former.appFileName.data())) {
        return 0;
    }
    if (prefs->application != former.application) {
        return 1;
    }
    return std::memcmp(prefs, &former, sizeof former) == 0 ? 3 : 2;
}

// The first record, from number 1 on, that the test accepts.
template <class Test>
RecordNumber FindIf(QBaseHandle base, Test test) {
    for (RecordNumber i = 1; i < QBaseCountRecords(base); ++i) {
        if (test(GetAppPrefs(base, i))) {
            return i;
        }
    }
    return kNoRecord;
}

Str63 FileNameOf(std::string_view text) {
    Str63 name{};
    getPascalString(text, name.data(), kMaxFileNameLength);
    return name;
}

RecordNumber FindByNameAndSignature(QBaseHandle base, std::string_view text) {
    const std::size_t colon = text.rfind(':');
    if (colon == text.npos) {
        return kNoRecord;
    }
    const Str63 name = FileNameOf(text.substr(0, colon));
    const std::string_view signature = text.substr(colon + 1);
    return FindIf(base, [&](const AppPrefs *prefs) {
        return HasName(prefs, name.data()) && HasSignature(*prefs, signature);
    });
}

RecordNumber FindByNumber(QBaseHandle base, std::string_view text) {
    RecordNumber number = kNoRecord;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    return isNumber && GetAppPrefs(base, number) != nullptr ? number : kNoRecord;
}

template <class Field>
void SetName(Field &field, std::string_view text) {
    field = {};
    getPascalString(text, field.data(), static_cast<std::int32_t>(field.size() - 1));
}

} // namespace

AppPrefs *GetAppPrefs(QBaseHandle base, RecordNumber number) {
    std::int32_t length = 0;
    void *data = QBaseGetRecord(base, number, &length);
    return data != nullptr && length == sizeof(AppPrefs) ? static_cast<AppPrefs *>(data) : nullptr;
}

std::int32_t CompareDrevixBaseRecords(const void *a, std::int32_t lengthA, const void *b,
                                      std::int32_t lengthB) {
    const AppPrefs *prefsA = AsAppPrefs(a, lengthA);
    const AppPrefs *prefsB = AsAppPrefs(b, lengthB);
    const ListPart part = ListPartOf(prefsA);
    if (const ListPart partB = ListPartOf(prefsB); part != partB) {
        return part < partB ? -1 : 1;
    }
    if (part == ListPart::Global || part == ListPart::Unknown) {
        return 0;
    }
    return PStringCmp(prefsA->appName.data(), prefsB->appName.data());
}

void SortDrevixBase(QBaseHandle base) {
    QBaseSort(base, CompareByListAndPlace, kDrevixSortMode);
}

RecordNumber CountListedPrefs(QBaseHandle base) {
    RecordNumber count = QBaseCountRecords(base);
    while (count > 0 && GetAppPrefs(base, count - 1) == nullptr) {
        --count;
    }
    return count;
}

bool IsGlobalPrefs(const AppPrefs *prefs) {
    return prefs != nullptr && prefs->application == kGlobalSignature;
}

RecordNumber FindAppPrefs(QBaseHandle base, ConstStringPtr appFileName) {
    return FindIf(base, [=](const AppPrefs *prefs) { return HasName(prefs, appFileName); });
}

RecordNumber FindAppPrefsAgain(QBaseHandle base, const AppPrefs &former) {
    if (IsGlobalPrefs(&former)) {
        return FindReplacedAppPrefs(base, former);
    }
    RecordNumber found = kNoRecord;
    int best = 0;
    for (RecordNumber i = 1; i < QBaseCountRecords(base); ++i) {
        if (const int likeness = LikenessOf(GetAppPrefs(base, i), former); likeness > best) {
            best = likeness;
            found = i;
        }
    }
    return found;
}

RecordNumber FindAppPrefsByText(QBaseHandle base, std::string_view text) {
    RecordNumber found = FindAppPrefs(base, FileNameOf(text).data());
    if (found == kNoRecord) {
        found = FindByNameAndSignature(base, text);
    }
    return found != kNoRecord ? found : FindByNumber(base, text);
}

RecordNumber FindReplacedAppPrefs(QBaseHandle base, const AppPrefs &record) {
    if (record.application != kGlobalSignature) {
        return FindAppPrefs(base, record.appFileName.data());
    }
    // In a base without a global record, a new one must not replace an application's record.
    return IsGlobalPrefs(GetAppPrefs(base, 0)) ? 0 : kNoRecord;
}

RecordNumber StoreAppPrefs(QBaseHandle base, const AppPrefs &record, RecordNumber replaced) {
    AppPrefs stored = record;
    if (IsGlobalPrefs(&record)) {
        stored.appFileName = {}; // with a name, the merge of factory records would not recognize it
    }
    if (replaced == kNoRecord) {
        return QBaseAddRecord(base, &stored, sizeof stored);
    }
    const AppPrefs *old = GetAppPrefs(base, replaced);
    // The flag protects an application's record from deletion; the global record cannot be deleted anyway.
    if (old != nullptr && !IsGlobalPrefs(&record)) {
        stored.factory |= old->factory;
    }
    return QBaseReplaceRecord(base, replaced, &stored, sizeof stored);
}

std::string AppFileNameFromPath(std::string_view path) {
    path = path.substr(0, path.find_last_not_of('/') + 1);
    std::string_view name = path.substr(path.rfind('/') + 1);
    if (EndsInAppExtension(name)) {
        name.remove_suffix(kAppExtension.size());
    }
    return std::string(name);
}

AppPrefs MakeAppPrefs(QBaseHandle base, OSType application, std::string_view appFileName,
                      std::string_view shownName) {
    const AppPrefs *global = GetAppPrefs(base, 0);
    AppPrefs prefs = global != nullptr ? *global : AppPrefs{};
    prefs.application = application != kGlobalSignature ? application : kNoSignature;
    SetName(prefs.appFileName, appFileName);
    SetName(prefs.appName, shownName.empty() ? appFileName : shownName);
    prefs.active = 1;
    prefs.factory = 0;
    return prefs;
}

bool LoadDefaultPrefs(const FSRef &resourceFolder, const AppPrefs &prefs, AppPrefs *defaults) try {
    std::optional<AppPrefs> own;
    std::optional<AppPrefs> fallback;
    const OSErr status =
        ReadAppPrefsFile(resourceFolder.path + '/' + kDefaultsFileName, [&](const AppPrefs &record) {
            if (!own && IsFactoryRecordOf(record, prefs)) {
                own = record;
            } else if (record.application == kGlobalSignature) {
                fallback = record;
            }
        });
    if (status != noErr || (!own && !fallback)) {
        return false;
    }
    *defaults = own ? *own : *fallback;
    return true;
} catch (const std::bad_alloc &) {
    return false;
}

void CopyGroupFromDefaultPrefs(AppPrefs &prefs, const AppPrefs &defaults, ControlGroup group) {
    DevicePrefs &to = prefs.device[0];
    const DevicePrefs &from = defaults.device[0];
    for (const ControlSlot &control : kControlSlots) {
        if (control.group == group) {
            to.action[control.slot] = from.action[control.slot];
        }
    }
    for (const DeviceKey &key : kDeviceKeys) {
        if (key.group == group) {
            to.*key.field = from.*key.field;
        }
    }
}

} // namespace drevix
