// CRC-32 (IEEE 802.3, as in zlib and PNG) and a plain byte sum, over memory and files. Stored settings
// contain StandardCRC32 values, so it must never change.
#pragma once

#include "platform/catalog/named_files.h"
#include "platform/files/files.h"

#include <array>
#include <cstdint>

namespace drevix {

// Entry n is n shifted right eight times, each followed by an XOR with 0xEDB88320 (the reflected generator
// polynomial 0x04C11DB7) if the bit shifted out was 1.
extern const std::array<std::uint32_t, 256> gCrc32table;

// The memory variants update *crc and *sum with `count` bytes. Either may be null and is then not stored. The
// sum is that of the byte values modulo 2^32. Linear; no allocation.

// The finished CRC: start *crc at 0; pass a stored value again to continue.
void StandardCRC32(const void *data, std::uint32_t count, std::uint32_t *crc, std::uint32_t *sum);
// The same with 'A' to 'Z' folded to lower case, for the sum too.
void StdCaseInsensitiveCRC32(const void *data, std::uint32_t count, std::uint32_t *crc, std::uint32_t *sum);
// The raw register: the caller provides the start value and does any inversion.
void CalcCRC32(const void *data, std::uint32_t count, std::uint32_t *crc, std::uint32_t *sum);
void CaseInsensitiveCRC32(const void *data, std::uint32_t count, std::uint32_t *crc, std::uint32_t *sum);

// Called now and then; any result but 0 cancels.
using CrcProgressFunction = std::int16_t (*)();

// Updates *crc (as StandardCRC32) and *sum with an open fork, in chunks of at most 32 KiB. Skips bytes 16 to
// 255 of a resource fork of 16 bytes or more. Calls the callback, if given, whenever `interval` ticks (1/60
// s) have passed since the last call. noErr; the file's status or memFullErr, with both unchanged, if the
// length or a buffer is not available; the transfer's status or userCanceledErr, with both set to 0.
[[nodiscard]] OSErr CalcFileCRC32(FileRef file, bool isResourceFork, std::uint32_t *crc, std::uint32_t *sum,
                                  CrcProgressFunction progress, std::uint32_t interval);
// The same for a file's data fork, resource fork, or both in this order. The resource fork is included even
// if the data fork fails; returns the first failure.
[[nodiscard]] OSErr CalcSpecCRC32(const FSSpec &spec, bool dataFork, bool resourceFork, std::uint32_t *crc,
                                  std::uint32_t *sum, CrcProgressFunction progress, std::uint32_t interval);

} // namespace drevix
