#include "platform/catalog/catalog.h"

#include "platform/base/status.h"
#include "platform/catalog/apple_double.h"
#include "platform/catalog/catalog_names.h"
#include "platform/catalog/named_files.h"
#include "platform/files/disk.h"
#include "platform/files/file_update.h"
#include "platform/files/owners.h"
#include "platform/files/paths.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <new>
#include <string_view>
#include <unordered_set>

namespace drevix {
namespace {

constexpr mode_t kNewFolderMode = 0700; // a link in it says what it leads to, whoever may read it
constexpr OSType kLinkCreator = FourCharCode("rhap"); // the platform's creator for symbolic links
constexpr std::string_view kAppleDoubleStart = "._";

OSErr StatusOfPath(const std::string &path, struct stat *status) {
    if (path.empty() || path.find('\0') != std::string::npos) {
        return bdNamErr;
    }
    return CurrentDisk().StatusAt(path.c_str(), status) == 0 ? noErr : LastError();
}

// nsvErr for an unknown volume, dirNFErr for an unknown folder, else noErr.
OSErr FolderStatus(std::int16_t volume, std::int32_t folder) {
    return RootOfVolume(volume).empty() ? nsvErr : FolderPath(volume, folder).empty() ? dirNFErr : noErr;
}

// Whether an executable file is really a program: file systems without modes report every file as executable.
bool StartsLikeProgram(const std::string &path) {
    std::array<char, 4> start{};
    const DiskDescriptor file(
        CurrentDisk().Open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, 0));
    const ssize_t count = file ? CurrentDisk().ReadAt(file.Get(), start.data(), start.size(), 0) : -1;
    const std::string_view text(start.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return text == "\177ELF" || text.starts_with("#!");
}

OSType TypeOfFile(const std::string &path, const struct stat &status) {
    const bool isExecutable = (status.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0;
    const bool isApplication = path.ends_with(".desktop") || (isExecutable && StartsLikeProgram(path));
    return isApplication ? kApplicationType : kUnknownType;
}

FInfo InfoWithoutAppleDouble(const std::string &path, const struct stat &status) {
    if (S_ISLNK(status.st_mode)) {
        return {kSymbolicLinkType, kLinkCreator, 0};
    }
    return {S_ISREG(status.st_mode) ? TypeOfFile(path, status) : kUnknownType, kUnknownType, 0};
}

// The Finder information of the item at a path. Ignores an unreadable AppleDouble file.
OSErr InfoOfFile(const std::string &path, const struct stat &status, FInfo *info) {
    *info = InfoWithoutAppleDouble(path, status);
    if (!S_ISREG(status.st_mode) && !S_ISLNK(status.st_mode) && !S_ISDIR(status.st_mode)) {
        return noErr;
    }
    AppleDouble appleDouble;
    const OSErr result = ReadAppleDouble(path, &appleDouble);
    if (result == fnfErr || result == mapReadErr || result == permErr) {
        return noErr;
    }
    if (result == noErr) {
        *info = GetFInfo(appleDouble);
    }
    return result;
}

std::int32_t IdOnVolume(const Volume &volume, const std::string &path) {
    return path == volume.root ? kRootFolder : FolderIdFromPath(path);
}

// Fills in a folder's own fields: its id, and its parent if it is a volume's root.
OSErr DescribeFolder(const std::string &path, CatalogInfo *info) {
    std::vector<Volume> volumes;
    if (const OSErr status = ListVolumes(&volumes); status != noErr) {
        return status;
    }
    const Volume *volume = VolumeOfPath(volumes, path);
    info->ioVRefNum = volume->number;
    info->ioDrDirID = IdOnVolume(*volume, path);
    if (path == volume->root) {
        info->ioDrParID = kRootParentFolder;
        info->ioName = NameOfVolume(*volume);
    } else {
        info->ioDrParID = IdOnVolume(*volume, FolderOfPath(path));
    }
    return noErr;
}

// Describes the item at a path; for a file, folder and volume stay as given.
OSErr Describe(const std::string &path, CatalogInfo *info) {
    struct stat status {};
    if (const OSErr result = StatusOfPath(path, &status); result != noErr) {
        return result;
    }
    info->ioNode = status.st_ino;
    info->ioDevice = status.st_dev;
    info->ioFlAttrib = S_ISDIR(status.st_mode) ? kFolderAttribute : 0;
    info->ioDrParID = info->ioDrDirID;
    if (S_ISDIR(status.st_mode)) {
        if (const OSErr result = DescribeFolder(path, info); result != noErr) {
            return result;
        }
    }
    // A volume's root keeps its AppleDouble file on the volume, as "._.", because the folder beside it is on
    // another volume.
    const bool isVolume = info->ioDrParID == kRootParentFolder;
    return InfoOfFile(isVolume ? JoinPath(path, ".") : path, status, &info->ioFlFndrInfo);
}

OSErr DescribeItself(CatalogInfo *info) {
    const std::string path = FolderPath(info->ioVRefNum, info->ioDrDirID);
    if (info->ioDrDirID == kRootParentFolder) {
        return dirNFErr;
    }
    info->ioName = NameOfEntry(FolderOfPath(path), LeafOfPath(path));
    const OSErr status = Describe(path, info);
    return status == noErr && info->ioFlAttrib == 0 ? dirNFErr : status;
}

OSErr DescribeByIndex(CatalogInfo *info) {
    std::vector<Str63> names;
    if (const OSErr status = ListFolder(info->ioVRefNum, info->ioDrDirID, &names); status != noErr) {
        return status;
    }
    const auto index = static_cast<std::size_t>(info->ioFDirIndex);
    if (index > names.size()) {
        return fnfErr;
    }
    info->ioName = names[index - 1];
    return Describe(PathFromSpec({info->ioVRefNum, info->ioDrDirID, info->ioName}), info);
}

} // namespace

OSErr PBGetCatInfoSync(CatalogInfo *info) try {
    if (const OSErr status = FolderStatus(info->ioVRefNum, info->ioDrDirID); status != noErr) {
        return status;
    }
    if (info->ioFDirIndex < 0) {
        return DescribeItself(info);
    }
    if (info->ioFDirIndex > 0) {
        return DescribeByIndex(info);
    }
    const Str63 asked = info->ioName;
    const OSErr status = Describe(PathFromSpec({info->ioVRefNum, info->ioDrDirID, asked}), info);
    info->ioName = asked;
    return status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr ListFolder(std::int16_t volume, std::int32_t folder, std::vector<Str63> *names) try {
    if (const OSErr status = FolderStatus(volume, folder); status != noErr) {
        return status;
    }
    const std::string path = FolderPath(volume, folder);
    std::vector<std::string> entries;
    if (CurrentDisk().ListFolder(path.c_str(), &entries) != 0) {
        return errno == ENOENT ? dirNFErr : LastError();
    }
    std::ranges::sort(entries);
    const std::unordered_set<std::string_view> all(entries.begin(), entries.end());
    names->clear();
    for (const std::string_view entry : entries) {
        const bool isAppleDouble = entry.starts_with(kAppleDoubleStart) &&
                                   entry.size() > kAppleDoubleStart.size() &&
                                   all.contains(entry.substr(kAppleDoubleStart.size()));
        if (!isAppleDouble) {
            names->push_back(NameOfEntry(path, entry));
        }
    }
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr FSPathMakeRef(const std::string &path, FSRef *ref) try {
    if (path.find('\0') != std::string::npos) {
        return bdNamErr;
    }
    std::string real;
    if (CurrentDisk().RealPath(path.c_str(), &real) != 0) {
        return LastError();
    }
    ref->path = std::move(real);
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr FSRefAtName(const FSRef &folder, const std::string &name, FSRef *ref) try {
    if (name.empty()) {
        return fnfErr;
    }
    if (name.find('/') != std::string::npos) {
        return bdNamErr;
    }
    std::string path = JoinPath(folder.path, name);
    struct stat ignored {};
    const OSErr status = StatusOfPath(path, &ignored);
    if (status == noErr) {
        ref->path = std::move(path);
    }
    return status;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr FSSpecFromRef(const FSRef &ref, FSSpec *spec, std::int32_t *folder) try {
    struct stat status {};
    if (const OSErr result = StatusOfPath(ref.path, &status); result != noErr) {
        return result;
    }
    if (folder != nullptr && !S_ISDIR(status.st_mode)) {
        return paramErr;
    }
    std::vector<Volume> volumes;
    if (const OSErr result = ListVolumes(&volumes); result != noErr) {
        return result;
    }
    const Volume *volume = VolumeOfPath(volumes, ref.path);
    const bool isVolume = volume->root == ref.path;
    if (folder != nullptr) {
        *folder = IdOnVolume(*volume, ref.path);
    }
    if (isVolume) {
        *spec = {volume->number, kRootParentFolder, NameOfVolume(*volume)};
        return noErr;
    }
    const std::string parent = FolderOfPath(ref.path);
    *spec = {volume->number, IdOnVolume(*volume, parent), NameOfEntry(parent, LeafOfPath(ref.path))};
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr FSpDirCreate(const FSSpec &spec, std::int16_t /*script*/, std::int32_t *folder) try {
    const std::string path = PathFromSpec(spec);
    if (path.empty()) {
        return bdNamErr;
    }
    if (CurrentDisk().MakeFolder(path.c_str(), kNewFolderMode) != 0) {
        return LastError();
    }
    *folder = FolderIdFromPath(path);
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr FSpDelete(const FSSpec &spec) try {
    const std::string path = PathFromSpec(spec);
    struct stat status {};
    OSErr result = StatusOfPath(path, &status);
    if (result == fnfErr) {
        AppleDouble appleDouble;
        if (ReadAppleDouble(path, &appleDouble) != noErr) {
            return fnfErr;
        }
    } else if (result != noErr) {
        return result;
    } else if (S_ISDIR(status.st_mode)) {
        return notAFileErr;
    } else if (CurrentDisk().Remove(path.c_str()) != 0) {
        return LastError();
    }
    // Remove the file first: if we stop here, the orphaned AppleDouble file goes to the next file of that
    // name.
    return RemoveAppleDouble(path);
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr FSpGetFInfo(const FSSpec &spec, FInfo *info) try {
    const std::string path = PathFromSpec(spec);
    struct stat status {};
    const OSErr result = StatusOfPath(path, &status);
    if (result == noErr) {
        return S_ISDIR(status.st_mode) ? notAFileErr : InfoOfFile(path, status, info);
    }
    AppleDouble appleDouble;
    if (result != fnfErr || ReadAppleDouble(path, &appleDouble) != noErr) {
        return result;
    }
    *info = GetFInfo(appleDouble);
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr FSpSetFInfo(const FSSpec &spec, const FInfo &info) try {
    const std::string path = PathFromSpec(spec);
    AppleDouble appleDouble;
    OSErr result = path.empty() ? bdNamErr : ReadAppleDouble(path, &appleDouble);
    if (result == fnfErr) {
        struct stat ignored {};
        result = StatusOfPath(path, &ignored);
    }
    if (result != noErr) {
        return result;
    }
    SetFInfo(appleDouble, info);
    return WriteAppleDouble(path, appleDouble);
} catch (const std::bad_alloc &) {
    return memFullErr;
}

} // namespace drevix
