// A base as one file: header, user block, index, record data. docs/record-base-file.md has the layout byte by
// byte.
#pragma once

#include "platform/files/files.h"
#include "qbase/qbase.h"

namespace drevix {

// Writes the base to a file open for reading and writing, and flushes it. If only one part is requested, the
// file's other part is left alone if the file holds a base of the same type and type version with a user
// block of the same size; else both are written. The sort mode is stored only when both are. Clears the
// change flag of each part written, and always sets the base's `userBlockSize` to the current size. noErr;
// paramErr for a null base, file 0, or a user block above 2^31 - 1 bytes; wrPermErr, with nothing written,
// for a read-only base; else the status of the transfer or flush that failed: the file may then be half
// written, and the change flags of the parts that may be incomplete stay set.
[[nodiscard]] OSErr QBaseWrite(QBaseHandle base, FileRef file, bool writeUserPart, bool writeRecords);

// Reads a file into the base: its user part (which includes the sort mode), its records, or both. Appends the
// records, unless `emptyFirst`; drops bytes after the last one. Unlocks the base. Marks the records changed
// if they were appended, salvaged, or come from a version 1 file. noErr; paramErr for file 0 or a null base;
// eofErr for an empty file unless `emptyFileIsFine`, and for one shorter than a header; -1 for a file of
// another type or type version, of another length than its header says, or with invalid contents; memFullErr,
// also for more than 2^31 - 1 bytes of record data; else the status of the transfer or of the byte-order
// converter. After -1 for invalid contents the base has no records and the file's user part; after any other
// failure it is unchanged, or empty if `emptyFirst`, or without records if its own are invalid. Linear in the
// bytes read; never allocates more than the file's length justifies.
[[nodiscard]] OSErr QBaseRead(QBaseHandle base, FileRef file, bool readUserPart, bool readRecords,
                              bool emptyFileIsFine, bool emptyFirst);
// As QBaseRead; with `allowRecovery` a file of the wrong length is salvaged if its index is complete: its
// records are read in data order, up to the first incomplete one. A file cut off within its very last record
// is refused. *salvaged, if given, gets whether the length was wrong.
[[nodiscard]] OSErr QBaseReadRecover(QBaseHandle base, FileRef file, bool readUserPart, bool readRecords,
                                     bool emptyFileIsFine, bool emptyFirst, bool allowRecovery,
                                     bool *salvaged);
// As QBaseReadRecover; with `rebuildIndex` the file's index is ignored and the new one is in data order.
[[nodiscard]] OSErr QBaseReadRebuild(QBaseHandle base, FileRef file, bool readUserPart, bool readRecords,
                                     bool emptyFileIsFine, bool emptyFirst, bool rebuildIndex,
                                     bool allowRecovery, bool *salvaged);

// Whether the records follow each other within the data and the index lists each exactly once. False for a
// null base, true for one without records; bytes after the last record are allowed. Linear: one walk over the
// records and at most sixteen passes over the index, with one bit of memory per 128 bytes of record data. If
// that memory is missing the result is the same, but takes one pass per 64 KiB of record data.
[[nodiscard]] bool QBaseValidate(QBaseHandle base);

// Swap the byte order of a header's fields, a 32-bit value and a 16-bit value in place.
void QBaseFlipHeader(QBaseFileHeader *header);
void QBFlipInt32(void *value);
void QBFlipInt16(void *value);

// One transfer at the file's current position; `cache` false asks to bypass the system's cache. *count: bytes
// requested on entry, bytes transferred on return.
[[nodiscard]] OSErr QBReadSync(FileRef file, bool cache, std::int32_t *count, void *bytes);
[[nodiscard]] OSErr QBWriteSync(FileRef file, bool cache, std::int32_t *count, const void *bytes);
// Flushes the file to the disk and waits for it.
[[nodiscard]] OSErr QBFlushSync(FileRef file);

} // namespace drevix
