// Finds damage in the bytes of a record base's file. docs/record-base-file.md has the format.
#pragma once

#include "platform/base/types.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace drevix {

// The kinds of damage, each with the numbers it reports. Records are numbered in data order, index entries in
// index order, both from 0.
enum class QBaseFileProblem : std::uint8_t {
    Empty,          // no damage: reads as a base without records
    NoHeader,       // the file's size in bytes
    OtherByteOrder, // written in the other byte order
    OtherKind,      // not a record base
    UnknownVersion, // the format's version
    OtherRecords,   // the type, its version
    NegativeCount,
    WrongLength,  // records announced, resulting size, actual size in bytes
    IndexOutside, // an entry that points outside the record data
    IndexTwice,   // two entries that point to the same record
    DataEnd,      // the records found, the records announced
    BadSize,      // a record, its offset, its size
    BadLength,    // a record, its offset
    NotInIndex,   // a record, its offset; or it is damaged
};

struct QBaseFileFinding {
    QBaseFileProblem problem;
    std::array<std::uint64_t, 3> numbers{}; // as listed at the problem, else 0
};

struct QBaseFileFindings {
    std::int32_t announced = 0; // records, by the header; 0 if it could not be read
    bool isSound = false;       // no damage; `records` then has all records
    std::vector<QBaseFileFinding> problems;
    std::vector<std::string_view> records; // data before the first damaged one; they point into the bytes
};

// Checks the bytes of a file that should hold records of this type. May throw std::bad_alloc.
[[nodiscard]] QBaseFileFindings CheckQBaseFile(std::string_view bytes, OSType type,
                                               std::uint16_t typeVersion);

} // namespace drevix
