#include "util/items/items_folder.h"

#include "platform/base/equal_string.h"
#include "platform/base/status.h"
#include "platform/catalog/named_files.h"
#include "settings/action_commands.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_list.h"
#include "util/items/file_references.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <tuple>
#include <unordered_set>

namespace drevix {
namespace {

// The folded names of all items that slots open, so that each file needs one lookup instead of a comparison
// with every slot.
std::unordered_set<std::string> NamesInUse(QBaseHandle base) {
    std::unordered_set<std::string> names;
    const std::int32_t count = QBaseCountRecords(base);
    for (RecordNumber number = 0; number < count; ++number) {
        const AppPrefs *prefs = GetAppPrefs(base, number);
        if (prefs == nullptr) {
            continue;
        }
        for (const ActionSlot &slot : prefs->device[0].action) {
            if (slot.command == kActionOpenItem) {
                names.insert(FoldedString(PascalCharacters(slot.data)));
            }
        }
    }
    return names;
}

// Walks the entries as listed at the start, which visits the same ones as a walk by index that stays in place
// after a removal.
void RemoveUnused(std::int16_t volume, std::int32_t folder,
                  const std::unordered_set<std::string> &namesInUse) {
    std::vector<Str63> names;
    if (ListFolder(volume, folder, &names) != noErr) {
        return;
    }
    for (const Str63 &name : names) {
        const FSSpec file = {volume, folder, name};
        CatalogInfo info{};
        bool isFolder = false;
        const OSErr status = DrevixGetCatInfo(file, 0, &info, &isFolder);
        if (status == fnfErr) {
            continue; // removed by another program meanwhile
        }
        if (status != noErr) {
            return;
        }
        const bool isAlias = !isFolder && (info.ioFlFndrInfo.fdFlags & kIsAlias) != 0;
        if (isAlias && !namesInUse.contains(FoldedString(PascalCharacters(name)))) {
            std::ignore = FSpDelete(file); // leave what cannot be removed
        }
    }
}

} // namespace

OSErr FindDrevixItemsFolder(ConstStringPtr name, FolderCreation creation, FSSpec *specOut,
                            std::int16_t *volumeOut, std::int32_t *folderOut) {
    FSSpec spec{};
    if (name == nullptr || name[0] == 0 || name[0] >= spec.name.size()) {
        return paramErr;
    }
    PStringCopy(name, spec.name.data(), static_cast<std::int16_t>(spec.name.size() - 1));
    OSErr status =
        FindFolder(kOnSystemDisk, kPreferencesFolderType, kCreateFolder, &spec.vRefNum, &spec.parID);
    if (status != noErr) {
        return status;
    }
    CatalogInfo info{};
    bool isFolder = true;
    status = DrevixGetCatInfo(spec, 0, &info, &isFolder);
    if (status == fnfErr && creation == kCreateFolder) {
        status = FSpDirCreate(spec, kSystemScript, &info.ioDrDirID);
        info.ioVRefNum = spec.vRefNum;
    }
    if (status != noErr) {
        return status;
    }
    if (!isFolder) {
        return ioErr;
    }
    if (specOut != nullptr) {
        *specOut = spec;
    }
    if (volumeOut != nullptr) {
        *volumeOut = info.ioVRefNum;
    }
    if (folderOut != nullptr) {
        *folderOut = info.ioDrDirID;
    }
    return noErr;
}

OSErr CleanupDrevixItems(ConstStringPtr name, QBaseHandle base) try {
    std::int16_t volume = 0;
    std::int32_t folder = 0;
    if (const OSErr status = FindDrevixItemsFolder(name, kCreateFolder, nullptr, &volume, &folder);
        status != noErr) {
        return status;
    }
    RemoveUnused(volume, folder, NamesInUse(base));
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

} // namespace drevix
