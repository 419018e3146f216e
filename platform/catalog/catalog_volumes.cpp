// The mount table as volumes.

#include "platform/base/mac_roman.h"
#include "platform/base/status.h"
#include "platform/catalog/catalog_names.h"
#include "platform/catalog/named_files.h"
#include "platform/files/file_update.h"
#include "platform/files/paths.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace drevix {
namespace {

constexpr const char *kMountTable = "/proc/self/mountinfo"; // format: proc(5)
constexpr std::size_t kLongestVolumeName = 27;              // limit of the classic volume records
constexpr std::string_view kRootVolumeName = "File System"; // file managers' name for "/"

struct FileSystemRow {
    std::string_view type; // as in the mount table
    std::int16_t kind;
};

// clang-format off
// Any other file system is local.
constexpr auto kFileSystems = std::to_array<FileSystemRow>({
    {"9p", kServerFileSystem},                {"afs", kServerFileSystem},
    {"ceph", kServerFileSystem},              {"cifs", kServerFileSystem},
    {"coda", kServerFileSystem},              {"davfs", kServerFileSystem},
    {"fuse.cephfs", kServerFileSystem},       {"fuse.curlftpfs", kServerFileSystem},
    {"fuse.davfs2", kServerFileSystem},       {"fuse.glusterfs", kServerFileSystem},
    {"fuse.rclone", kServerFileSystem},       {"fuse.s3fs", kServerFileSystem},
    {"fuse.smbnetfs", kServerFileSystem},     {"fuse.sshfs", kServerFileSystem},
    {"glusterfs", kServerFileSystem},         {"lustre", kServerFileSystem},
    {"ncpfs", kServerFileSystem},             {"nfs", kServerFileSystem},
    {"nfs4", kServerFileSystem},              {"smb3", kServerFileSystem},
    {"smbfs", kServerFileSystem},             {"iso9660", kDiscFileSystem},
    {"udf", kDiscFileSystem},                 {"exfat", kDosFileSystem},
    {"fuseblk", kDosFileSystem},              {"msdos", kDosFileSystem},
    {"ntfs", kDosFileSystem},                 {"ntfs3", kDosFileSystem},
    {"vfat", kDosFileSystem},
});
// clang-format on

std::int16_t KindOf(std::string_view type) {
    const auto *row = std::ranges::find(kFileSystems, type, &FileSystemRow::type);
    return row == kFileSystems.end() ? kLocalFileSystem : row->kind;
}

// The table escapes blanks, line ends and backslashes as a backslash and three octal digits.
std::string Unescaped(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || text.size() - i < 4) {
            result.push_back(text[i]);
            continue;
        }
        int code = 0;
        for (int digit = 0; digit < 3; ++digit) {
            code = code * 8 + (text[++i] - '0');
        }
        result.push_back(static_cast<char>(code));
    }
    return result;
}

// One line: "36 35 98:0 /root /mount/point options more - type source options".
bool ParseLine(const std::string &line, Volume *volume) {
    std::istringstream words(line);
    std::string word;
    std::string root;
    for (int i = 0; i < 5; ++i) {
        words >> root;
    }
    while (words >> word && word != "-") {
    }
    if (!(words >> word) || !root.starts_with('/')) {
        return false;
    }
    *volume = {0, KindOf(word), Unescaped(root)};
    return true;
}

bool LiesIn(std::string_view path, std::string_view root) {
    return root == "/" ||
           (path.starts_with(root) && (path.size() == root.size() || path[root.size()] == '/'));
}

} // namespace

std::vector<Volume> ParseMountTable(const std::string &table) {
    std::vector<Volume> volumes;
    std::istringstream lines(table);
    for (std::string line; std::getline(lines, line);) {
        Volume volume{};
        if (ParseLine(line, &volume)) {
            // The last mount at a place hides earlier ones.
            std::erase_if(volumes, [&](const Volume &other) { return other.root == volume.root; });
            volumes.push_back(volume);
        }
    }
    return volumes;
}

OSErr ListVolumes(std::vector<Volume> *volumes) {
    std::string table;
    if (const OSErr status = ReadWholeFile(kMountTable, &table); status != noErr && status != fnfErr) {
        return status; // without a table there is only the root volume
    }
    *volumes = ParseMountTable(table);
    for (Volume &volume : *volumes) {
        volume.number = NumberOfVolume(volume.root);
    }
    if (FindVolume(*volumes, kRootVolume) == nullptr) {
        volumes->push_back({kRootVolume, kLocalFileSystem, "/"}); // after chroot, "/" may not be in the table
    }
    return noErr;
}

const Volume *VolumeOfPath(const std::vector<Volume> &volumes, std::string_view path) {
    const Volume *found = nullptr;
    for (const Volume &volume : volumes) {
        if (LiesIn(path, volume.root) && (found == nullptr || volume.root.size() > found->root.size())) {
            found = &volume;
        }
    }
    return found;
}

const Volume *FindVolume(const std::vector<Volume> &volumes, std::int16_t number) {
    const bool isRoot = number == 0 || number == kOnSystemDisk;
    const auto found = std::ranges::find(volumes, isRoot ? kRootVolume : number, &Volume::number);
    return found == volumes.end() ? nullptr : &*found;
}

Str63 NameOfVolume(const Volume &volume) {
    if (volume.number == kRootVolume) {
        return Str63FromMacRoman(kRootVolumeName);
    }
    std::string name = MacRomanFromUtf8(LeafOfPath(volume.root));
    std::ranges::replace(name, ':', '/');
    return Str63FromMacRoman(name.substr(0, kLongestVolumeName));
}

OSErr PBHGetVInfoSync(VolumeInfo *info) try {
    std::vector<Volume> volumes;
    if (const OSErr status = ListVolumes(&volumes); status != noErr) {
        return status;
    }
    const Volume *volume = FindVolume(volumes, info->ioVRefNum);
    if (volume == nullptr) {
        return nsvErr;
    }
    info->ioName = NameOfVolume(*volume);
    info->ioVFSID = volume->fileSystem;
    info->mountPoint = volume->root;
    return noErr;
} catch (const std::bad_alloc &) {
    return memFullErr;
}

} // namespace drevix
