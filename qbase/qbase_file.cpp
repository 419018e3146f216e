// Transfers at a file's current position and at others.
#include "qbase/qbase_file.h"

#include "platform/base/status.h"
#include "qbase/qbase_file_internal.h"

namespace drevix {
namespace {

using Operation = OSErr (*)(IOParam *);

OSErr TransferAtMark(Operation operation, FileRef file, bool cache, std::int32_t *count, void *bytes) {
    IOParam transfer = {file, bytes, *count, 0, cache ? fsAtMark : noCacheMask, 0};
    const OSErr status = operation(&transfer);
    *count = transfer.ioActCount;
    return status;
}

OSErr TransferAt(Operation operation, FileRef file, std::int64_t place, void *bytes, std::size_t count) {
    IOParam transfer = {file, bytes, static_cast<std::int32_t>(count), 0, fsFromStart | noCacheMask, place};
    return count > 0 ? operation(&transfer) : noErr;
}

} // namespace

OSErr QBReadSync(FileRef file, bool cache, std::int32_t *count, void *bytes) {
    return TransferAtMark(PBReadSync, file, cache, count, bytes);
}

OSErr QBWriteSync(FileRef file, bool cache, std::int32_t *count, const void *bytes) {
    return TransferAtMark(PBWriteSync, file, cache, count, const_cast<void *>(bytes));
}

OSErr QBFlushSync(FileRef file) {
    return PBFlushFileSync(file);
}

OSErr ReadAt(FileRef file, std::int64_t place, void *bytes, std::size_t count) {
    return TransferAt(PBReadSync, file, place, bytes, count);
}

OSErr WriteAt(FileRef file, std::int64_t place, const void *bytes, std::size_t count) {
    return TransferAt(PBWriteSync, file, place, const_cast<void *>(bytes), count);
}

} // namespace drevix
