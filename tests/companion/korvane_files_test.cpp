#include "companion/korvane_crc.h"
#include "companion/korvane_files.h"
#include "companion/korvane_sync.h"
#include "platform/files/files.h"
#include "platform/xml/xml_document.h"
#include "tests/companion/companion_folder.h"
#include "tests/settings/settings_files.h"

#include <ctime>
#include <sys/resource.h>

namespace drevix::test {
namespace {

using testing::AnyOf;
using testing::HasSubstr;

Str63 Name(std::string_view text) {
    return MakeRecord(0, text).appFileName;
}

TEST(KorvaneFiles, Applications_AreSelectedByNameOrCreator) {
    EXPECT_EQ(FindKorvaneIndex(kGlobalSignature, nullptr), 0);
    EXPECT_EQ(FindKorvaneIndex(kGlobalSignature, Name("Anything").data()), 0);
    EXPECT_EQ(FindKorvaneIndex(FourCharCode("8ELE"), nullptr), 4);
    EXPECT_EQ(FindKorvaneIndex(FourCharCode("8ELE"), kPhotoshopName.data()), 1); // the first row that fits
    EXPECT_EQ(FindKorvaneIndex(FourCharCode("8BIM"), Name("Adobe Photoshop CS2.app").data()), -1);
    EXPECT_EQ(FindKorvaneIndex(FourCharCode("8BIM"), nullptr), -1);
    EXPECT_EQ(FindKorvaneIndex(FourCharCode("XXXX"), Name("adobe illustrator cs2").data()), 2);
}

TEST(KorvaneFiles, Names_AreComparedWithoutTheSuffix) {
    const auto compare = [](std::string_view a, std::string_view b) {
        return KorvanePStrCmpNoApp(Name(a).data(), Name(b).data());
    };
    EXPECT_EQ(compare("Adobe Photoshop CS2.app", "adobe photoshop cs2"), 0);
    EXPECT_EQ(compare("a.APP", "a"), 4);
    EXPECT_EQ(compare("", ".app"), -4); // nothing in front
    EXPECT_EQ(compare("x.app.app", "x"), 4);
    EXPECT_EQ(compare("Ab", "aC.app"), 'b' - 'c');
    EXPECT_EQ(compare("\u00E4", "\u00C4"), 0x8A - 0x80); // accented letters count as they are
}

TEST(KorvaneFiles, Records_AreFoundByNameElseByCreator) {
    const QBaseOwner base =
        MakeBase({MakeRecord(FourCharCode("8BIM"), "Adobe Photoshop CS"),
                  MakeRecord(kNoSignature, "adobe photoshop CS2.app"),
                  MakeRecord(FourCharCode("8BIM"), "Adobe Photoshop CS2"),
                  MakeRecord(FourCharCode("8ELE"), ""), MakeRecord(kGlobalSignature, "")});
    ASSERT_EQ(QBaseAddRecord(base.get(), "too short", 9), 5); // is passed over
    const Str63 empty{};
    const auto record = [&](RecordNumber number) { return QBaseGetRecord(base.get(), number); };
    EXPECT_EQ(KorvaneFindAppPrefs(base.get(), FourCharCode("8BIM"), kPhotoshopName.data()), record(1));
    EXPECT_EQ(KorvaneFindAppPrefs(base.get(), FourCharCode("8BIM"), nullptr), record(0));
    EXPECT_EQ(KorvaneFindAppPrefs(base.get(), kGlobalSignature, empty.data()), record(4));
    EXPECT_EQ(KorvaneFindAppPrefs(base.get(), kGlobalSignature, kInDesignName.data()), nullptr);
}

const std::string kHead = "<HotKeys TargetApp='A'>";
const std::string kOne = "<HotKey><Menu>One</Menu></HotKey>";

std::string Whole(const std::string &contents) {
    return kHead + contents + "</HotKeys>";
}

// All that a document type may declare but entities. The "]>" ends nothing.
const std::string kDeclarations = "<!DOCTYPE HotKeys [<!ELEMENT HotKey ANY><!-- ]> ' -->"
                                  "<!ATTLIST HotKeys TargetApp CDATA 'A' x (a|b) 'a' y CDATA ']>'>]>";

std::string OfMenu(const std::string &menu) {
    return Whole("<HotKey><Menu>" + menu + "</Menu></HotKey>");
}

TEST(KorvaneFiles, Load_FindsEveryHotKeyOrSaysThatItDoesNot) {
    const CompanionFolder folder;
    const Strings one = {"One||||"};
    const Strings nothing = {"nothing"};
    const Strings onePartial = {"One||||", "partial"};
    for (const auto &[what, bytes, rows] :
         std::initializer_list<std::tuple<const char *, std::string, Strings>>{
             {"five values",
              Whole("<HotKey><VirtualKey>4</VirtualKey><Menu>M</Menu><Modifier>x</Modifier>"
                    "<Device>pyralis</Device><Key>1</Key></HotKey>"),
              {"M|1|pyralis|x|4"}},
             {"others between", Whole("<!-- --> x <Other><HotKey/></Other>" + kOne + "<hotkey/>"), one},
             {"first child counts", Whole("<HotKey><x>no</x><Menu>One</Menu><Menu>Two</Menu></HotKey>"), one},
             {"name space",
              "<k:HotKeys xmlns:k='urn:k' k:TargetApp='A'><k:HotKey><k:Menu>One</k:Menu></k:HotKey>"
              "</k:HotKeys>",
              one},
             {"document type", "<!DOCTYPE HotKeys SYSTEM 'http://localhost:9/x'>" + Whole(kOne), one},
             {"declarations, and a target by default", kDeclarations + "<HotKeys>" + kOne + "</HotKeys>",
              one},
             {"the same, damaged", kDeclarations + "<HotKeys>" + kOne + "<Menu x='1' x='1'/></HotKeys>", one},
             {"prefixes beside",
              "<HotKeys xmlns:TargetApp='urn:x' xmlns:x='urn:x' x:TargetApp='' TargetApp='A'><x:HotKey/>"
              "<HotKey><x:Menu>no</x:Menu><Menu>One</Menu></HotKey></HotKeys>",
              one},
             // Nothing comes of these.
             {"empty", "", nothing},
             {"other root", "<HotKey TargetApp='A'>" + kOne + "</HotKey>", nothing},
             {"empty target", "<HotKeys TargetApp=''>" + kOne + "</HotKeys>", nothing},
             {"no target", "<HotKeys>" + kOne + "</HotKeys>", nothing},
             // Not well-formed, and perhaps not all there.
             {"cut at a hotkey", kHead + kOne, onePartial},
             {"cut in a hotkey", kHead + kOne + "<HotKey><Me", {"One||||", "||||", "partial"}},
             {"lost end tag", Whole("<HotKey><Menu>One</HotKey>" + kOne), onePartial},
             {"old end behind", Whole(kOne) + kOne + "</HotKeys>", onePartial},
             {"comment without end", Whole(kOne + "<!-- " + kOne), {"One||||", "One||||"}},
         }) {
        folder.Write(1, bytes);
        EXPECT_EQ(Rows(LoadKorvaneFileForApp("Photoshop")), rows) << what;
        EXPECT_EQ(OpenFileCount(), 0);
    }
    EXPECT_EQ(Rows(LoadKorvaneFileForApp("Illustrator")), nothing);
    ASSERT_EQ(::mkfifo(folder.File(2).c_str(), 0600), 0); // is not waited for
    EXPECT_EQ(Rows(LoadKorvaneFileForApp("Illustrator")), nothing);
}

// Behind the first error "Cut &amp; Paste" was read, and written back, as "Cut  Paste"; so were all five references,
// and the text before a bare "]]>" was lost.
TEST(KorvaneFiles, Damage_ChangesNoText) {
    const CompanionFolder folder;
    const std::string target = " TargetApp='A &amp;&lt; &#66;'>";
    const std::string head = "<HotKeys" + target;
    const std::pair<const char *, std::string> damages[] = {
        {"none", head},
        {"blank line before the declaration", "\n<?xml version='1.0'?>" + head},
        {"two hyphens in a comment", head + "<!-- a -- b -->"},
        {"mismatched end tag", head + "<Other></Othre>"},
        {"doubled attribute", "<HotKeys x='1' x='2'" + target},
        {"no blank between attributes", "<HotKeys x='1'TargetApp='A &amp;&lt; &#66;'>"},
        {"declaration in the middle", head + "<?xml version='1.0'?>"},
        {"declaration without its end", "<?xml version='1.0'>" + head},
        {"bare sign", head + "<Other>&</Other>"},
    };
    const std::pair<const char *, const char *> texts[] = {
        {"Plain", "Plain"},
        {"Cut &amp; Paste &lt;&gt;&quot;&apos;&amp;amp; &#38;&#x3E;\u00E4",
         "Cut & Paste <>\"'&amp; &>\u00E4"},
        {"before ]]> behind, a > b 'c\" >", "before ]]> behind, a > b 'c\" >"},
        {"<![CDATA[x &amp; <b> ]]>&amp;]]&gt;", "x &amp; <b> &]]>"},
        {"a<!-- &amp; <b> ]]> -->b<?pi &amp; > ?>c", "abc"},
        {"]<i>]</i><!-- -->> &amp;", "]]> &"},
    };
    for (const auto &[what, start] : damages) {
        for (const auto &[written, read] : texts) {
            const std::string hotKey = "<HotKey><Menu>" + std::string(written) + "</Menu></HotKey>";
            folder.Write(1, start + hotKey + hotKey + "</HotKeys>");
            const auto list = LoadKorvaneFileForApp("Photoshop");
            const std::string row = std::string(read) + "||||";
            EXPECT_EQ(Rows(list), (Strings{row, row})) << what << ", " << written;
            EXPECT_EQ(list ? list->TargetApp : "", "A &< B") << what << ", " << written;
        }
    }
}

std::string Repeated(const std::string &text, std::size_t times) {
    std::string result;
    for (std::size_t i = 0; i < times; ++i) {
        result += text;
    }
    return result;
}

std::int64_t PeakKilobytes() {
    struct rusage usage {};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST(KorvaneFiles, Load_IsBounded) {
    const CompanionFolder folder;
    std::string bomb = "<!DOCTYPE a [<!ENTITY a0 'aaaaaaaaaa'>";
    for (int i = 1; i < 30; ++i) {
        const std::string before = "&a" + std::to_string(i - 1) + ";";
        bomb += "<!ENTITY a" + std::to_string(i) + " '" + Repeated(before, 10) + "'>";
    }
    std::string names;
    for (int i = 0; i < 12'000; ++i) {
        names += "a" + std::to_string(i) + "|"; // close to all that a document type may hold
    }
    names.resize(names.rfind('|', 64'000) + 1);
    const std::tuple<const char *, std::string, std::size_t> rows[] = {
        {"entity bomb", bomb + "]>" + OfMenu("&a29;"), 0},
        {"external entity", "<!DOCTYPE a [<!ENTITY e SYSTEM 'file:///etc/passwd'>]>" + OfMenu("&e;"), 0},
        {"parameter entity", "<!DOCTYPE a [<!ENTITY % e SYSTEM 'file:///etc/passwd'> %e;]>" + Whole(kOne), 0},
        {"long document type", "<!DOCTYPE a [" + Repeated("<!ELEMENT a ANY>", 5000) + "]>" + Whole(kOne), 0},
        {"defaults that multiply",
         "<!DOCTYPE a [<!ATTLIST HotKey x CDATA '" + std::string(40'000, 'x') + "'>]>" +
             Whole(Repeated("<HotKey/>", 400'000)),
         0},
        {"values that are compared",
         "<!DOCTYPE a [<!NOTATION n SYSTEM 'n'><!ATTLIST a x NOTATION (" + names + "n) #IMPLIED>]>" +
             Whole(kOne),
         1},
        {"a million hotkeys", Whole(Repeated("<HotKey/>", 1'000'000)), 0},
        {"long text", OfMenu(std::string(15 << 20, 'x')), 1},
        {"errors", kHead + Repeated("<a<", 1'000'000), 0},
        {"signs", OfMenu(Repeated("& <", 500'000)), 1},
        {"controls", kHead + std::string(4 << 20, '\x01'), 0},
    };
    const std::int64_t before = PeakKilobytes();
    for (const auto &[what, bytes, hotKeys] : rows) { // 0 for nothing
        folder.Write(0, bytes);
        const std::clock_t start = std::clock(); // of this process, however busy the machine is
        const auto list = LoadKorvaneFileForApp("_System_");
        const double took = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        EXPECT_EQ(list ? list->HotKeys.size() : 0, hotKeys) << what;
        EXPECT_LT(took, 30) << what; // measured: 0.5 s at most, but for sanitizers and debugging
    }
    EXPECT_LT(PeakKilobytes() - before, 600 << 10);
}

TEST(KorvaneFiles, Save_WritesWhatOtherReadersRead) {
    const CompanionFolder folder;
    KorvaneHotKeyList list;
    list.TargetApp = "A & \"B\"\t<c>\u00E4";
    for (const char *menu :
         {"Plain", "a & b < c > \"d\" 'e' ]]>", "  two\tblanks  ", "\u30D6\U0001F58C", ""}) {
        list.HotKeys.emplace_back().Set(KorvaneKey::Menu, std::string(menu));
        list.HotKeys.back().Set(KorvaneKey::VirtualKey, 8);
    }
    ASSERT_TRUE(SaveKorvanePrefsForApp(list, "InDesign"));
    const auto loaded = LoadKorvaneFileForApp("InDesign");
    EXPECT_EQ(Rows(loaded), Rows(list));
    EXPECT_EQ(loaded->TargetApp, list.TargetApp);
    const std::string written = ReadWhole(folder.File(3));
    EXPECT_EQ(KorvaneFileText(*loaded), written); // and stays like this
    const std::string shown = Peer("show '" + folder.File(3) + "'").Rest();
    for (const KorvaneHotKey &hotKey : list.HotKeys) {
        const std::string menu = hotKey.Text(KorvaneKey::Menu);
        EXPECT_THAT(shown, HasSubstr("\n" + menu + "||||8|" + std::to_string(KorvaneStringCRC(menu)) + "\n"));
    }
    EXPECT_TRUE(shown.starts_with(list.TargetApp + "\n")) << shown;

    const auto isRefused = [&] {
        return !SaveKorvanePrefsForApp(list, "InDesign") && ReadWhole(folder.File(3)) == written;
    };
    list.HotKeys.clear();
    EXPECT_TRUE(isRefused());
    list.HotKeys.resize(kMostKorvaneHotKeys + 1);
    EXPECT_TRUE(isRefused());
    list.HotKeys.resize(1);
    list.HotKeys[0].Set(KorvaneKey::Menu, std::string(kXmlMaxBytes / 5, '&'));
    EXPECT_TRUE(isRefused());
    EXPECT_FALSE(SaveKorvanePrefs(*loaded, folder.Path("none/~hotkeys")));
    EXPECT_FALSE(fs::exists(folder.Path("none")));
    // 40,000 were read and written back, and then refused for the white space between their tags.
    ASSERT_TRUE(SaveKorvanePrefsForApp(ListOf(Strings(kMostKorvaneHotKeys, "a|b|c|d|e")), "InDesign"));
    const auto most = LoadKorvaneFileForApp("InDesign");
    EXPECT_EQ(most ? most->HotKeys.size() : 0, kMostKorvaneHotKeys);
}

TEST(KorvaneFiles, Example_OfThePageIsReadAndWrittenAgain) {
    const std::string page = FencedBlock(DREVIX_TEST_PAGE, "xml");
    bool isWellFormed = false;
    const auto list = ParseKorvaneFile(page, &isWellFormed);
    EXPECT_TRUE(isWellFormed);
    EXPECT_EQ(Rows(list), (Strings{"Gaussian Blur\u2026|2|pyralis||16", "Cut & Paste||||",
                                   "Save for Web|5|tarnix|512|9"}));
    EXPECT_EQ(KorvaneFileText(*list), page);
}

// A death at any change, in the middle of a transfer too, leaves the old or the new bytes in the file, and
// nothing that would be taken for a whole file but is neither; where both are the same, nothing else ever. Once
// a kill in the middle lost them all. The next program puts it right when it synchronises.
TEST(KorvaneFiles, KilledSave_LosesNoBytes) {
    const CompanionFolder folder;
    Strings shorter;
    for (int i = 10; i < 50; ++i) {
        shorter.push_back("Command " + std::to_string(i) + "||||");
    }
    Strings longer = shorter;
    longer[0] = "Command 10|1|pyralis||4";
    for (const auto &[oldRows, newRows] :
         {std::pair(shorter, longer), {longer, shorter}, {shorter, shorter}}) {
        const KorvaneHotKeyList list = ListOf(newRows);
        const std::string before = KorvaneFileText(ListOf(oldRows));
        const std::string bytes = KorvaneFileText(list);
        const auto save = [&] { return SaveKorvanePrefsForApp(list, "Photoshop"); };
        bool hasDied = true;
        for (int dieAt = 1; hasDied; ++dieAt) {
            folder.Write(1, before);
            hasDied = DiesAt(dieAt, Death::HalfOfATransfer, save);
            const std::string after = ReadWhole(folder.File(1));
            EXPECT_THAT(after, AnyOf(HasSubstr(before), HasSubstr(bytes))) << dieAt;
            EXPECT_TRUE(before != bytes || after == bytes) << dieAt;
            const auto loaded = LoadKorvaneFileForApp("Photoshop");
            if (loaded && !loaded->isPartial) {
                EXPECT_THAT(Rows(loaded), AnyOf(oldRows, newRows)) << dieAt;
            }
            SyncFromKorvane(NewDrevixBase().get());
            EXPECT_THAT(ReadWhole(folder.File(1)), AnyOf(before, bytes)) << dieAt;
        }
        EXPECT_EQ(ReadWhole(folder.File(1)), bytes);
    }
}

// A kill in the middle of a write once left both texts in the file for good.
TEST(KorvaneFiles, FileWithBothTexts_IsReadAsTheWholeOneAndMended) {
    const CompanionFolder folder;
    const Strings oldRows = {"One||||", "Two||||"};
    const Strings newRows = {"One|1|pyralis||4", "Two||||"};
    const std::string before = KorvaneFileText(ListOf(oldRows));
    const std::string bytes = KorvaneFileText(ListOf(newRows));
    const std::string gap(bytes.size() - before.size(), '\0');
    const std::string others = std::string(bytes).erase(bytes.find('\n'), 1); // not as we write it
    const std::pair<std::string, Strings> files[] = {
        {before + gap + bytes, newRows},
        {bytes.substr(0, 100) + before.substr(100) + gap + bytes, newRows},
        {bytes + bytes, newRows},
        {before + gap + bytes.substr(0, 150), oldRows},
        {before.substr(0, before.rfind('\n')) + bytes.substr(0, 150), oldRows},
        {before.substr(0, 120) + bytes.substr(0, 150), {}}, // not ours to mend
        {others + others, {}},
    };
    for (const auto &[file, rows] : files) {
        folder.Write(1, file);
        const auto loaded = LoadKorvaneFileForApp("Photoshop");
        if (rows.empty()) {
            EXPECT_TRUE(!loaded || loaded->isPartial);
            continue;
        }
        ASSERT_TRUE(loaded && !loaded->isPartial) << file;
        EXPECT_EQ(Rows(loaded), rows);
        EXPECT_TRUE(IsKorvaneFileUnchanged(*loaded, "Photoshop"));
        EXPECT_TRUE(SaveKorvanePrefsForApp(*loaded, "Photoshop"));
        EXPECT_EQ(ReadWhole(folder.File(1)), KorvaneFileText(ListOf(rows)));
        EXPECT_FALSE(IsKorvaneFileUnchanged(*loaded, "Photoshop"));
    }
}

} // namespace
} // namespace drevix::test
