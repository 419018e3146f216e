// Bases for the tests of their files, and what they hold as text.
#pragma once

#include "qbase/qbase_exchange.h"
#include "qbase/qbase_file.h"
#include "tests/qbase/memory_file.h"

namespace drevix::test {

inline constexpr OSType kFileTestType = FourCharCode("TEST");
inline constexpr std::uint16_t kFileTestVersion = 3;

inline QBaseOwner NewFileBase() {
    return QBaseOwner(QBaseNew(kFileTestType, kFileTestVersion, 4));
}

// Adds records of these lengths; byte j of record i is (7 i + j) mod 256, its flags are i.
inline void AddMadeRecords(QBaseHandle base, std::initializer_list<int> lengths) {
    for (const int length : lengths) {
        const RecordNumber number = QBaseCountRecords(base);
        std::string data(static_cast<std::size_t>(length), '\0');
        for (std::size_t j = 0; j < data.size(); ++j) {
            data[j] = static_cast<char>(7 * static_cast<std::size_t>(number) + j);
        }
        ASSERT_EQ(QBaseAddRecord(base, data.data(), length), number);
        QBaseSetRecordFlags(base, number, static_cast<std::uint16_t>(number));
    }
}

inline std::string DataOf(QBaseHandle base, RecordNumber number) {
    std::int32_t length = 0;
    const void *const data = QBaseGetRecord(base, number, &length);
    EXPECT_NE(data, nullptr);
    return {static_cast<const char *>(data), static_cast<std::size_t>(length)};
}

// Records 1, 2, 0 in index order, user fields, a user block of five bytes, sort mode 128.
inline QBaseOwner FullFileBase() {
    QBaseOwner base = NewFileBase();
    AddMadeRecords(base.get(), {3, 0, 6});
    EXPECT_EQ(QBaseMoveIndexes(
                  base.get(), 3,
                  [](const void *, std::int32_t length, std::int16_t) { return std::int32_t{length == 3}; }),
              noErr);
    QBaseSetSortMode(base.get(), 128);
    QBaseSetUserLong(base.get(), 0x01020304);
    QBaseSetUserData(base.get(), 0x11121314);
    QBaseSetUserFlags(base.get(), 0x21222324);
    QBaseSetUserWord(base.get(), 0x3132);
    QBaseSetUserMode(base.get(), 0x4142);
    QBaseSetUserRect(base.get(), {-1, 2, -3, 4});
    EXPECT_EQ(QBaseSetUserBlock(base.get(), "block", 5), noErr);
    return base;
}

inline std::string HexOrDash(const void *bytes, std::size_t size) {
    std::string digits;
    for (std::size_t i = 0; i < size; ++i) {
        const unsigned byte = static_cast<const unsigned char *>(bytes)[i];
        digits += "0123456789abcdef"[byte >> 4];
        digits += "0123456789abcdef"[byte & 15];
    }
    return digits.empty() ? "-" : digits;
}

// The bytes of the worked example of a page of docs/: the digits before the bars.
inline std::string PublishedExample(const std::string &name) {
    std::istringstream lines(FencedBlock(std::string(DREVIX_TEST_DATA) + "/../../docs/" + name, "hex"));
    std::string digits;
    for (std::string line; std::getline(lines, line);) {
        digits += line.substr(0, line.find('|'));
    }
    return FromHex(digits);
}

// The user fields, the user block and the records of a base, in the words of record_base.py.
inline std::string Contents(QBaseHandle base) {
    const QBaseFileHeader &file = base->file;
    std::ostringstream text;
    text << "userLong " << file.userLong << "\nuserData " << file.userData << "\nuserFlags " << file.userFlags
         << "\nuserWord " << file.userWord << "\nuserMode " << file.userMode << "\ntop " << file.userRect.top
         << "\nleft " << file.userRect.left << "\nbottom " << file.userRect.bottom << "\nright "
         << file.userRect.right << "\n";
    text << "userBlock " << HexOrDash(base->userBlock.Data(), base->userBlock.Size()) << "\n";
    for (RecordNumber i = 0; i < QBaseCountRecords(base); ++i) {
        std::int32_t length = 0;
        auto *const data = static_cast<std::byte *>(QBaseGetRecord(base, i, &length));
        text << "record " << data - base->records.Data() - 10 << " " << length << " "
             << QBaseGetRecordFlags(base, i) << " " << HexOrDash(data, static_cast<std::size_t>(length))
             << "\n";
    }
    return text.str();
}

// Contents and the state beside them.
inline std::string State(QBaseHandle base) {
    std::ostringstream text;
    text << Contents(base) << "mode " << base->sortMode << " changed " << base->recordsChanged
         << base->userFieldsChanged << " size " << base->records.Size();
    return text.str();
}

using ExchangeOwner = std::unique_ptr<Block, void (*)(Block *)>;

inline std::int32_t SelectAll(const void * /*data*/, std::int32_t /*length*/, std::int16_t /*flags*/) {
    return 1;
}

inline ExchangeOwner Take(QBaseHandle base, QBaseSelectFunction select = SelectAll) {
    return {QBaseGetExchange(base, select), QBaseDisposeExchange};
}

inline std::string FileOf(QBaseHandle base) {
    const MemoryFile file;
    EXPECT_EQ(QBaseWrite(base, file.Ref(), true, true), noErr);
    return file.Bytes();
}

} // namespace drevix::test
