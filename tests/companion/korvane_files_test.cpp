#include "companion/korvane_crc.h"
#include "companion/korvane_files.h"
#include "platform/files.h"
#include "platform/xml_document.h"
#include "settings/device_prefs.h"
#include "settings/pascal_strings.h"
#include "tests/companion/companion_folder.h"
#include "tests/support/faults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>

namespace drevix {
namespace {

using test::CompanionFolder;
using test::HotKeyFile;
using test::Rows;
using testing::ElementsAre;

Str63 Name(std::string_view text) {
    Str63 name{};
    getPascalString(text, name.data(), kMaxFileNameLength);
    return name;
}

TEST(KorvaneFiles, Applications_AreSelectedByNameOrCreator) {
    struct Row {
        const char *creator;
        const char *name; // null: none
        int index;
    };
    for (const Row &row : std::initializer_list<Row>{
             {"\0\0\0\0", nullptr, 0},
             {"\0\0\0\0", "Anything", 0},
             {"8ELE", nullptr, 4},
             {"8ELE", "Adobe Photoshop CS2", 1}, // the first row that fits
             {"8BIM", "Adobe Photoshop CS2", 1},
             {"8BIM", "Adobe Photoshop CS2.app", -1},
             {"8BIM", nullptr, -1},
             {"XXXX", "adobe illustrator cs2", 2},
             {"\xFF\xFF\xFF\xFF", nullptr, -1},
         }) {
        OSType creator = 0;
        for (int i = 0; i < 4; ++i) {
            creator = (creator << 8) | static_cast<unsigned char>(row.creator[i]);
        }
        const Str63 name = Name(row.name == nullptr ? "" : row.name);
        const ConstStringPtr given = row.name == nullptr ? nullptr : name.data();
        EXPECT_EQ(FindKorvaneIndex(creator, given), row.index) << row.index;
        EXPECT_EQ(FindKorvaneName(creator, given).value_or("none"),
                  row.index < 0 ? "none" : kKorvaneApps[static_cast<std::size_t>(row.index)].folder);
    }
    const CompanionFolder folder;
    EXPECT_EQ(FindKorvaneFileForApp("Photoshop"), folder.File(1));
}

TEST(KorvaneFiles, Names_AreComparedWithoutTheSuffix) {
    struct Row {
        const char *a, *b;
        int result;
    };
    for (const Row &row : std::initializer_list<Row>{
             {"Adobe Photoshop CS2.app", "adobe photoshop cs2", 0},
             {"a.APP", "a", 4},
             {".app", "", 4}, // nothing in front
             {"x.app.app", "x", 4},
             {"Ab", "aC", 'b' - 'c'},
             {"ab", "abc.app", -1},
             {"\u00C4", "\u00E4", 0x80 - 0x8A}, // accented letters count as they are
         }) {
        EXPECT_EQ(KorvanePStrCmpNoApp(Name(row.a).data(), Name(row.b).data()), row.result) << row.a;
        EXPECT_EQ(KorvanePStrCmpNoApp(Name(row.b).data(), Name(row.a).data()), -row.result) << row.b;
    }
}

TEST(KorvaneFiles, Records_AreFoundByNameElseByCreator) {
    const QBaseOwner base = NewDrevixBase();
    const std::string shortRecord(10, '\0');
    ASSERT_EQ(QBaseAddRecord(base.get(), shortRecord.data(), 10), 0); // is passed over
    for (const auto &[creator, name] : {std::pair{FourCharCode("8BIM"), "Adobe Photoshop CS"},
                                        {FourCharCode("????"), "adobe photoshop CS2.app"},
                                        {FourCharCode("8BIM"), "Adobe Photoshop CS2"},
                                        {kGlobalSignature, ""}}) {
        AppPrefs prefs = gDefaultGlobalPrefs;
        prefs.application = creator;
        prefs.appFileName = Name(name);
        ASSERT_NE(QBaseAddRecord(base.get(), &prefs, sizeof prefs), kNoRecord);
    }
    const Str63 empty{};
    const auto record = [&](RecordNumber number) { return QBaseGetRecord(base.get(), number); };
    EXPECT_EQ(KorvaneFindAppPrefs(base.get(), FourCharCode("8BIM"), kPhotoshopName.data()), record(2));
    EXPECT_EQ(KorvaneFindAppPrefs(base.get(), FourCharCode("8BIM"), nullptr), record(1));
    EXPECT_EQ(KorvaneFindAppPrefs(base.get(), kGlobalSignature, empty.data()), record(4));
    EXPECT_EQ(KorvaneFindAppPrefs(base.get(), FourCharCode("8ELE"), nullptr), nullptr);
    EXPECT_EQ(KorvaneFindAppPrefs(base.get(), kGlobalSignature, kInDesignName.data()), nullptr);
}

std::string Utf16(std::string_view ascii, bool isBigEndian) {
    std::string bytes;
    for (const char c : ascii) {
        bytes.append(isBigEndian ? 1 : 0, '\0').append(1, c).append(isBigEndian ? 0 : 1, '\0');
    }
    return bytes;
}

struct FileRow {
    const char *what;
    std::string bytes;
    std::vector<std::string> rows; // as Rows gives them
};

const std::string kHead = "<HotKeys TargetApp='A'>";
const std::string kOne = "<HotKey><Menu>One</Menu></HotKey>";

// Every hotkey is found, and what might be less than the file holds is marked as partial.
TEST(KorvaneFiles, Load_FindsEveryHotKeyOrSaysThatItDoesNot) {
    const CompanionFolder folder;
    const std::vector<std::string> one = {"One||||"};
    const std::vector<std::string> nothing = {"nothing"};
    const std::vector<std::string> onePartial = {"One||||", "partial"};
    const std::string wide = "<?xml version='1.0' encoding='UTF-16'?>" + kHead + kOne;
    for (const FileRow &row : std::initializer_list<FileRow>{
             {"five values",
              kHead + "<HotKey><VirtualKey>4</VirtualKey><Menu>M</Menu><Modifier>x</Modifier>"
                      "<Device>pyralis</Device><Key>1</Key></HotKey></HotKeys>",
              {"M|1|pyralis|x|4"}},
             {"comment first", kHead + "<!-- a --> text " + kOne + "</HotKeys>", one},
             {"others between", kHead + "<Other><HotKey/></Other>" + kOne + "<hotkey/></HotKeys>", one},
             {"first child counts",
              kHead + "<HotKey><x>no</x><Menu>One</Menu><Menu>Two</Menu></HotKey></HotKeys>", one},
             {"CDATA, references, parts",
              kHead + "<HotKey><Menu><![CDATA[O]]>&#110;<i>&#x65;</i></Menu></HotKey></HotKeys>", one},
             {"white space", kHead + "<HotKey><Menu> a\n\tb </Menu></HotKey></HotKeys>", {" a\n\tb ||||"}},
             {"name space",
              "<k:HotKeys xmlns:k='urn:k' k:TargetApp='A'><k:HotKey><k:Menu>One</k:Menu></k:HotKey>"
              "</k:HotKeys>",
              one},
             {"document type",
              "<!DOCTYPE HotKeys SYSTEM 'http://localhost:9/x'>" + kHead + kOne + "</HotKeys>", one},
             {"Latin-1",
              "<?xml version='1.0' encoding='ISO-8859-1'?>" + kHead +
                  "<HotKey><Menu>\xE4</Menu></HotKey></HotKeys>",
              {"\u00E4||||"}},
             {"Mac OS Roman",
              "<?xml version='1.0' encoding=\"macintosh\"?>" + kHead +
                  "<HotKey><Menu>\x8A\xDB</Menu></HotKey></HotKeys>",
              {"\u00E4\u20AC||||"}},
             {"mark", "\xEF\xBB\xBF" + kHead + kOne + "</HotKeys>", one},
             {"UTF-16", "\xFF\xFE" + Utf16(wide + "</HotKeys>", false), one},
             {"UTF-16, big-endian", "\xFE\xFF" + Utf16(wide + "</HotKeys>", true), one},
             {"UTF-16 without a mark", Utf16(wide + "</HotKeys>", false), one},
             {"UTF-16, cut", "\xFF\xFE" + Utf16(wide + "<HotKey>", false), {"One||||", "||||", "partial"}},
             // Nothing comes of these.
             {"empty", "", nothing},
             {"other root", "<HotKey TargetApp='A'>" + kOne + "</HotKey>", nothing},
             {"empty target", "<HotKeys TargetApp=''>" + kOne + "</HotKeys>", nothing},
             {"entity",
              "<!DOCTYPE a [<!ENTITY e 'One'>]>" + kHead + "<HotKey><Menu>&e;</Menu></HotKey></HotKeys>",
              nothing},
             // Not well-formed, and all there.
             {"bare marks",
              kHead + "<HotKey><Menu>a & b < c &foo; &#0; d</Menu></HotKey></HotKeys>",
              {"a & b < c &foo; &#0; d||||"}},
             {"control character",
              kHead + "<HotKey><Menu>a\x01z</Menu></HotKey></HotKeys>",
              {"a\uFFFDz||||"}},
             {"not UTF-8",
              kHead + "<HotKey><Menu>\x8A \u00E4</Menu></HotKey></HotKeys>",
              {"\u00E4 \u00E4||||"}},
             // Not well-formed, and perhaps not all there.
             {"cut at a hotkey", kHead + kOne, onePartial},
             {"cut in a hotkey", kHead + kOne + "<HotKey><Me", {"One||||", "||||", "partial"}},
             {"lost end tag", kHead + "<HotKey><Menu>One</HotKey>" + kOne + "</HotKeys>", onePartial},
             {"old end behind", kHead + kOne + "</HotKeys>" + kOne + "</HotKeys>", onePartial},
             {"comment without end", kHead + kOne + "<!-- " + kOne + "</HotKeys>", {"One||||", "One||||"}},
         }) {
        folder.Write(1, row.bytes);
        EXPECT_EQ(Rows(LoadKorvaneFileForApp("Photoshop")), row.rows) << row.what;
        EXPECT_EQ(OpenFileCount(), 0);
    }
    EXPECT_EQ(Rows(LoadKorvaneFileForApp("Illustrator")), nothing);
    ASSERT_EQ(::mkfifo(folder.File(2).c_str(), 0600), 0); // is not waited for
    EXPECT_EQ(Rows(LoadKorvaneFileForApp("Illustrator")), nothing);
}

std::string Repeated(std::string_view text, std::size_t times) {
    std::string result;
    for (std::size_t i = 0; i < times; ++i) {
        result += text;
    }
    return result;
}

std::size_t PeakMemory() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line) && !line.starts_with("VmHWM:")) {
    }
    return std::strtoull(line.c_str() + 6, nullptr, 10) << 10;
}

// Whatever a file holds is refused, or read, in bounded time and memory.
TEST(KorvaneFiles, Load_IsBounded) {
    const CompanionFolder folder;
    std::string bomb = "<!DOCTYPE a [<!ENTITY a0 'aaaaaaaaaa'>";
    for (int i = 1; i < 30; ++i) {
        const std::string before = "&a" + std::to_string(i - 1) + ";";
        bomb += "<!ENTITY a" + std::to_string(i) + " '" + Repeated(before, 10) + "'>";
    }
    bomb += "]>" + kHead + "<HotKey><Menu>&a29;</Menu></HotKey></HotKeys>";
    std::string attributes = kHead + "<HotKey";
    for (int i = 0; i < 1'000'000; ++i) {
        attributes += " a" + std::to_string(i) + "='>'";
    }
    const std::string secret = folder.Path("secret");
    test::WriteWhole(secret, "secret");
    struct Row {
        const char *what;
        std::string bytes;
        std::size_t hotKeys; // read; 0 for nothing
    };
    const Row rows[] = {
        {"entity bomb", bomb, 0},
        {"external entity",
         "<!DOCTYPE a [<!ENTITY e SYSTEM 'file://" + secret + "'>]>" + kHead + kOne + "&e;</HotKeys>", 0},
        {"parameter entity", "<!DOCTYPE a [<!ENTITY % e SYSTEM 'file://" + secret + "'> %e;]>" + kHead + kOne,
         0},
        {"a million hotkeys", kHead + Repeated("<HotKey/>", 1'000'000) + "</HotKeys>", 0},
        {"a million hotkeys, cut", kHead + Repeated("<HotKey>", 1'000'000), 0},
        {"long text", kHead + "<HotKey><Menu>" + std::string(15 << 20, 'x') + "</Menu></HotKey></HotKeys>",
         1},
        {"longer text", kHead + "<HotKey><Menu>" + std::string(100 << 20, 'x') + "</Menu></HotKey></HotKeys>",
         0},
        {"deep", kHead + Repeated("<a>", 100'000) + Repeated("</a>", 100'000) + "</HotKeys>", 0},
        {"attributes", attributes + "/></HotKeys>", 0},
        {"errors", kHead + Repeated("<a<", 1'000'000), 0},
        {"signs", kHead + "<HotKey><Menu>" + Repeated("& <", 500'000) + "</Menu></HotKey></HotKeys>", 1},
        {"controls", kHead + std::string(4 << 20, '\x01'), 0},
    };
    const std::size_t before = PeakMemory();
    for (const Row &row : rows) {
        folder.Write(0, row.bytes);
        const std::clock_t start = std::clock(); // of this process, however busy the machine is
        const auto list = LoadKorvaneFileForApp("_System_");
        const double took = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        EXPECT_EQ(list ? list->HotKeys.size() : 0, row.hotKeys) << row.what;
        EXPECT_LT(took, 30) << row.what; // measured: 0.5 s at most, but for sanitizers and debugging
        EXPECT_THAT(Rows(list), testing::Each(testing::Not(testing::HasSubstr("secret"))));
    }
    EXPECT_LT(PeakMemory() - before, std::size_t{600} << 20);
}

TEST(KorvaneFiles, Save_WritesWhatOtherReadersRead) {
    const CompanionFolder folder;
    KorvaneHotKeyList list;
    list.TargetApp = "A & \"B\"\t<c>\u00E4";
    for (const char *menu :
         {"Plain", "a & b < c > \"d\" 'e' ]]>", "  two\tblanks  ", "\u30D6\U0001F58C", ""}) {
        KorvaneHotKey hotKey;
        hotKey.Set(KorvaneKey::Menu, std::string(menu));
        hotKey.Set(KorvaneKey::Key, 3);
        hotKey.Set(KorvaneKey::Device, std::string(kKorvaneDevice));
        hotKey.Set(KorvaneKey::VirtualKey, 8);
        list.HotKeys.push_back(hotKey);
    }
    ASSERT_TRUE(SaveKorvanePrefsForApp(list, "InDesign"));
    const auto loaded = LoadKorvaneFileForApp("InDesign");
    EXPECT_EQ(Rows(loaded), Rows(list));
    EXPECT_EQ(loaded->TargetApp, list.TargetApp);
    const std::string written = test::ReadWhole(folder.File(3));
    ASSERT_TRUE(SaveKorvanePrefsForApp(*loaded, "InDesign")); // and stays like this
    EXPECT_EQ(test::ReadWhole(folder.File(3)), written);
    const std::string shown = test::Peer("show '" + folder.File(3) + "'").Rest();
    for (const KorvaneHotKey &hotKey : list.HotKeys) {
        const std::string menu = hotKey.Text(KorvaneKey::Menu);
        EXPECT_THAT(shown, testing::HasSubstr("\n" + menu + "|3|pyralis||8|" +
                                              std::to_string(KorvaneStringCRC(menu)) + "\n"));
    }
    EXPECT_TRUE(shown.starts_with(list.TargetApp + "\n")) << shown;

    list.HotKeys.clear();
    EXPECT_FALSE(SaveKorvanePrefsForApp(list, "InDesign"));
    EXPECT_FALSE(SaveKorvanePrefs(*loaded, folder.Path("none/~hotkeys")));
    EXPECT_FALSE(std::filesystem::exists(folder.Path("none")));
    EXPECT_EQ(test::ReadWhole(folder.File(3)), written);
}

// The page on the format shows what is written.
TEST(KorvaneFiles, Example_OfThePageIsWhatIsWritten) {
    KorvaneHotKeyList list;
    list.TargetApp = "Adobe Photoshop";
    list.HotKeys.resize(3);
    list.HotKeys[0].Set(KorvaneKey::Menu, std::string("Gaussian Blur\u2026"));
    list.HotKeys[0].Set(KorvaneKey::Key, 2);
    list.HotKeys[0].Set(KorvaneKey::Device, std::string(kKorvaneDevice));
    list.HotKeys[0].Set(KorvaneKey::VirtualKey, 16);
    list.HotKeys[1].Set(KorvaneKey::Menu, std::string("Cut & Paste"));
    list.HotKeys[2].Set(KorvaneKey::Menu, std::string("Save for Web"));
    list.HotKeys[2].Set(KorvaneKey::Key, std::string("5"));
    list.HotKeys[2].Set(KorvaneKey::Device, std::string("tarnix"));
    list.HotKeys[2].Set(KorvaneKey::Modifier, std::string("512"));
    list.HotKeys[2].Set(KorvaneKey::VirtualKey, std::string("9"));
    EXPECT_EQ(KorvaneFileText(list), test::FencedBlock(DREVIX_TEST_PAGE, "xml"));
}

TEST(KorvaneFiles, Save_KeepsTheFileItself) {
    const CompanionFolder folder;
    folder.Write(1, HotKeyFile({"One"}));
    std::filesystem::create_hard_link(folder.File(1), folder.Path("linked"));
    ASSERT_TRUE(SaveKorvanePrefsForApp(*LoadKorvaneFileForApp("Photoshop"), "Photoshop"));
    EXPECT_EQ(test::ReadWhole(folder.Path("linked")), test::ReadWhole(folder.File(1)));
    EXPECT_NE(test::ReadWhole(folder.File(1)), HotKeyFile({"One"}));
}

// A save that fails at any step leaves the old bytes; one that finds the same bytes in the file never changes
// them.
TEST(KorvaneFiles, FailedSave_RestoresTheFile) {
    const CompanionFolder folder;
    folder.Write(1, HotKeyFile({"One", "Two|1|pyralis||4"}));
    const auto list = LoadKorvaneFileForApp("Photoshop");
    ASSERT_TRUE(SaveKorvanePrefsForApp(*list, "Photoshop"));
    const std::string bytes = test::ReadWhole(folder.File(1));
    for (const std::string &before : {HotKeyFile({"Old one, and longer " + std::string(9000, 'o')}), bytes}) {
        for (const int error : {ENOSPC, EIO}) {
            const auto run = [&](int failAt, test::Lasts lasts) {
                folder.Write(1, before);
                bool isSaved = false;
                const bool wasHit = test::MeetsFault(
                    failAt, lasts, error, [&] { isSaved = SaveKorvanePrefsForApp(*list, "Photoshop"); });
                EXPECT_EQ(test::ReadWhole(folder.File(1)), isSaved ? bytes : before)
                    << failAt << " " << error;
                EXPECT_EQ(OpenFileCount(), 0);
                EXPECT_TRUE(wasHit || isSaved);
                return wasHit;
            };
            test::ForEachFault(4, run, {test::Lasts::Once});
        }
    }
}

// A disk of a process that dies at its n-th change, in the middle of it.
class DyingDisk : public Disk {
  public:
    explicit DyingDisk(int changes) : fLeft(changes), fBefore(SetDisk(this)) {}
    ~DyingDisk() override { SetDisk(fBefore); }
    [[nodiscard]] bool IsDead() const { return fLeft <= 0; }

    ssize_t WriteAt(int fd, const void *bytes, std::size_t count, off_t offset) override {
        return Lives() ? Disk::WriteAt(fd, bytes, IsDead() ? count / 2 : count, offset) : -1;
    }
    int SetSize(int fd, off_t size) override { return Lives() ? Disk::SetSize(fd, size) : -1; }

  private:
    bool Lives() {
        errno = EIO;
        return fLeft-- > 0;
    }

    int fLeft;
    Disk *fBefore;
};

// A death at any change, in the middle of a transfer too, leaves the old or the new bytes in the file, and
// nothing that would be taken for a whole file but is neither. Once a kill in the middle lost them all.
TEST(KorvaneFiles, KilledSave_LosesNoBytes) {
    const CompanionFolder folder;
    std::vector<std::string> oldRows;
    for (int i = 0; i < 40; ++i) {
        oldRows.push_back("Command " + std::to_string(10 + i) + "||||");
    }
    auto newRows = oldRows;
    newRows[0] = "Command 10|1|pyralis||4";
    for (const bool grows : {false, true}) {
        folder.Write(1, HotKeyFile(grows ? newRows : oldRows));
        ASSERT_TRUE(SaveKorvanePrefsForApp(*LoadKorvaneFileForApp("Photoshop"), "Photoshop"));
        const std::string bytes = test::ReadWhole(folder.File(1));
        const auto list = *LoadKorvaneFileForApp("Photoshop");
        folder.Write(1, HotKeyFile(grows ? oldRows : newRows));
        ASSERT_TRUE(SaveKorvanePrefsForApp(*LoadKorvaneFileForApp("Photoshop"), "Photoshop"));
        const std::string before = test::ReadWhole(folder.File(1));
        bool isDead = true;
        for (int dieAt = 1; isDead; ++dieAt) {
            test::WriteWhole(folder.File(1), before);
            {
                const DyingDisk disk(dieAt);
                std::ignore = SaveKorvanePrefsForApp(list, "Photoshop");
                isDead = disk.IsDead();
            }
            const std::string after = test::ReadWhole(folder.File(1));
            EXPECT_TRUE(after.find(before) != after.npos || after.find(bytes) != after.npos) << dieAt;
            const auto loaded = LoadKorvaneFileForApp("Photoshop");
            if (loaded && !loaded->isPartial) {
                EXPECT_THAT(Rows(loaded), testing::AnyOf(oldRows, newRows)) << dieAt;
            }
        }
        EXPECT_EQ(test::ReadWhole(folder.File(1)), bytes);
    }
}

} // namespace
} // namespace drevix
