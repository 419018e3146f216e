// CRC-32 of IEEE 802.3 (the one of zlib and PNG), with a plain sum of the bytes, over memory and over files.
// Stored settings hold values of StandardCRC32, so it can never be another.
#pragma once

#include "platform/catalog/named_files.h"
#include "platform/files/files.h"

#include <array>
#include <cstdint>

namespace drevix {

// Entry n is n after eight shifts to the right, each followed by an exclusive or with 0xEDB88320 (the
// reflected generator polynomial 0x04C11DB7) when the bit shifted out was 1.
extern const std::array<std::uint32_t, 256> gCrc32table;

// The memory variants take up `count` bytes into *crc and *sum; either may be null and then starts at its
// neutral value and is not stored. The sum is that of the byte values modulo 2^32. Linear; nothing is
// allocated.

// The finished CRC: *crc starts at 0, and the value stored can be passed in again to go on.
void StandardCRC32(const void *data, std::uint32_t count, std::uint32_t *crc, std::uint32_t *sum);
// The same with 'A' to 'Z' counted as 'a' to 'z', in the sum too.
void StdCaseInsensitiveCRC32(const void *data, std::uint32_t count, std::uint32_t *crc, std::uint32_t *sum);
// The bare register: the caller gives its start value and does any inversion.
void CalcCRC32(const void *data, std::uint32_t count, std::uint32_t *crc, std::uint32_t *sum);
void CaseInsensitiveCRC32(const void *data, std::uint32_t count, std::uint32_t *crc, std::uint32_t *sum);

// Asked now and then; anything but 0 cancels.
using CrcProgressFunction = std::int16_t (*)();

// Takes up an open fork, in chunks of at most 32 KiB, into *crc as StandardCRC32 does, and *sum. Of a
// resource fork of 16 bytes or more, the bytes 16 to 255 are left out. The callback, if given, is called when
// `interval` ticks (1/60 s) have passed since the last call. noErr; the file's status or memFullErr with both
// untouched when the length or a buffer cannot be had; the transfer's status, or userCanceledErr, with both
// set to 0.
[[nodiscard]] OSErr CalcFileCRC32(FileRef file, bool isResourceFork, std::uint32_t *crc, std::uint32_t *sum,
                                  CrcProgressFunction progress, std::uint32_t interval);
// The same for the data fork, the resource fork, or both in this order, of a file. The resource fork is taken
// up even when the data fork failed; the first failure is the status.
[[nodiscard]] OSErr CalcSpecCRC32(const FSSpec &spec, bool dataFork, bool resourceFork, std::uint32_t *crc,
                                  std::uint32_t *sum, CrcProgressFunction progress, std::uint32_t interval);

} // namespace drevix
