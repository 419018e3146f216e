#include "util/crc32/crc32.h"

#include "platform/base/block.h"
#include "platform/base/clock.h"
#include "platform/base/status.h"
#include "platform/catalog/named_files.h"
#include "platform/files/owners.h"
#include "util/crc32/crc32_kernels.h"

#include <algorithm>

namespace drevix {
namespace {

constexpr std::uint32_t kInverted = 0xFFFFFFFF;
constexpr std::uint32_t kBare = 0;

// XORs the caller's value with `mask` on the way in and out.
void Calculate(const void *data, std::uint32_t count, std::uint32_t *crc, std::uint32_t *sum,
               std::uint32_t mask, LetterCase letters) {
    const CrcState start = {(crc != nullptr ? *crc : 0) ^ mask, sum != nullptr ? *sum : 0};
    const CrcState end = FastestCrcKernel()(start, static_cast<const std::uint8_t *>(data), count, letters);
    if (crc != nullptr) {
        *crc = end.crc ^ mask;
    }
    if (sum != nullptr) {
        *sum = end.sum;
    }
}

constexpr std::int64_t kChunkBytes = 32768;
// A resource fork starts with the offsets and lengths of its parts. Up to the first part at 256 follow bytes
// of the system and the program, which change independently of the resources.
constexpr std::int64_t kResourceHeaderBytes = 16;
constexpr std::int64_t kResourceDataOffset = 256;

// Calls the function if an interval has passed since the last call. A tick difference is correct even when
// the count wraps around.
class Progress {
  public:
    Progress(CrcProgressFunction function, std::uint32_t interval)
        : fFunction(function), fInterval(interval), fLastCall(TickCount()) {}

    [[nodiscard]] OSErr Tell() {
        if (fFunction == nullptr) {
            return noErr;
        }
        const std::uint32_t now = TickCount();
        if (now - fLastCall < fInterval) {
            return noErr;
        }
        fLastCall = now;
        return fFunction() != 0 ? userCanceledErr : noErr;
    }

  private:
    CrcProgressFunction fFunction;
    std::uint32_t fInterval;
    std::uint32_t fLastCall;
};

// One checksum of one fork.
struct ForkSum {
    FileRef file;
    Block buffer;
    std::uint32_t crc;
    std::uint32_t sum;

    [[nodiscard]] OSErr TakeUp(std::int64_t position, std::int64_t wanted) {
        if (const OSErr status = SetFPos(file, fsFromStart, position); status != noErr) {
            return status;
        }
        auto count = static_cast<std::int32_t>(wanted);
        if (const OSErr status = FSRead(file, &count, buffer.Data()); status != noErr) {
            return status;
        }
        StandardCRC32(buffer.Data(), static_cast<std::uint32_t>(count), &crc, &sum);
        return noErr;
    }

    [[nodiscard]] OSErr TakeUpAll(std::int64_t length, bool isResourceFork, Progress progress) {
        std::int64_t position = 0;
        if (isResourceFork && length >= kResourceHeaderBytes) {
            if (const OSErr status = TakeUp(0, kResourceHeaderBytes); status != noErr) {
                return status;
            }
            position = kResourceDataOffset;
        }
        for (; position < length; position += kChunkBytes) {
            OSErr status = TakeUp(position, std::min(kChunkBytes, length - position));
            if (status == noErr) {
                status = progress.Tell();
            }
            if (status != noErr) {
                return status;
            }
        }
        return noErr;
    }
};

using OpenForkFunction = OSErr (*)(const FSSpec &spec, Permission permission, FileRef *file);

OSErr CalcForkCRC32(OpenForkFunction openFork, const FSSpec &spec, bool isResourceFork, std::uint32_t *crc,
                    std::uint32_t *sum, CrcProgressFunction progress, std::uint32_t interval) {
    OwnedFile file;
    const OSErr status = openFork(spec, fsRdPerm, file.Out());
    return status == noErr ? CalcFileCRC32(file.Get(), isResourceFork, crc, sum, progress, interval) : status;
}

} // namespace

void StandardCRC32(const void *data, std::uint32_t count, std::uint32_t *crc, std::uint32_t *sum) {
    Calculate(data, count, crc, sum, kInverted, LetterCase::Counts);
}

void StdCaseInsensitiveCRC32(const void *data, std::uint32_t count, std::uint32_t *crc, std::uint32_t *sum) {
    Calculate(data, count, crc, sum, kInverted, LetterCase::Ignored);
}

void CalcCRC32(const void *data, std::uint32_t count, std::uint32_t *crc, std::uint32_t *sum) {
    Calculate(data, count, crc, sum, kBare, LetterCase::Counts);
}

void CaseInsensitiveCRC32(const void *data, std::uint32_t count, std::uint32_t *crc, std::uint32_t *sum) {
    Calculate(data, count, crc, sum, kBare, LetterCase::Ignored);
}

OSErr CalcFileCRC32(FileRef file, bool isResourceFork, std::uint32_t *crc, std::uint32_t *sum,
                    CrcProgressFunction progress, std::uint32_t interval) {
    const Progress told(progress, interval);
    std::int64_t length = 0;
    if (const OSErr status = GetEOF(file, &length); status != noErr) {
        return status;
    }
    ForkSum fork = {file, {}, crc != nullptr ? *crc : 0, sum != nullptr ? *sum : 0};
    const auto bufferSize = static_cast<std::size_t>(std::min(length, kChunkBytes));
    if (const OSErr status = fork.buffer.Resize(bufferSize); status != noErr) {
        return status;
    }
    const OSErr status = fork.TakeUpAll(length, isResourceFork, told);
    if (crc != nullptr) {
        *crc = status == noErr ? fork.crc : 0;
    }
    if (sum != nullptr) {
        *sum = status == noErr ? fork.sum : 0;
    }
    return status;
}

OSErr CalcSpecCRC32(const FSSpec &spec, bool dataFork, bool resourceFork, std::uint32_t *crc,
                    std::uint32_t *sum, CrcProgressFunction progress, std::uint32_t interval) {
    const OSErr dataStatus =
        dataFork ? CalcForkCRC32(FSpOpenDF, spec, false, crc, sum, progress, interval) : noErr;
    const OSErr resourceStatus =
        resourceFork ? CalcForkCRC32(FSpOpenRF, spec, true, crc, sum, progress, interval) : noErr;
    return dataStatus != noErr ? dataStatus : resourceStatus;
}

} // namespace drevix
