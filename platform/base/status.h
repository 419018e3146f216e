// The 16-bit statuses that the whole system reports, under the platform's names, and what each says to a
// person.
#pragma once

#include "platform/base/types.h"

#include <string_view>

namespace drevix {

inline constexpr OSErr noErr = 0;
inline constexpr OSErr dirFulErr = -33;                 // the folder is full
inline constexpr OSErr dskFulErr = -34;                 // the disk is full
inline constexpr OSErr nsvErr = -35;                    // no such volume
inline constexpr OSErr ioErr = -36;                     // a transfer failed
inline constexpr OSErr bdNamErr = -37;                  // the name cannot be used
inline constexpr OSErr eofErr = -39;                    // the file ends before the wanted bytes
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
inline constexpr OSErr memFullErr = -108;               // no memory
inline constexpr OSErr dirNFErr = -120;                 // no such folder
inline constexpr OSErr userCanceledErr = -128;          // the user stopped it
inline constexpr OSErr resNotFound = -192;              // a resource is missing
inline constexpr OSErr addResFailed = -194;             // a resource could not be added
inline constexpr OSErr mapReadErr = -199;               // a resource file is damaged
inline constexpr OSErr procNotFound = -600;             // no such process
inline constexpr OSErr notAFileErr = -1302;             // a folder, pipe or device where a file was wanted
inline constexpr OSErr gestaltUndefSelectorErr = -5551; // the system lacks what is needed
inline constexpr OSErr errAECoercionFail = -1700;       // a parameter is of another type
inline constexpr OSErr errAEDescNotFound = -1701;       // an event has no such parameter
inline constexpr OSErr errAEEventNotHandled = -1708;    // nobody takes this event

// The status for an errno value, 0 for 0 and ioErr for a value without a row of its own.
[[nodiscard]] OSErr StatusFromErrno(int error);
// The same for errno as it is.
[[nodiscard]] OSErr LastError();

// What a status means, as the end of a sentence ("the disk is full"). Never empty. Static storage.
[[nodiscard]] std::string_view StatusText(OSErr status);

} // namespace drevix
