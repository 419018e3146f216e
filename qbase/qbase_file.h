// A base as one file: header, user block, index, record data. docs/record-base-file.md has the layout byte by
// byte.
#pragma once

#include "platform/files.h"
#include "qbase/qbase.h"

namespace drevix {

// Writes the base to a file open for reading and writing. With one part only, the other part of the file
// stays as it is if the file is this base's and its user block has the same size; else both are written. The
// change flag of each part written is cleared. noErr; paramErr for a null base or file 0; wrPermErr, with
// nothing written, for a read-only base; else the transfer's status, with the change flags of what is not
// whole still set.
[[nodiscard]] OSErr QBaseWrite(QBaseHandle base, FileRef file, bool writeUserPart, bool writeRecords);

// Reads a file into the base: its user part, its records, or both. Records are appended to those that the
// base has, unless it is emptied first. noErr; paramErr for file 0 or a null base; eofErr for an empty file
// unless that is acceptable; -1 for a file that is not of this base's type and type version, has another
// length than its header says, or whose contents do not validate; else the status of a transfer, of memory,
// or of a byte-order converter. After a failure the base holds the records that it held before, or none if
// those do not validate. Linear in the bytes read; nothing is allocated that the file's length does not back.
[[nodiscard]] OSErr QBaseRead(QBaseHandle base, FileRef file, bool readUserPart, bool readRecords,
                              bool emptyFileIsFine, bool emptyFirst);
// As QBaseRead; with `allowRecovery` a file of the wrong length is salvaged: its whole records are taken, up
// to the first that is not. *salvaged, if given, tells whether that was needed.
[[nodiscard]] OSErr QBaseReadRecover(QBaseHandle base, FileRef file, bool readUserPart, bool readRecords,
                                     bool emptyFileIsFine, bool emptyFirst, bool allowRecovery,
                                     bool *salvaged);
// As QBaseReadRecover; with `rebuildIndex` the file's index is not used, and index order becomes data order.
[[nodiscard]] OSErr QBaseReadRebuild(QBaseHandle base, FileRef file, bool readUserPart, bool readRecords,
                                     bool emptyFileIsFine, bool emptyFirst, bool rebuildIndex,
                                     bool allowRecovery, bool *salvaged);

// Whether the records lie inside the data one after the other and the index names each of them once. False
// for a null base. Linear in the record data, with one bit of memory for each two bytes of it; without that
// memory, n log n and in place.
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
