#include "platform/base/status.h"

#include "platform/base/marked_text.h"

#include <algorithm>
#include <cerrno>

namespace drevix {
namespace {

struct ErrnoRow {
    int error;
    OSErr status;
};

constexpr auto kErrnoRows = std::to_array<ErrnoRow>({
    {0, noErr},
    {EPERM, permErr},
    {ENOENT, fnfErr},
    {EBADF, rfNumErr},
    {ENOMEM, memFullErr},
    {EACCES, permErr},
    {ENXIO, notAFileErr}, // opening a socket or a device without a driver
    {EBUSY, fBsyErr},
    {EEXIST, dupFNErr},
    {ENOTDIR, dirNFErr},
    {EISDIR, notAFileErr},
    {EINVAL, paramErr},
    {ENFILE, tmfoErr},
    {EMFILE, tmfoErr},
    {ETXTBSY, fBsyErr},
    {EFBIG, dskFulErr},
    {ENOSPC, dskFulErr},
    {EDQUOT, dskFulErr},
    {EROFS, wPrErr},
    {ENAMETOOLONG, bdNamErr},
    {ELOOP, bdNamErr},
    {EWOULDBLOCK, fBsyErr},
    {ENODEV, nsvErr},
});

struct TextRow {
    OSErr status;
    std::string_view text;
};

constexpr auto kTextRows = std::to_array<TextRow>({
    {noErr, Marked("Engine", "nothing went wrong")},
    {-1, Marked("Engine", "the file is damaged or holds no settings")},
    {dirFulErr, Marked("Engine", "the folder is full")},
    {dskFulErr, Marked("Engine", "the disk is full")},
    {nsvErr, Marked("Engine", "the disk isn't there")},
    {ioErr, Marked("Engine", "the disk reported an error")},
    {bdNamErr, Marked("Engine", "the name cannot be used")},
    {eofErr, Marked("Engine", "the file is incomplete")},
    {posErr, Marked("Engine", "the file is damaged")},
    {tmfoErr, Marked("Engine", "too many files are open")},
    {fnfErr, Marked("Engine", "there is no such file")},
    {wPrErr, Marked("Engine", "the disk is write-protected")},
    {fBsyErr, Marked("Engine", "the file is in use by another program")},
    {dupFNErr, Marked("Engine", "the name is already taken")},
    {paramErr, Marked("Engine", "invalid argument")},
    {rfNumErr, Marked("Engine", "the file is not open")},
    {permErr, Marked("Engine", "you don't have permission")},
    {wrPermErr, Marked("Engine", "the file is not open for writing")},
    {memFullErr, Marked("Engine", "there is not enough memory")},
    {dirNFErr, Marked("Engine", "there is no such folder")},
    {userCanceledErr, Marked("Engine", "it was cancelled")},
    {resNotFound, Marked("Engine", "no settings were found")},
    {addResFailed, Marked("Engine", "a resource could not be added")},
    {mapReadErr, Marked("Engine", "the file beside it that describes it is damaged")},
    {procNotFound, Marked("Engine", "the program isn't running")},
    {notAFileErr, Marked("Engine", "it is a folder, pipe or device, not a file")},
    {gestaltUndefSelectorErr, Marked("Engine", "this system can't do that")},
    {errAECoercionFail, Marked("Engine", "a message holds another kind of data")},
    {errAEDescNotFound, Marked("Engine", "a message holds no data")},
    {errAEEventNotHandled, Marked("Engine", "the program does not understand the message")},
});

} // namespace

OSErr StatusFromErrno(int error) {
    const auto *row = std::ranges::find(kErrnoRows, error, &ErrnoRow::error);
    return row == kErrnoRows.end() ? ioErr : row->status;
}

OSErr LastError() {
    return StatusFromErrno(errno);
}

std::string_view StatusText(OSErr status) {
    const auto *row = std::ranges::find(kTextRows, status, &TextRow::status);
    return row == kTextRows.end() ? Marked("Engine", "an unknown error occurred") : row->text;
}

} // namespace drevix
