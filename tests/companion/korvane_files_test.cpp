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
             {"8BIM", "ADOBE PHOTOSHOP cs2", 1},
             {"8BIM", "Adobe Photoshop CS2.app", -1},
             {"8BIM", "Adobe Photoshop CS3", -1},
             {"8BIM", nullptr, -1},
             {"XXXX", "adobe illustrator cs2", 2},
             {"XXXX", "Adobe InDesign CS2", 3},
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
    for (const FileRow &row : std::initializer_list<FileRow>{
             {"five values",
              kHead + "<HotKey><VirtualKey>4</VirtualKey><Menu>M</Menu><Modifier>x</Modifier>"
                      "<Device>pyralis</Device><Key>1</Key></HotKey></HotKeys>",
              {"M|1|pyralis|x|4"}},
             {"indented", kHead + "\n\t" + kOne + "\n</HotKeys>\n", one},
             {"comment first", kHead + "<!-- a --> text " + kOne + "</HotKeys>", one},
             {"CDATA first", kHead + "<![CDATA[<HotKey/>]]>" + kOne + "</HotKeys>", one},
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
             {"no hotkeys", kHead + "</HotKeys>", {}},
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
             {"x-mac-roman",
              "<?xml version='1.0' encoding='X-Mac-Roman'?>" + kHead +
                  "<HotKey><Menu>\xC9</Menu></HotKey></HotKeys>",
              {"\u2026||||"}},
             {"mark", "\xEF\xBB\xBF" + kHead + kOne + "</HotKeys>", one},
             // Nothing comes of these.
             {"empty", "", nothing},
             {"no XML", "bplist00", nothing},
             {"other root", "<HotKey TargetApp='A'>" + kOne + "</HotKey>", nothing},
             {"no target", "<HotKeys>" + kOne + "</HotKeys>", nothing},
             {"empty target", "<HotKeys TargetApp=''>" + kOne + "</HotKeys>", nothing},
             {"entity",
              "<!DOCTYPE a [<!ENTITY e 'One'>]>" + kHead + "<HotKey><Menu>&e;</Menu></HotKey></HotKeys>",
              nothing},
             {"unknown encoding", "<?xml version='1.0' encoding='x-none'?>" + kHead + kOne + "</HotKeys>",
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
             {"junk behind", kHead + kOne + "</HotKeys> and so on", one},
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

std::string Utf16(std::string_view ascii, bool isBigEndian) {
    std::string bytes = isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : ascii) {
        bytes.append(isBigEndian ? 1 : 0, '\0').append(1, c).append(isBigEndian ? 0 : 1, '\0');
    }
    return bytes;
}

TEST(KorvaneFiles, Load_ReadsUtf16) {
    const CompanionFolder folder;
    const std::string text = "<?xml version='1.0' encoding='UTF-16'?>" + kHead + kOne;
    for (const bool isBigEndian : {false, true}) {
        const std::string whole = Utf16(text + "</HotKeys>", isBigEndian);
        for (const std::string_view bytes : {std::string_view(whole), std::string_view(whole).substr(2)}) {
            folder.Write(0, bytes);
            EXPECT_THAT(Rows(LoadKorvaneFileForApp("_System_")), ElementsAre("One||||"));
        }
        folder.Write(0, Utf16(text + "<HotKey>", isBigEndian));
        EXPECT_THAT(Rows(LoadKorvaneFileForApp("_System_")), ElementsAre("One||||", "||||", "partial"));
    }
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
        {"many hotkeys", kHead + Repeated("<HotKey/>", 100'000) + "</HotKeys>", 100'000},
        {"a million hotkeys", kHead + Repeated("<HotKey/>", 1'000'000) + "</HotKeys>", 0},
        {"a million hotkeys, cut", kHead + Repeated("<HotKey>", 1'000'000), 0},
        {"long text", kHead + "<HotKey><Menu>" + std::string(15 << 20, 'x') + "</Menu></HotKey></HotKeys>",
         1},
        {"longer text", kHead + "<HotKey><Menu>" + std::string(100 << 20, 'x') + "</Menu></HotKey></HotKeys>",
         0},
        {"deep", kHead + Repeated("<a>", 100'000) + Repeated("</a>", 100'000) + "</HotKeys>", 0},
        {"attributes", attributes + "/></HotKeys>", 0},
        {"errors", kHead + Repeated("<a<", 1'000'000), 0},
        {"comments", kHead + Repeated("<!--", 2'000'000), 0},
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
    const std::string page = test::ReadWhole(DREVIX_TEST_PAGE);
    const std::string fence = "```xml\n";
    const std::size_t start = page.find(fence) + fence.size();
    const std::string example = page.substr(start, page.find("```", start) - start);
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
    EXPECT_EQ(KorvaneFileText(list), example);
}

TEST(KorvaneFiles, Save_KeepsTheFileItselfAndItsLinks) {
    const CompanionFolder folder;
    folder.Write(1, HotKeyFile({"One"}));
    std::filesystem::create_hard_link(folder.File(1), folder.Path("linked"));
    std::filesystem::create_symlink(folder.File(1), folder.File(4));
    ASSERT_EQ(::chmod(folder.File(1).c_str(), 0640), 0);
    ASSERT_TRUE(SaveKorvanePrefsForApp(*LoadKorvaneFileForApp("PSElements"), "PSElements"));
    EXPECT_EQ(test::ReadWhole(folder.Path("linked")), test::ReadWhole(folder.File(1)));
    EXPECT_NE(test::ReadWhole(folder.File(1)), HotKeyFile({"One"}));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.File(4)));
    struct stat status {};
    ASSERT_EQ(::stat(folder.File(1).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640U);
}

// A save that fails at any step leaves the old bytes, unless the disk fails for good while they are put back;
// one that finds the same bytes in the file never changes them.
TEST(KorvaneFiles, FailedSave_RestoresTheFile) {
    const CompanionFolder folder;
    for (const bool isSame : {false, true}) {
        const auto list = [&] {
            folder.Write(1, HotKeyFile({"One", "Two|1|pyralis||4"}));
            auto loaded = LoadKorvaneFileForApp("Photoshop");
            EXPECT_TRUE(SaveKorvanePrefsForApp(*loaded, "Photoshop"));
            return *loaded;
        }();
        const std::string bytes = test::ReadWhole(folder.File(1));
        for (const int error : {ENOSPC, EIO}) {
            for (int failAt = 1;; ++failAt) {
                const std::string before =
                    isSame ? bytes : HotKeyFile({"Old one, and longer " + std::string(9000, 'o')});
                folder.Write(1, before);
                bool wasHit = false;
                bool isSaved = false;
                {
                    test::FaultyDisk faults(failAt, test::Lasts::Once, error);
                    isSaved = SaveKorvanePrefsForApp(list, "Photoshop");
                    wasHit = faults.WasHit();
                }
                const std::string after = test::ReadWhole(folder.File(1));
                EXPECT_EQ(after, isSaved ? bytes : before) << failAt << " error " << error;
                EXPECT_EQ(OpenFileCount(), 0);
                if (!wasHit) {
                    EXPECT_TRUE(isSaved);
                    EXPECT_GT(failAt, 4);
                    break;
                }
            }
        }
    }
}

} // namespace
} // namespace drevix
