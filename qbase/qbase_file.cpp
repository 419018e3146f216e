// Transfers at a file's mark.
#include "qbase/qbase_file.h"

#include "platform/status.h"
#include "qbase/qbase_file_internal.h"

namespace drevix {
namespace {

OSErr Transfer(OSErr (*operation)(IOParam *), FileRef file, bool cache, std::int32_t *count, void *bytes) {
    IOParam transfer = {};
    transfer.ioRefNum = file;
    transfer.ioBuffer = bytes;
    transfer.ioReqCount = *count;
    transfer.ioPosMode = cache ? fsAtMark : noCacheMask;
    const OSErr status = operation(&transfer);
    *count = transfer.ioActCount;
    return status;
}

} // namespace

OSErr QBReadSync(FileRef file, bool cache, std::int32_t *count, void *bytes) {
    return Transfer(PBReadSync, file, cache, count, bytes);
}

OSErr QBWriteSync(FileRef file, bool cache, std::int32_t *count, const void *bytes) {
    return Transfer(PBWriteSync, file, cache, count, const_cast<void *>(bytes));
}

OSErr QBFlushSync(FileRef file) {
    return PBFlushFileSync(file);
}

OSErr ReadAtMark(FileRef file, void *bytes, std::size_t count) {
    auto wanted = static_cast<std::int32_t>(count);
    return count > 0 ? QBReadSync(file, false, &wanted, bytes) : noErr;
}

OSErr WriteAtMark(FileRef file, const void *bytes, std::size_t count) {
    auto wanted = static_cast<std::int32_t>(count);
    return count > 0 ? QBWriteSync(file, false, &wanted, bytes) : noErr;
}

} // namespace drevix
