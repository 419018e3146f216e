// A base as one file: header, user block, index, record data. docs/record-base-file.md has the layout byte by
// byte.
#pragma once

#include "platform/files/files.h"
#include "qbase/qbase.h"

namespace drevix {

// Writes the base to a file open for reading and writing, and flushes it. With one part only, the other part
// of the file stays as it is if the file holds a base of the same type and type version with as long a user
// block; else both are written. The order of the index (the sort mode) is stored when both are. The change
// flag of each part written is cleared. The base's `userBlockSize` is set whatever is written, to the size that
// its user block has now. noErr; paramErr for a null base, file 0, or a user block above 2^31 -
// 1 bytes; wrPermErr, with nothing written, for a read-only base; else the status of the first transfer that
// failed, or of the flush: the file may then be written in part, and the change flags of what is not surely
// whole are still set.
[[nodiscard]] OSErr QBaseWrite(QBaseHandle base, FileRef file, bool writeUserPart, bool writeRecords);

// Reads a file into the base: its user part, which brings the sort mode, its records, or both. Records are
// appended to those that the base has, unless it is emptied first; bytes after the last one are dropped.
// Unlocks the base. The records count as changed when they were appended, salvaged, or come from a version 1
// file. noErr; paramErr for file 0 or a null base; eofErr for an empty file unless that is acceptable, and
// for one shorter than a header; -1 for a file that is not of this base's type and type version, has another
// length than its header says, or whose contents do not validate; else the status of a transfer, of memory
// (memFullErr also for more than 2^31 - 1 bytes of record data), or of a byte-order converter. After -1 for
// contents the base has no records and the file's user part; after any other failure it is as it was, emptied
// first if that was asked for, or without records if those do not validate. Linear in the bytes read; nothing
// is allocated that the file's length does not back.
[[nodiscard]] OSErr QBaseRead(QBaseHandle base, FileRef file, bool readUserPart, bool readRecords,
                              bool emptyFileIsFine, bool emptyFirst);
// As QBaseRead; with `allowRecovery` a file of the wrong length is salvaged if its index is all there: its
// whole records are taken, up to the first that is not, in data order. A file cut in its very last record is
// refused. *salvaged, if given, tells whether the length was wrong.
[[nodiscard]] OSErr QBaseReadRecover(QBaseHandle base, FileRef file, bool readUserPart, bool readRecords,
                                     bool emptyFileIsFine, bool emptyFirst, bool allowRecovery,
                                     bool *salvaged);
// As QBaseReadRecover; with `rebuildIndex` the file's index is not used, and index order becomes data order.
[[nodiscard]] OSErr QBaseReadRebuild(QBaseHandle base, FileRef file, bool readUserPart, bool readRecords,
                                     bool emptyFileIsFine, bool emptyFirst, bool rebuildIndex,
                                     bool allowRecovery, bool *salvaged);

// Whether the records lie inside the data one after the other and the index names each of them once. False
// for a null base, true for one without records; bytes after the last record are allowed. Linear: one walk
// over the records and at most sixteen passes over the index, with one bit of memory for each 128 bytes of
// record data. Without that memory the verdict is the same, with a pass for each 64 KiB of record data.
[[nodiscard]] bool QBaseValidate(QBaseHandle base);

// Reverses the byte order of a header's fields, of a 32-bit value, of a 16-bit value, in place.
void QBaseFlipHeader(QBaseFileHeader *header);
void QBFlipInt32(void *value);
void QBFlipInt16(void *value);

// One transfer at the file's mark; `cache` false asks to bypass the system's cache. *count: in bytes wanted,
// out bytes moved.
[[nodiscard]] OSErr QBReadSync(FileRef file, bool cache, std::int32_t *count, void *bytes);
[[nodiscard]] OSErr QBWriteSync(FileRef file, bool cache, std::int32_t *count, const void *bytes);
// Returns when the file is on the disk.
[[nodiscard]] OSErr QBFlushSync(FileRef file);

} // namespace drevix
