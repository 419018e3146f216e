// The merge of what two programs did to the records of one file. For the library's own files.
#pragma once

#include "document/record_keys.h"
#include "document/settings_document.h"

#include <optional>

namespace drevix {

// A copy of a base, its user block too; null without memory, or for no base.
[[nodiscard]] QBaseOwner CopyBase(QBaseHandle base);

// Whether both hold the same records, in whatever order.
[[nodiscard]] bool HaveSameRecords(QBaseHandle a, QBaseHandle b);

// Records as they were before they were edited; nothing: added since.
using RecordsBefore = std::map<RecordKey, std::optional<AppPrefs>>;

// Whether this side changed the record with that key.
[[nodiscard]] bool IsChangedHere(const RecordsBefore &before, QBaseHandle base, const KeyedRecords &records,
                                 const RecordKey &key);

// What a merge is made of.
struct MergeSides {
    QBaseHandle ours;
    const RecordsBefore &before; // of ours
    QBaseHandle asOnDisk;        // the file when it was last read or written
    QBaseHandle theirs;          // the file now
    QBaseHandle theirsHere; // the same as a program here shows it; its records have the numbers of `theirs`
};
struct MergeResult {
    QBaseOwner base; // null when no record came in: ours then stands
    RecordsBefore before;
    OutsideChanges outside;
};
// Merges by record. The base that it gives is sorted. Nothing when there is no memory.
[[nodiscard]] std::optional<MergeResult> MergeRecords(const MergeSides &sides);

// Gives our base the user fields and the user block of theirs, but for what was changed here since `asOnDisk`; the
// higher version stamp stays. False, with our base unchanged, without memory.
[[nodiscard]] bool MergeUserFields(const MergeSides &sides);

} // namespace drevix
