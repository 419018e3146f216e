// The system's 16-bit statuses under the platform's names, and a message for each.
#pragma once

#include "platform/base/types.h"

#include <string_view>

namespace drevix {

inline constexpr OSErr noErr = 0;
inline constexpr OSErr dirFulErr = -33;                 // the folder is full
inline constexpr OSErr dskFulErr = -34;                 // the disk is full
inline constexpr OSErr nsvErr = -35;                    // no such volume
inline constexpr OSErr ioErr = -36;                     // a transfer failed
inline constexpr OSErr bdNamErr = -37;                  // invalid name
inline constexpr OSErr eofErr = -39;                    // end of file before the requested bytes
inline constexpr OSErr posErr = -40;                    // a position before the start of the file
inline constexpr OSErr tmfoErr = -42;                   // too many files are open
inline constexpr OSErr fnfErr = -43;                    // no such file
inline constexpr OSErr wPrErr = -44;                    // the disk is write-protected
inline constexpr OSErr fBsyErr = -47;                   // the file is in use
inline constexpr OSErr dupFNErr = -48;                  // the name is taken
inline constexpr OSErr paramErr = -50;                  // invalid argument
inline constexpr OSErr rfNumErr = -51;                  // no open file has this reference
inline constexpr OSErr permErr = -54;                   // the user may not do this
inline constexpr OSErr wrPermErr = -61;                 // the file was not opened for writing
inline constexpr OSErr memFullErr = -108;               // out of memory
inline constexpr OSErr dirNFErr = -120;                 // no such folder
inline constexpr OSErr userCanceledErr = -128;          // canceled by the user
inline constexpr OSErr resNotFound = -192;              // a resource is missing
inline constexpr OSErr addResFailed = -194;             // a resource could not be added
inline constexpr OSErr mapReadErr = -199;               // a resource file is damaged
inline constexpr OSErr procNotFound = -600;             // no such process
inline constexpr OSErr notAFileErr = -1302;             // a folder, pipe or device instead of a file
inline constexpr OSErr gestaltUndefSelectorErr = -5551; // the system lacks a required feature
inline constexpr OSErr errAECoercionFail = -1700;       // a parameter has another type
inline constexpr OSErr errAEDescNotFound = -1701;       // an event has no such parameter
inline constexpr OSErr errAEEventNotHandled = -1708;    // no handler for this event

// The status for an errno value; 0 for 0, ioErr for an unlisted value.
[[nodiscard]] OSErr StatusFromErrno(int error);
// The same for the current errno.
[[nodiscard]] OSErr LastError();

// The meaning of a status, as the end of a sentence ("the disk is full"). Never empty. Static storage.
[[nodiscard]] std::string_view StatusText(OSErr status);

} // namespace drevix
