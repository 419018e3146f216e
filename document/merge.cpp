#include "document/merge.h"

#include "platform/base/status.h"
#include "settings/device_prefs.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_list.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <tuple>

namespace drevix {
namespace {

// The record with that key; null if there is none or it is not settings.
const AppPrefs *Find(QBaseHandle base, const KeyedRecords &records, const RecordKey &key) {
    const auto found = records.find(key);
    return found == records.end() ? nullptr : GetAppPrefs(base, found->second);
}

std::optional<AppPrefs> Copy(const AppPrefs *record) {
    return record == nullptr ? std::nullopt : std::optional(*record);
}

bool AreSame(const AppPrefs *a, const AppPrefs *b) {
    return a == nullptr || b == nullptr ? a == b : std::memcmp(a, b, sizeof *a) == 0;
}

// A base's bytes for a key. nullopt (no record) differs from empty bytes.
std::optional<std::string_view> BytesAt(QBaseHandle base, const KeyedRecords &records, const RecordKey &key) {
    const auto found = records.find(key);
    return found == records.end() ? std::nullopt : std::optional(BytesOf(base, found->second));
}

class Merger {
  public:
    explicit Merger(const MergeSides &sides)
        : fSides(sides), fOurs(RecordsByKey(sides.ours)), fTheirs(RecordsByKey(sides.theirs)),
          fOnDisk(RecordsByKey(sides.asOnDisk)),
          fMayBeOnDisk(sides.mayBeOnDisk != nullptr ? RecordsByKey(sides.mayBeOnDisk) : KeyedRecords()) {
        fResult.before = sides.before;
    }

    // False if out of memory.
    bool Merge() {
        for (const RecordKey &key : AllKeys()) {
            const auto theirs = BytesAt(fSides.theirs, fTheirs, key);
            if (theirs == BytesAt(fSides.asOnDisk, fOnDisk, key)) {
                continue;
            }
            if (fSides.mayBeOnDisk != nullptr && theirs == BytesAt(fSides.mayBeOnDisk, fMayBeOnDisk, key)) {
                fResult.before[key] = Copy(Find(fSides.theirsHere, fTheirs, key)); // our own word
            } else if (!MergeChanged(key)) {
                return false;
            }
        }
        if (fResult.base != nullptr) {
            RemoveGone();
            SortDrevixBase(fResult.base.get());
            fResult.outside.cameIn = true;
        }
        return true;
    }
    MergeResult Result() { return std::move(fResult); }

  private:
    std::set<RecordKey> AllKeys() const {
        std::set<RecordKey> keys;
        for (const KeyedRecords *records : {&fTheirs, &fOnDisk}) {
            for (const auto &[key, number] : *records) {
                keys.insert(key);
            }
        }
        return keys;
    }

    // Merges a record that the other side has changed.
    bool MergeChanged(const RecordKey &key) {
        const AppPrefs *ours = Find(fSides.ours, fOurs, key);
        const AppPrefs *theirs = Find(fSides.theirsHere, fTheirs, key);
        if (!IsChangedHere(fSides.before, fSides.ours, fOurs, key)) {
            fResult.before.erase(key);
            return Take(key);
        }
        if (AreSame(ours, theirs)) {
            fResult.before.erase(key);
            return true;
        }
        fResult.before[key] = Copy(theirs);
        const AppPrefs &named = ours != nullptr ? *ours : *theirs; // they differ, so at least one exists
        const bool isGlobal = named.application == kGlobalSignature;
        fResult.outside.conflicts.push_back(
            {isGlobal ? std::string() : stringWithPascalString(named.appName.data()), Copy(ours),
             Copy(theirs)});
        return true;
    }

    // Replaces our record by theirs.
    bool Take(const RecordKey &key) {
        const auto bytes = BytesAt(fSides.theirsHere, fTheirs, key);
        if (bytes == BytesAt(fSides.ours, fOurs, key)) {
            return true;
        }
        if (fResult.base == nullptr) {
            fResult.base = CopyBase(fSides.ours);
        }
        if (fResult.base == nullptr) {
            return false;
        }
        QBaseHandle base = fResult.base.get();
        const auto found = fOurs.find(key);
        if (!bytes) {
            fGone.push_back(found->second);
            return true;
        }
        const auto length = static_cast<std::int32_t>(bytes->size());
        const RecordNumber done = found == fOurs.end()
                                      ? QBaseAddRecord(base, bytes->data(), length)
                                      : QBaseReplaceRecord(base, found->second, bytes->data(), length);
        return done != kNoRecord;
    }

    // Last, because a base with marked records allows nothing else.
    void RemoveGone() {
        for (const RecordNumber number : fGone) {
            QBaseMarkRecordForRemoval(fResult.base.get(), number);
        }
        QBaseRemoveMarkedRecords(fResult.base.get());
    }

    const MergeSides &fSides;
    KeyedRecords fOurs;
    KeyedRecords fTheirs;
    KeyedRecords fOnDisk;
    KeyedRecords fMayBeOnDisk;
    std::vector<RecordNumber> fGone;
    MergeResult fResult;
};

std::string_view UserBlock(QBaseHandle base) {
    std::uint32_t size = 0;
    const void *block = QBaseGetUserBlock(base, &size);
    return {static_cast<const char *>(block), size};
}

} // namespace

QBaseOwner CopyBase(QBaseHandle base) {
    QBaseOwner copy = NewDrevixBase();
    const std::string_view block = UserBlock(base);
    const bool isDone =
        copy != nullptr && QBaseDuplicate(base, copy.get()) == noErr &&
        QBaseSetUserBlock(copy.get(), block.data(), static_cast<std::uint32_t>(block.size())) == noErr;
    return isDone ? std::move(copy) : nullptr;
}

bool CopyRecords(const BaseWithKeys &from, const BaseWithKeys &to) {
    for (const auto &[key, number] : from.records) {
        const AppPrefs *record = GetAppPrefs(from.base, number);
        const auto found = to.records.find(key);
        if (record == nullptr) {
            continue;
        }
        const RecordNumber done = found == to.records.end()
                                      ? QBaseAddRecord(to.base, record, sizeof *record)
                                      : QBaseReplaceRecord(to.base, found->second, record, sizeof *record);
        if (done == kNoRecord) {
            return false;
        }
    }
    // Last, because a base with marked records allows nothing else.
    for (const auto &[key, number] : to.records) {
        if (!from.records.contains(key) && GetAppPrefs(to.base, number) != nullptr) {
            QBaseMarkRecordForRemoval(to.base, number);
        }
    }
    QBaseRemoveMarkedRecords(to.base);
    return true;
}

bool IsChangedHere(const RecordsBefore &before, QBaseHandle base, const KeyedRecords &records,
                   const RecordKey &key) {
    const auto found = before.find(key);
    return found != before.end() &&
           !AreSame(Find(base, records, key), found->second ? &*found->second : nullptr);
}

std::optional<MergeResult> MergeRecords(const MergeSides &sides) {
    Merger merger(sides);
    return merger.Merge() ? std::optional(merger.Result()) : std::nullopt;
}

bool TakeUserFields(QBaseHandle theirs, QBaseHandle ours) {
    const std::uint32_t stamp = std::max(QBaseGetUserLong(ours), QBaseGetUserLong(theirs));
    const std::string_view block = UserBlock(theirs);
    if (QBaseSetUserBlock(ours, block.data(), static_cast<std::uint32_t>(block.size())) != noErr) {
        return false;
    }
    std::ignore = QBaseDuplicateUserFields(theirs, ours); // cannot fail: both hold settings
    QBaseSetUserLong(ours, stamp);
    return true;
}

} // namespace drevix
