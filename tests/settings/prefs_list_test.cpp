#include "settings/prefs_list.h"

#include "tests/settings/settings_files.h"

namespace drevix::test {
namespace {

AppPrefs Factory(std::string_view name) {
    AppPrefs prefs = MakeRecord(kOther, name);
    prefs.factory = 1;
    return prefs;
}

TEST(SortDrevixBase, Order_IsGlobalThenFactoryThenUserThenForeignRecords) {
    const QBaseOwner base = MakeBase({MakeRecord(kOther, "b")});
    for (const int size : {1, 100, 1667}) { // too short to have a name or a flag
        const std::vector<char> foreign(static_cast<std::size_t>(size));
        EXPECT_NE(QBaseAddRecord(base.get(), foreign.data(), size), kNoRecord);
    }
    for (const AppPrefs &prefs : {Factory("z"), MakeRecord(kOther, "ab"), Factory("Y"), MakeRecord(0, "zz"),
                                  MakeRecord(kOther, "A")}) {
        EXPECT_NE(QBaseAddRecord(base.get(), &prefs, sizeof prefs), kNoRecord);
    }
    SortDrevixBase(base.get());
    EXPECT_EQ(CountListedPrefs(base.get()), 6);
    EXPECT_EQ(RecordNames(base), (Names{"zz", "Y", "z", "A", "ab", "b", "?", "?", "?"}));
    EXPECT_EQ(QBaseGetSortMode(base.get()), kDrevixSortMode);
}

// Which of two global records was in force changed from run to run.
TEST(SortDrevixBase, EqualRecords_StayInTheOrderOfTheirData) {
    constexpr std::uint16_t kCount = 40;
    const QBaseOwner base = MakeBase({});
    for (std::uint16_t i = 0; i < 2 * kCount; ++i) {
        AppPrefs prefs = MakeRecord(i < kCount ? kOther : kGlobalSignature, "Same");
        prefs.client = i;
        EXPECT_NE(QBaseAddRecord(base.get(), &prefs, sizeof prefs), kNoRecord);
    }
    SortDrevixBase(base.get());
    for (std::uint16_t i = 0; i < 2 * kCount; ++i) {
        EXPECT_EQ(std::uint16_t{GetAppPrefs(base.get(), i)->client}, (i + kCount) % (2 * kCount));
    }
}

// Of two records of one file name only the first could be reached.
TEST(FindAppPrefs, RecordsOfOneName_AreToldApart) {
    AppPrefs edited = MakeRecord(kOther, "Twin");
    edited.device[0].navSpeed = 5;
    const OSType kPhoto = FourCharCode("8BIM");
    const QBaseOwner base =
        MakeBase({MakeRecord(0, ""), MakeRecord(kPhoto, "Twin"), MakeRecord(kOther, "Twin"), edited,
                  MakeRecord(kWildcardSignature, "2"), MakeRecord(kOther, "a:8BIM")});
    AppPrefs gone = edited;
    gone.device[0].navSpeed = 6;
    const std::pair<AppPrefs, RecordNumber> formers[] = {{edited, 3},
                                                         {gone, 2},
                                                         {MakeRecord(7, "tWIN"), 1},
                                                         {MakeRecord(7, "x"), -1},
                                                         {MakeRecord(0, "2"), 0}};
    for (const auto &[former, expected] : formers) {
        EXPECT_EQ(FindAppPrefsAgain(base.get(), former), expected);
    }
    const std::pair<const char *, RecordNumber> texts[] = {
        {"twin", 1},        {"TWIN:8BIM", 1},   {"twin:TEST", 2}, {"twin:1413829460", 2},
        {"twin:test", -1},  {"2:any", 4},       {"2", 4},         {"a:8BIM", 5},
        {"a:8BIM:TEST", 5}, {"b:8BIM", -1},     {"0", 0},         {"3", 3},
        {"6", -1},          {"-1", -1},         {"3x", -1},       {"twin:", -1},
        {":TEST", -1},      {"99999999999", -1}};
    for (const auto &[text, expected] : texts) {
        EXPECT_EQ(FindAppPrefsByText(base.get(), text), expected) << text;
    }
}

TEST(StoreAppPrefs, Record_ReplacesItsNamesakeAndStaysTheFactorys) {
    const QBaseOwner base = MakeBase({MakeRecord(0, ""), Factory("Sketch"), MakeRecord(kOther, "Other")});
    const AppPrefs incoming = MakeRecord(FourCharCode("abcd"), "SKETCH");
    const RecordNumber replaced = FindReplacedAppPrefs(base.get(), incoming);
    EXPECT_EQ(replaced, 1);
    EXPECT_EQ(StoreAppPrefs(base.get(), incoming, replaced), 1);
    EXPECT_EQ(RecordNames(base), (Names{"", "SKETCH", "Other"}));
    EXPECT_EQ(GetAppPrefs(base.get(), 1)->factory, 1);
    EXPECT_EQ(OSType{GetAppPrefs(base.get(), 1)->application}, FourCharCode("abcd"));
    EXPECT_EQ(FindReplacedAppPrefs(base.get(), MakeRecord(0, "Other")), 0) << "a global record has no name";
    EXPECT_EQ(FindReplacedAppPrefs(base.get(), MakeRecord(kOther, "")), kNoRecord) << "nor found by one";
    for (const RecordNumber place : {RecordNumber{0}, kNoRecord}) { // nor is it given one
        const RecordNumber stored = StoreAppPrefs(base.get(), MakeRecord(0, "Named"), place);
        EXPECT_EQ(NameOf(*GetAppPrefs(base.get(), stored)), "");
    }
    const QBaseOwner withoutGlobal = MakeBase({MakeRecord(kOther, "First")});
    EXPECT_EQ(FindReplacedAppPrefs(withoutGlobal.get(), MakeRecord(0, "")), kNoRecord)
        << "the global record would have taken the place of an application's";
}

TEST(MakeAppPrefs, NewApplication_StartsWithTheGlobalSettings) {
    AppPrefs global;
    std::memset(&global, 0xEE, sizeof global);
    global.application = kGlobalSignature;
    const QBaseOwner base = MakeBase({global});
    std::string name;
    for (int i = 0; i < 70; ++i) {
        name += "\u00E9"; // two bytes of UTF-8, one of Mac OS Roman
    }
    const AppPrefs made = MakeAppPrefs(base.get(), 0, name);
    AppPrefs expected = global;
    expected.application = 0x3F3F3F3F;
    expected.appFileName.fill(0x8E);
    expected.appFileName[0] = 63;
    expected.appName.fill(0x8E);
    expected.appName[0] = 31;
    expected.active = 1;
    expected.factory = 0;
    EXPECT_TRUE(SameBytes(made, expected));
    const AppPrefs shown = MakeAppPrefs(base.get(), kOther, "file", "Shown");
    EXPECT_EQ(stringWithPascalString(shown.appName.data()), "Shown");
    EXPECT_EQ(shown.appFileName[63], 0) << "nothing of the global record's name is left";
}

TEST(LoadDefaultPrefs, Record_IsTheFirstOfItsSignatureElseTheLastGlobalOne) {
    SettingsFolder folder;
    AppPrefs found = MakeRecord(kOther, "before");
    folder.WriteDefaults({MakeRecord(kOther, "none")});
    EXPECT_FALSE(LoadDefaultPrefs(folder.resources, MakeRecord(0, ""), &found));
    EXPECT_EQ(NameOf(found), "before");
    folder.WriteDefaults({MakeRecord(0, "g1"), MakeRecord(kOther, "a1"), MakeRecord(kOther, "a2"),
                          MakeRecord(1, "w1"), MakeRecord(1, "w2"), MakeRecord(0, "g2")});
    // Of the wildcards, which all have one signature, the name counts.
    const std::tuple<OSType, const char *, const char *> rows[] = {
        {kOther, "x", "a1"}, {7, "x", "g2"}, {0, "x", "g1"}, {1, "W2", "w2"}, {1, "x", "g2"}};
    for (const auto &[application, name, expected] : rows) {
        EXPECT_TRUE(LoadDefaultPrefs(folder.resources, MakeRecord(application, name), &found));
        EXPECT_EQ(NameOf(found), expected);
    }
}

// Every byte of the record is either the group's and the factory's, or as it was.
TEST(CopyGroupFromDefaultPrefs, Group_IsRestoredByteForByte) {
    const struct {
        ControlGroup group;
        std::vector<std::size_t> slots;
        std::set<std::size_t> fields; // offsets in the record
    } rows[] = {
        {ControlGroup::Ring, {5, 4, 9, 1, 0, 3, 2, 8}, {117, 119, 120, 121, 122, 123, 124, 125, 126, 127}},
        {ControlGroup::Tuner, {7, 6}, {116, 118}},
        {ControlGroup::Buttons, {16, 17, 18, 20, 19}, {}}};
    for (const auto &row : rows) {
        std::set<std::size_t> expected = row.fields;
        for (std::size_t i = 0; i < row.slots.size() * sizeof(ActionSlot); ++i) {
            expected.insert(132 + 48 * row.slots[i / 48] + i % 48);
        }
        AppPrefs prefs;
        AppPrefs defaults;
        std::memset(&prefs, 0x11, sizeof prefs);
        std::memset(&defaults, 0x22, sizeof defaults);
        CopyGroupFromDefaultPrefs(prefs, defaults, row.group);
        for (std::size_t i = 0; i < sizeof prefs; ++i) {
            const int byte = reinterpret_cast<const unsigned char *>(&prefs)[i];
            EXPECT_EQ(byte, expected.contains(i) ? 0x22 : 0x11) << i;
        }
    }
}

} // namespace
} // namespace drevix::test
