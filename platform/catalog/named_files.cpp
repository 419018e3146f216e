#include "platform/catalog/named_files.h"

#include "platform/base/status.h"
#include "platform/files/disk.h"
#include "platform/files/owners.h"

#include <fcntl.h>
#include <new>

namespace drevix {

OSErr FSpCreate(const FSSpec &spec, OSType /*creator*/, OSType /*fileType*/, std::int16_t /*script*/) try {
    const std::string path = PathFromSpec(spec);
    if (path.empty()) {
        return bdNamErr;
    }
    const DiskDescriptor made(CurrentDisk().Open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, kNewFileMode));
    return made ? noErr : LastError();
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr FSpOpenDF(const FSSpec &spec, Permission permission, FileRef *file) try {
    const std::string path = PathFromSpec(spec);
    return path.empty() ? bdNamErr : OpenFile(path, permission, file);
} catch (const std::bad_alloc &) {
    return memFullErr;
}

OSErr FSpOpenRF(const FSSpec & /*spec*/, Permission /*permission*/, FileRef * /*file*/) {
    return fnfErr;
}

} // namespace drevix
