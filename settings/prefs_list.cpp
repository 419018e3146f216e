#include "settings/prefs_list.h"

#include "platform/ascii.h"
#include "platform/status.h"
#include "qbase/qbase_sort.h"
#include "settings/device_prefs.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_dictionary.h"

#include <algorithm>
#include <new>
#include <optional>

namespace drevix {
namespace {

constexpr std::string_view kAppExtension = ".app";

// A record's bytes as settings, null when they are none.
const AppPrefs *AsAppPrefs(const void *data, std::int32_t length) {
    return length == sizeof(AppPrefs) ? static_cast<const AppPrefs *>(data) : nullptr;
}

// The three parts of the list, and behind them records that are no settings.
enum class ListPart { Global, Factory, User, Unknown };

ListPart ListPartOf(const AppPrefs *prefs) {
    if (prefs == nullptr) {
        return ListPart::Unknown;
    }
    if (prefs->application == kGlobalSignature) {
        return ListPart::Global;
    }
    return prefs->factory != 0 ? ListPart::Factory : ListPart::User;
}

bool EndsInAppExtension(std::string_view name) {
    if (name.size() <= kAppExtension.size()) { // ".app" alone is a name
        return false;
    }
    return IsEqualWithoutCase(name.substr(name.size() - kAppExtension.size()), kAppExtension);
}

// Signatures tell applications apart, but for the wildcard: many factory records carry it, and then the name counts.
bool IsFactoryRecordOf(const AppPrefs &factory, const AppPrefs &prefs) {
    return factory.application == prefs.application &&
           (factory.application != kWildcardSignature ||
            PStringCmp(factory.appFileName.data(), prefs.appFileName.data()) == 0);
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
    QBaseSort(base, CompareDrevixBaseRecords, kDrevixSortMode);
}

RecordNumber FindAppPrefs(QBaseHandle base, ConstStringPtr appFileName) {
    for (RecordNumber i = 1; i < QBaseCountRecords(base); ++i) {
        const AppPrefs *prefs = GetAppPrefs(base, i);
        if (prefs != nullptr && PStringCmp(prefs->appFileName.data(), appFileName) == 0) {
            return i;
        }
    }
    return kNoRecord;
}

RecordNumber FindReplacedAppPrefs(QBaseHandle base, const AppPrefs &record) {
    if (record.application != kGlobalSignature) {
        return FindAppPrefs(base, record.appFileName.data());
    }
    // In a base without a global record, an application's record must not give way to it.
    const AppPrefs *first = GetAppPrefs(base, 0);
    return first != nullptr && first->application == kGlobalSignature ? 0 : kNoRecord;
}

RecordNumber StoreAppPrefs(QBaseHandle base, const AppPrefs &record, RecordNumber replaced) {
    if (replaced == kNoRecord) {
        return QBaseAddRecord(base, &record, sizeof record);
    }
    AppPrefs stored = record;
    const AppPrefs *old = GetAppPrefs(base, replaced);
    // The flag keeps an application's record from being deleted; the global record cannot be deleted anyway.
    if (old != nullptr && record.application != kGlobalSignature) {
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
    if (group == ControlGroup::Ring) {
        to.navSensitivity = from.navSensitivity;
        to.navSpeed = from.navSpeed;
        to.useSeparateNavSens = from.useSeparateNavSens;
        to.navSensitivityX = from.navSensitivityX;
        to.navSensitivityY = from.navSensitivityY;
        to.navSensitivityZ = from.navSensitivityZ;
        to.useSeparateNavSpeed = from.useSeparateNavSpeed;
        to.navSpeedX = from.navSpeedX;
        to.navSpeedY = from.navSpeedY;
        to.navSpeedZ = from.navSpeedZ;
    }
    if (group == ControlGroup::Tuner) {
        to.toolSensitivity = from.toolSensitivity;
        to.click = from.click;
    }
}

} // namespace drevix
