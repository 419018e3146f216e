// Clears the items folder of alias files that a program which died did not finish, or did not remove to the end.
#include "platform/catalog/apple_double.h"
#include "platform/catalog/resource_file.h"
#include "platform/files/disk.h"
#include "platform/files/owners.h"
#include "platform/files/paths.h"
#include "platform/files/temporary_file.h"
#include "platform/files/user_lock.h"
#include "util/items/alias_file.h"
#include "util/items/file_references.h"
#include "util/items/items_folder.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <span>

namespace drevix {
namespace {

constexpr std::string_view kCompanionStart = "._";
constexpr std::string_view kTemporaryStart =
    ".._"; // ".._NAME.DIGITS.new", and ".._NAME.new" of older programs
constexpr std::string_view kTemporaryEnd = ".new";
constexpr std::size_t kFixedStart = 46;                         // bytes with which all our companions begin
constexpr std::size_t kLongestCompanion = std::size_t{1} << 20; // one of ours has some thousand bytes

bool ReadStart(int descriptor, std::size_t most, std::string *bytes) {
    bytes->resize(most);
    const ssize_t count = CurrentDisk().ReadAt(descriptor, bytes->data(), most, 0);
    bytes->resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return count >= 0;
}

// A companion is written from its start on, so what a death leaves of it is its start, maybe the empty one.
bool IsStartOfCompanion(int descriptor) {
    const std::string start = AppleDoubleBytes({}).substr(0, kFixedStart);
    std::string found;
    return ReadStart(descriptor, kFixedStart, &found) && start.starts_with(found);
}

// Whether these are the bytes that we write for an alias file, at any stage of its making. What other systems write
// has other entries, or no alias.
bool IsCompanion(int descriptor) {
    AppleDouble file;
    std::vector<Resource> resources;
    std::string bytes;
    if (!ReadStart(descriptor, kLongestCompanion, &bytes) ||
        ParseAppleDouble(std::as_bytes(std::span(bytes)), &file) != noErr ||
        AppleDoubleBytes(file) != bytes ||
        ParseResourceFork(std::as_bytes(std::span(file.resourceFork)), &resources) != noErr) {
        return false;
    }
    return resources.empty() || std::ranges::any_of(resources, [](const Resource &resource) {
               return resource.type == kAliasResourceType && resource.id == kAliasID;
           });
}

bool IsMissing(const std::string &path) {
    struct stat ignored {};
    return CurrentDisk().StatusAt(path.c_str(), &ignored) != 0 && errno == ENOENT;
}

void ClearIfHalfMade(const std::string &folder, const std::string &name) {
    const bool isTemporary = name.starts_with(kTemporaryStart) && name.ends_with(kTemporaryEnd);
    const bool isAlone = !isTemporary && name.starts_with(kCompanionStart) &&
                         IsMissing(JoinPath(folder, name.substr(kCompanionStart.size())));
    const std::string path = JoinPath(folder, name);
    DiskDescriptor opened;
    if ((isTemporary || isAlone) && OpenLeftOver(path, &opened) &&
        (isTemporary ? IsStartOfCompanion(opened.Get()) : IsCompanion(opened.Get()))) {
        CurrentDisk().Remove(path.c_str());
    }
}

} // namespace

void ClearHalfMadeItems(ConstStringPtr name) try {
    FSSpec spec{};
    UserLock turn;
    std::vector<std::string> names;
    if (FindDrevixItemsFolder(name, kDontCreateFolder, &spec, nullptr, nullptr) != noErr ||
        turn.Acquire(kItemsLockName, std::chrono::milliseconds{0}) != noErr) {
        return;
    }
    const std::string folder = PathFromSpec(spec);
    if (CurrentDisk().ListFolder(folder.c_str(), &names) != 0) {
        return;
    }
    for (const std::string &entry : names) {
        ClearIfHalfMade(folder, entry);
    }
} catch (const std::bad_alloc &) {
    return; // the next program does it
}

} // namespace drevix
