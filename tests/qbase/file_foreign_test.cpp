// Files that another program, in another language, reads and makes.
#include "tests/qbase/file_support.h"

#include <cstdio>

namespace drevix::test {
namespace {

using testing::HasSubstr;

// The output of record_base.py, our other reader and writer.
std::string Python(const std::string &arguments) {
    const std::string command = "/usr/bin/python3 " DREVIX_TEST_DATA "/../qbase/record_base.py " + arguments;
    std::FILE *const pipe = ::popen(command.c_str(), "r");
    std::string output;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
        output += static_cast<char>(c);
    }
    EXPECT_EQ(::pclose(pipe), 0) << command;
    return output;
}

// The lines of `text` whose first word stands among those of `like`'s lines.
std::string LinesAs(const std::string &text, const std::string &like) {
    std::string kept;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::string word = line.substr(0, line.find(' ') + 1);
        kept += ("\n" + like).find("\n" + word) != std::string::npos ? line + "\n" : "";
    }
    return kept;
}

TEST(BaseFile, Written_IsReadAlikeByOurOtherReader) {
    const ScratchFolder folder;
    const QBaseOwner full = FullFileBase();
    const QBaseOwner empty = NewFileBase();
    for (QBaseHandle base : {full.get(), empty.get()}) {
        WriteWhole(folder.Path("base"), FileOf(base));
        const std::string dump = Python("dump " + folder.Path("base"));
        EXPECT_EQ(LinesAs(dump, Contents(base)), Contents(base));
        EXPECT_THAT(dump, HasSubstr("magic 1363301189\ntype 1413829460\nversion 2\ntypeVersion 3\n"));
        EXPECT_THAT(dump, HasSubstr("savedSortMode " + std::to_string(base->sortMode) + "\n"));
    }
}

OSErr Touch(void *bytes, std::int32_t count) {
    return bytes == nullptr || count < 0 ? paramErr : noErr;
}

TEST(BaseFile, FilesOfOurOtherWriter_AreReadWhateverTheirVersionAndOrder) {
    const std::tuple<const char *, QBaseFlipFunction, QBaseFlipFunction, OSErr, bool> rows[] = {
        {"2 little 3,0,6,1 3,1,0,2 68656c6c6f", nullptr, nullptr, noErr, false},
        {"2 little '' '' -", nullptr, nullptr, noErr, false},
        {"2 big 3,0,6,1 3,1,0,2 68656c6c6f", Touch, Touch, noErr, false},
        {"2 big 3,0,6,1 3,1,0,2 -", Touch, Touch, noErr, false},
        {"2 big 3,0,6 2,1,0 6869", Touch, nullptr, noErr, false}, // nobody can convert the user block
        {"2 big 3,0,6,1 3,1,0,2 68656c6c6f", nullptr, Touch, -1, false},
        {"2 big 3,0,6 2,1,0 6869", [](void *, std::int32_t count) { return OSErr(count == 0 ? -7 : 0); },
         Touch, -7, false},
        {"2 big 3,0,6 2,1,0 6869", Touch, [](void *, std::int32_t) { return OSErr{-8}; }, -8, false},
        {"1 little 3,0,6,1 3,1,0,2 -", nullptr, nullptr, noErr, true},
        {"1 big 3,0,6,1 3,1,0,2 -", Touch, nullptr, noErr, true},
        {"1 little '' '' -", nullptr, nullptr, eofErr, false}, // shorter than a header of version 2
    };
    const ScratchFolder folder;
    const std::string path = folder.Path("made");
    for (const auto &[make, recordFlip, userFlip, status, changed] : rows) {
        SCOPED_TRACE(make);
        Python("make " + path + " " + make);
        const bool isRead = status == noErr;
        const QBaseOwner base = isRead ? NewFileBase() : FullFileBase();
        QBaseSetFlipProc(base.get(), recordFlip, userFlip);
        const std::string before = State(base.get());
        const MemoryFile file(ReadWhole(path));
        EXPECT_EQ(QBaseRead(base.get(), file.Ref(), true, true, true, isRead), status);
        if (!isRead) {
            EXPECT_EQ(State(base.get()), before);
            continue;
        }
        std::string dump = Python("dump " + path);
        if (const std::size_t block = dump.find(" 6869\n"); block != dump.npos) {
            dump.replace(block, 5, " -");
        }
        EXPECT_EQ(LinesAs(Contents(base.get()), dump), LinesAs(dump, Contents(base.get())));
        EXPECT_EQ(QBaseGetRecordsChanged(base.get()), changed);
        EXPECT_EQ(QBaseGetSortMode(base.get()), 0);
        const QBaseOwner again = NewFileBase();
        QBaseSetFlipProc(again.get(), recordFlip, userFlip);
        EXPECT_EQ(QBaseRead(again.get(), MemoryFile(FileOf(base.get())).Ref(), true, true, true, true),
                  noErr);
        EXPECT_EQ(Contents(again.get()), Contents(base.get()));
        std::string damaged = file.Bytes();
        for (std::size_t bit = 0; bit < 8 * damaged.size();
             ++bit) { // each read safely, in the other order too
            damaged[bit / 8] ^= static_cast<char>(1 << bit % 8);
            std::ignore = QBaseRead(again.get(), MemoryFile(damaged).Ref(), true, true, true, true);
            EXPECT_TRUE(QBaseValidate(again.get())) << bit;
            damaged[bit / 8] ^= static_cast<char>(1 << bit % 8);
        }
    }
}

} // namespace
} // namespace drevix::test
