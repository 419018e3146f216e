// What is wrong with the bytes of a record base's file. docs/record-base-file.md has the format.
#pragma once

#include "platform/base/types.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace drevix {

// Records are numbered in the order of the data, entries in that of the index, both from 0.
enum class QBaseFileProblem : std::uint8_t {
    Empty,          // no damage: a base without records is read
    NoHeader,       // numbers: the file's bytes
    OtherByteOrder, // written on a machine of the other byte order
    OtherKind,      // no record base
    UnknownVersion, // the format's version
    OtherRecords,   // the type, its version
    NegativeCount,
    WrongLength,  // the records announced, the bytes that makes, the file's bytes
    IndexOutside, // an entry that leads outside the record data
    IndexTwice,   // two entries that lead to one record
    DataEnd,      // the records found, the records announced
    BadSize,      // a record, its offset, its size
    BadLength,    // a record, its offset
    NotInIndex,   // a record, its offset; or it is damaged
};

struct QBaseFileFinding {
    QBaseFileProblem problem;
    std::array<std::uint64_t, 3> numbers{}; // as the problem says, else 0
};

struct QBaseFileFindings {
    std::int32_t announced = 0; // records, by the header; 0 when it is not read
    bool isSound = false;       // everything fits; `records` then has all records
    std::vector<QBaseFileFinding> problems;
    std::vector<std::string_view> records; // data of those before the first damaged one, parts of the bytes
};

// Looks through the bytes of a file that should hold records of a type. May throw std::bad_alloc.
[[nodiscard]] QBaseFileFindings CheckQBaseFile(std::string_view bytes, OSType type,
                                               std::uint16_t typeVersion);

} // namespace drevix
