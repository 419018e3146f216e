#include "platform/base/status.h"

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
    {noErr, "nothing went wrong"},
    {-1, "the file is damaged or holds no settings"},
    {dirFulErr, "the folder is full"},
    {dskFulErr, "the disk is full"},
    {nsvErr, "the disk isn't there"},
    {ioErr, "the disk reported an error"},
    {bdNamErr, "the name cannot be used"},
    {eofErr, "the file is incomplete"},
    {posErr, "the file is damaged"},
    {tmfoErr, "too many files are open"},
    {fnfErr, "there is no such file"},
    {wPrErr, "the disk is write-protected"},
    {fBsyErr, "the file is in use by another program"},
    {dupFNErr, "the name is already taken"},
    {paramErr, "invalid argument"},
    {rfNumErr, "the file is not open"},
    {permErr, "you don't have permission"},
    {wrPermErr, "the file is not open for writing"},
    {memFullErr, "there is not enough memory"},
    {dirNFErr, "there is no such folder"},
    {userCanceledErr, "it was cancelled"},
    {resNotFound, "no settings were found"},
    {addResFailed, "a resource could not be added"},
    {mapReadErr, "the file beside it that describes it is damaged"},
    {procNotFound, "the program isn't running"},
    {notAFileErr, "it is a folder, pipe or device, not a file"},
    {gestaltUndefSelectorErr, "this system can't do that"},
    {errAECoercionFail, "a message holds another kind of data"},
    {errAEDescNotFound, "a message holds no data"},
    {errAEEventNotHandled, "the program does not understand the message"},
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
    return row == kTextRows.end() ? "an unknown error occurred" : row->text;
}

} // namespace drevix
