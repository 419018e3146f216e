// Merges two programs' changes to the records of one file. Internal.
#pragma once

#include "document/record_keys.h"
#include "document/settings_document.h"

#include <optional>

namespace drevix {

// A copy of a base including its user block; null for a null base or if out of memory.
[[nodiscard]] QBaseOwner CopyBase(QBaseHandle base);

// Makes the settings records of one base those of another, whatever else that one holds. False, with the other base
// changed in part, if out of memory.
struct BaseWithKeys {
    QBaseHandle base;
    const KeyedRecords &records;
};
[[nodiscard]] bool CopyRecords(const BaseWithKeys &from, const BaseWithKeys &to);

// Records as they were before being edited; nullopt: added since.
using RecordsBefore = std::map<RecordKey, std::optional<AppPrefs>>;

// Whether this side changed the record with that key.
[[nodiscard]] bool IsChangedHere(const RecordsBefore &before, QBaseHandle base, const KeyedRecords &records,
                                 const RecordKey &key);

// The input of a merge.
struct MergeSides {
    QBaseHandle ours;
    const RecordsBefore &before; // of ours
    QBaseHandle asOnDisk;        // the file when it was last read or written
    QBaseHandle mayBeOnDisk;     // what a failed save of ours may have written since; null: none
    QBaseHandle theirs;          // the file now
    QBaseHandle theirsHere;      // the same as this program shows it; same record numbers as `theirs`
};
struct MergeResult {
    QBaseOwner base; // null if no record came in: keep ours
    RecordsBefore before;
    OutsideChanges outside;
};
// Merges by record; the resulting base is sorted. nullopt if out of memory.
[[nodiscard]] std::optional<MergeResult> MergeRecords(const MergeSides &sides);

// Copies user fields and user block, which nothing here changes, from theirs to our base; keeps the higher version stamp.
// False, with our base unchanged, if out of memory.
[[nodiscard]] bool TakeUserFields(QBaseHandle theirs, QBaseHandle ours);

} // namespace drevix
