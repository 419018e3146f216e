// The records whose items must stay: those of the base, of what saves have replaced, and of damaged files copied aside.
#include "document/history.h"
#include "document/merge.h"
#include "document/settings_document.h"
#include "platform/files/disk.h"
#include "platform/files/file_update.h"
#include "platform/files/paths.h"
#include "settings/salvage.h"

#include <algorithm>
#include <new>

namespace drevix {
namespace {

// Whether the file name is that of a kept copy: the first one's, or that plus a number ("KeepFileAside").
bool IsKeptCopy(std::string_view leaf, std::string_view first) {
    if (!leaf.starts_with(first)) {
        return false;
    }
    const std::string_view rest = leaf.substr(first.size());
    return rest.empty() || (rest.size() > 1 && rest[0] == '.' &&
                            std::ranges::all_of(rest.substr(1), [](char c) { return c >= '0' && c <= '9'; }));
}

OSErr AddAll(QBaseHandle from, QBaseHandle base) {
    for (RecordNumber number = 0; number < QBaseCountRecords(from); ++number) {
        std::int32_t length = 0;
        const void *record = QBaseGetRecord(from, number, &length);
        if (record != nullptr && length > 0 && QBaseAddRecord(base, record, length) == kNoRecord) {
            return memFullErr;
        }
    }
    return noErr;
}

// Adds the records of a kept copy: all if it can be read, else its intact ones.
OSErr AddKeptCopy(const std::string &path, QBaseHandle base) {
    const QBaseOwner kept = NewDrevixBase();
    if (kept == nullptr) {
        return memFullErr;
    }
    DevicePrefsFile file;
    const OSErr read = ReadDevicePrefs(kept.get(), path, {}, 0, RefusedFile::LeaveAlone, &file);
    if (read != noErr && read != resNotFound) {
        return read;
    }
    if (!IsDamaged(file.status)) {
        return file.status == noErr ? AddAll(kept.get(), base) : file.status;
    }
    std::string bytes;
    const OSErr status = ReadWholeFile(path, &bytes);
    return status == noErr ? AddWholeRecords(base, bytes) : status;
}

} // namespace

QBaseOwner SettingsDocument::RecordsWithItems() const try {
    QBaseOwner records = CopyBase(fBase.get());
    if (records == nullptr || fPath.empty()) {
        return records;
    }
    const std::string folder = FolderOfPath(fPath);
    std::vector<std::string> leaves;
    if (CurrentDisk().ListFolder(folder.c_str(), &leaves) != 0) {
        return nullptr;
    }
    const std::string first = LeafOfPath(fPath) + kRefusedSuffix;
    for (const std::string &leaf : leaves) {
        if (IsKeptCopy(leaf, first) &&
            AddKeptCopy(std::string(folder).append("/").append(leaf), records.get()) != noErr) {
            return nullptr;
        }
    }
    std::vector<EarlierSettings> history;
    const bool isListed = ListHistory(fPath, &history) == noErr;
    const bool areAdded = std::ranges::all_of(history, [&](const EarlierSettings &earlier) {
        return AddKeptCopy(earlier.path, records.get()) == noErr;
    });
    return isListed && areAdded ? std::move(records) : nullptr;
} catch (const std::bad_alloc &) {
    return nullptr;
}

void SettingsDocument::CleanUpItems(std::chrono::milliseconds wait,
                                    const std::function<void(QBaseHandle)> &cleanUp) try {
    const LockForNow lock(fLock);
    if (Lock(wait) == noErr) {
        TakeOutsideChanges();
        if (const QBaseOwner records = IsSaved() ? RecordsWithItems() : nullptr; records != nullptr) {
            cleanUp(records.get());
        }
    }
} catch (const std::bad_alloc &) {
    return; // nothing was cleaned up; the next one does it
}

} // namespace drevix
