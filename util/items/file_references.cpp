#include "util/items/file_references.h"

#include "platform/base/status.h"
#include "platform/catalog/named_files.h"
#include "platform/files/disk.h"
#include "platform/files/file_update.h"
#include "platform/files/paths.h"
#include "settings/pascal_strings.h"

#include <algorithm>
#include <new>
#include <string>

namespace drevix {
namespace {

bool IsLink(const char *path) {
    struct stat status {};
    return CurrentDisk().StatusAt(path, &status) == 0 && S_ISLNK(status.st_mode);
}

// The specification of a missing item in an existing folder; fnfErr on success.
OSErr SpecOfMissing(std::string path, FSSpec *spec) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.pop_back();
    }
    FSRef parent;
    FSSpec made{};
    std::int32_t folder = 0;
    OSErr status = FSPathMakeRef(FolderOfPath(path), &parent);
    if (status == noErr) {
        status = FSSpecFromRef(parent, &made, &folder);
    }
    if (status != noErr) {
        return status;
    }
    std::string name = LeafOfPath(path);
    if (!FitsPascalName(name, name.size())) {
        return ioErr;
    }
    std::ranges::replace(name, ':', '/');
    made.parID = folder;
    getPascalString(name, made.name.data(), static_cast<std::int32_t>(made.name.size()) - 1);
    *spec = made;
    return fnfErr;
}

} // namespace

OSErr GetFSRefFromNSString(const char *path, FSRef *ref) try {
    if (path == nullptr || ref == nullptr) {
        return paramErr;
    }
    if (!IsLink(path)) {
        return FSPathMakeRef(path, ref);
    }
    FSRef parent;
    const OSErr status = FSPathMakeRef(FolderOfPath(path), &parent);
    if (status != noErr) {
        return status;
    }
    return FSRefAtName(parent, LeafOfPath(path), ref);
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr GetFSSpecFromNSString(const char *path, FSSpec *spec, MissingItem missing) try {
    if (path == nullptr || spec == nullptr) {
        return paramErr;
    }
    FSRef ref;
    OSErr status = GetFSRefFromNSString(path, &ref);
    if (status == noErr) {
        status = FSSpecFromRef(ref, spec);
    }
    if (status == fnfErr && missing == MissingItem::Allowed) {
        return SpecOfMissing(path, spec);
    }
    return status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr DrevixGetCatInfo(const FSSpec &spec, std::int16_t index, CatalogInfo *info, bool *isFolder) {
    CatalogInfo local{};
    CatalogInfo &block = info != nullptr ? *info : local;
    block = {};
    block.ioVRefNum = spec.vRefNum;
    block.ioFDirIndex = index;
    block.ioDrDirID = spec.parID;
    block.ioName = spec.name;
    const OSErr status = PBGetCatInfoSync(&block);
    if (status == noErr && isFolder != nullptr) {
        *isFolder = (block.ioFlAttrib & kFolderAttribute) != 0;
    }
    return status;
}

} // namespace drevix
