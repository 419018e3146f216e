#include "platform/status.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_dictionary.h"
#include "tests/support/faults.h"
#include "tests/support/scratch.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <new>
#include <random>
#include <vector>

namespace drevix {
namespace {

using Image = std::array<std::uint8_t, sizeof(AppPrefs)>; // a record's bytes
using Leaves = std::map<std::string, std::string>;        // a dictionary's values by their path

Image ImageOf(const AppPrefs &prefs) {
    return std::bit_cast<Image>(prefs);
}

AppPrefs RecordOf(const PropertyListDictionary &dictionary) {
    AppPrefs prefs = {};
    EXPECT_TRUE(GetAppPrefsFromDictionary(&prefs, dictionary));
    return prefs;
}

void Flatten(const PropertyListDictionary &dictionary, const std::string &path, Leaves &leaves) {
    for (const auto &[key, value] : dictionary.Entries()) {
        const std::string name = path + key;
        if (const auto *inner = value.As<PropertyListDictionary>()) {
            Flatten(*inner, name + '/', leaves);
        } else if (const auto *number = value.As<std::int64_t>()) {
            leaves[name] = std::to_string(*number);
        } else if (const auto *flag = value.As<bool>()) {
            leaves[name] = *flag ? "true" : "false";
        } else {
            leaves[name] = *value.As<std::string>();
        }
    }
}

Leaves LeavesOf(const Image &image) {
    Leaves leaves;
    Flatten(GetAppPrefsDictionary(std::bit_cast<AppPrefs>(image)), "", leaves);
    return leaves;
}

// The documented fields: offset, bytes (0: a flag, -1: text), key.
struct Field {
    int offset, width;
    const char *key;
};
constexpr Field kRecordFields[] = {
    {0, 4, "signature"}, {4, -1, "fileName"}, {68, -1, "configName"}, {100, 0, "active"}};
constexpr Field kDeviceFields[] = {{116, 0, "clickEnabled"},
                                   {117, 1, "ringSensitivity"},
                                   {118, 1, "tunerSensitivity"},
                                   {119, 1, "ringSpeed"},
                                   {120, 1, "ringSensitivitySeparate"},
                                   {121, 1, "ringSensitivityX"},
                                   {122, 1, "ringSensitivityY"},
                                   {123, 1, "ringSensitivityZ"},
                                   {124, 1, "ringSpeedSeparate"},
                                   {125, 1, "ringSpeedX"},
                                   {126, 1, "ringSpeedY"},
                                   {127, 1, "ringSpeedZ"}};
constexpr Field kSlotFields[] = {{0, 2, "action"}, {2, 2, "modifiers"}, {4, 1, "keyCode"}, {5, 1, "repeat"},
                                 {6, 2, "delay"},  {8, 4, "menu"},      {16, -1, "data"}};
const std::map<std::string, int> kSlots = {
    {"ringLeft", 0}, {"ringRight", 1}, {"ringUp", 2},    {"ringDown", 3},  {"ringXYRest", 8},
    {"ringCCW", 4},  {"ringCW", 5},    {"ringZRest", 9}, {"tunerCCW", 6},  {"tunerCW", 7},
    {"buttonV", 16}, {"buttonP", 17},  {"buttonI", 18},  {"buttonII", 19}, {"buttonIII", 20}};

// The keys, and their values, that a 1 at each offset of a zero record gives.
std::map<int, std::pair<std::string, std::string>> ExpectedChanges() {
    std::map<int, std::pair<std::string, std::string>> changes;
    const auto add = [&](const Field &field, int base, const std::string &path) {
        for (int byte = 0; byte < std::max(field.width, 1); ++byte) {
            changes[base + field.offset + byte] = {path + field.key, field.width == 0 ? "true"
                                                                     : field.width < 0
                                                                         ? std::string(1, '\0')
                                                                         : std::to_string(1U << (8 * byte))};
        }
    };
    for (const Field &field : kRecordFields) {
        add(field, 0, "");
    }
    for (const Field &field : kDeviceFields) {
        add(field, 0, "devices/veltrana/");
    }
    for (const auto &[key, slot] : kSlots) {
        for (const Field &field : kSlotFields) {
            add(field, 132 + 48 * slot, "devices/veltrana/assignments/" + key + "/");
        }
    }
    return changes;
}

TEST(PrefsDictionary, EachByteOfARecord_ChangesItsOwnKeyOrNone) {
    const auto changes = ExpectedChanges();
    const Leaves empty = LeavesOf({});
    EXPECT_EQ(empty.size(), 4 + 12 + 15 * 7U) << "\"factory\" is never written";
    for (int offset = 0; offset < 1668; ++offset) {
        Image image = {};
        image[static_cast<std::size_t>(offset)] = 1;
        Leaves expected = empty;
        const auto change = changes.find(offset);
        if (change != changes.end()) {
            expected[change->second.first] = change->second.second;
        }
        ASSERT_EQ(LeavesOf(image), expected) << offset;
        const AppPrefs back = RecordOf(GetAppPrefsDictionary(std::bit_cast<AppPrefs>(image)));
        const bool isText = change != changes.end() && change->second.second == std::string(1, '\0');
        ASSERT_EQ(ImageOf(back), change != changes.end() ? image : Image{})
            << offset << (isText ? " (text)" : "");
    }
}

// A record with random contents in every field that travels.
AppPrefs RandomRecord(std::mt19937 &random, int lowestCharacter) {
    Image image = {};
    const auto fill = [&](const Field &field, int base) {
        const auto at = static_cast<std::size_t>(base + field.offset);
        if (field.width < 0) {
            const unsigned limit = field.offset == 4 ? 63 : 31;
            image[at] = static_cast<std::uint8_t>(random() % (limit + 1));
            for (std::size_t i = 1; i <= image[at]; ++i) {
                image[at + i] = static_cast<std::uint8_t>(lowestCharacter + static_cast<int>(random() % 224));
            }
        } else if (field.width == 0) {
            image[at] = random() % 2;
        } else {
            for (std::size_t i = 0; i < static_cast<std::size_t>(field.width); ++i) {
                image[at + i] = static_cast<std::uint8_t>(random());
            }
        }
    };
    for (const Field &field : kRecordFields) {
        fill(field, 0);
    }
    for (const Field &field : kDeviceFields) {
        fill(field, 0);
    }
    for (const auto &[key, slot] : kSlots) {
        for (const Field &field : kSlotFields) {
            fill(field, 132 + 48 * slot);
        }
    }
    return std::bit_cast<AppPrefs>(image);
}

// A dictionary with one value at the end of a path.
PropertyListDictionary Nest(std::string_view path, PropertyList value) {
    PropertyListDictionary dictionary;
    const std::size_t slash = path.find('/');
    if (slash == std::string_view::npos) {
        dictionary.Add(std::string(path), std::move(value));
    } else {
        dictionary.Add(std::string(path.substr(0, slash)), Nest(path.substr(slash + 1), std::move(value)));
    }
    return dictionary;
}

TEST(PrefsDictionary, OddValues_KeepTheirLowBitsOrCountAsAbsent) {
    const std::string slot = "devices/veltrana/assignments/ringLeft/";
    const auto integer = [](std::int64_t value) { return PropertyList(value); };
    const auto text = [](std::string value) { return PropertyList(std::move(value)); };
    struct Row {
        std::string path;
        PropertyList value;
        std::size_t offset;
        std::string bytes; // what the zero record has there; the rest of it stays zero
    };
    const std::string forty = "0123456789012345678901234567890123456789";
    std::vector<Row> rows = {
        {slot + "keyCode", integer(300), 136, "\x2C"},
        {slot + "keyCode", integer(-1), 136, "\xFF"},
        {slot + "action", integer(0x12345), 132, "\x45\x23"},
        {slot + "menu", integer(0x7123456789ABCDEF), 140, "\xEF\xCD\xAB\x89"},
        {"signature", integer(-2), 0, "\xFE\xFF\xFF\xFF"},
        {"signature", integer(1061109567), 0, "????"},
        {"configName", text(forty), 68, "\x1F" + forty.substr(0, 31)},
        {"fileName", text(forty), 4, "\x28" + forty},
        {"fileName", text(forty + forty), 4, "\x3F" + (forty + forty).substr(0, 63)},
        {slot + "data", text("\xC3\xA9\xE4\xB8\xAD" + forty), 148, "\x1F\x8E?" + forty.substr(0, 29)},
        {"factory", PropertyList(true), 101, "\1"},
        {"active", PropertyList(true), 100, "\1"},
        {"active", integer(256), 100, "\1"},
        {"active", integer(-1), 100, "\1"},
        {"active", PropertyList(0.5), 100, "\1"},
        {"active", PropertyList(0.0), 100, ""},
        {"active", integer(0), 100, ""},
        {"devices/veltrana/clickEnabled", integer(2), 116, "\1"},
        {"devices/veltrana/ringspeed", integer(2), 119, ""},
        {"devices/other/ringSpeed", integer(2), 119, ""},
        {"ringSpeed", integer(2), 119, ""},
    };
    // Every key with a value of each wrong type.
    const PropertyList wrong[] = {true,
                                  std::int64_t{5},
                                  5.0,
                                  std::string("5"),
                                  PropertyListData{"5"},
                                  PropertyListDate{5},
                                  PropertyListArray{std::int64_t{5}},
                                  Nest("5", std::int64_t{5})};
    const std::pair<std::string, std::set<std::size_t>> keys[] = {
        {"signature", {1}},
        {"devices/veltrana/ringSpeedZ", {1}},
        {slot + "delay", {1}},
        {"fileName", {3}},
        {slot + "data", {3}},
        {"active", {0, 1, 2}},
        {"devices", {}},
        {"devices/veltrana", {}},
        {"devices/veltrana/assignments", {}},
        {"devices/veltrana/assignments/ringLeft", {}},
    };
    for (const auto &[key, right] : keys) {
        for (const PropertyList &value : wrong) {
            if (!right.contains(value.Get().index())) {
                rows.push_back({key, value, 0, ""});
            }
        }
    }
    for (const Row &row : rows) {
        Image expected = {};
        std::memcpy(expected.data() + row.offset, row.bytes.data(), row.bytes.size());
        EXPECT_EQ(ImageOf(RecordOf(Nest(row.path, row.value))), expected)
            << row.path << ' ' << row.value.Get().index();
    }
}

struct Reading {
    OSErr status;
    std::vector<Image> records;
};

Reading ReadFile(const std::string &path) {
    Reading reading = {};
    reading.status =
        ReadAppPrefsFile(path, [&](const AppPrefs &record) { reading.records.push_back(ImageOf(record)); });
    return reading;
}

OSErr WriteFile(const std::string &path, const std::vector<AppPrefs> &records) {
    std::size_t next = 0;
    return WriteAppPrefsFile(path, [&] { return next < records.size() ? &records[next++] : nullptr; });
}

TEST(PrefsFile, RandomRecords_ComeBackInOrder) {
    const test::ScratchFolder scratch;
    std::mt19937 random(22);
    for (const int count : {0, 1, 40}) {
        std::vector<AppPrefs> records;
        std::vector<Image> images;
        for (int i = 0; i < count; ++i) {
            // Control characters have no XML form, so these begin at the blank.
            records.push_back(RandomRecord(random, 0x20));
            images.push_back(ImageOf(records.back()));
            const AppPrefs any = RandomRecord(random, 0);
            ASSERT_EQ(ImageOf(RecordOf(GetAppPrefsDictionary(any))), ImageOf(any));
        }
        ASSERT_EQ(WriteFile(scratch.Path("export"), records), noErr);
        const Reading reading = ReadFile(scratch.Path("export"));
        EXPECT_EQ(reading.status, noErr);
        EXPECT_EQ(reading.records, images);
    }
}

// The XML of docs/property-list.md.
std::string DocumentedExample() {
    const std::string page = test::ReadWhole(DREVIX_TEST_DATA "/../../docs/property-list.md");
    const std::size_t start = page.find("```xml\n") + 7;
    return page.substr(start, page.find("```", start) - start);
}

TEST(PrefsFile, ExampleOfItsPage_IsReadWholeOrNotAtAll) {
    const test::ScratchFolder scratch;
    const std::string path = scratch.Path("import");
    const std::string example = DocumentedExample();
    AppPrefs expected = {};
    expected.application = FourCharCode("SkCh");
    getPascalString("Sketch", expected.appFileName.data(), kMaxFileNameLength);
    getPascalString("Sketch Caf\xC3\xA9", expected.appName.data(), kMaxAppNameLength);
    expected.active = expected.device[0].click = 1;
    expected.device[0].navSensitivity = 100;
    expected.device[0].action[17].command = 64;
    expected.device[0].action[17].keyCode = kNoKeyCode;
    getPascalString("Notes", expected.device[0].action[17].data.data(), kMaxAppNameLength);

    // Beside other elements, which are skipped.
    std::string several = example;
    const std::string array = "<array>\n";
    several.insert(several.find(array) + array.size(), "<true/><string>x</string><array><dict/></array>");
    test::WriteWhole(path, several);
    EXPECT_EQ(ReadFile(path).records, std::vector{ImageOf(expected)});

    for (std::size_t length = 0; length <= example.size(); ++length) {
        test::WriteWhole(path, example.substr(0, length));
        const bool whole = length >= example.find("</plist>") + 8;
        const Reading reading = ReadFile(path);
        ASSERT_EQ(reading.status, whole ? noErr : -1) << length;
        ASSERT_EQ(reading.records.size(), whole ? 1U : 0U) << length;
    }
    std::string dictionary = example;
    dictionary.erase(dictionary.rfind("</array>"), 8).erase(dictionary.find("<array>"), 7);
    test::WriteWhole(path, dictionary);
    EXPECT_EQ(ReadFile(path).status, -1) << "the root is a dictionary";
    EXPECT_EQ(ReadFile(scratch.Path("missing")).status, fnfErr);
}

TEST(PrefsFile, AnyFailure_HandsOverNothingAndKeepsTheOldFile) {
    const test::ScratchFolder scratch;
    const std::string path = scratch.Path("export");
    std::mt19937 random(23);
    const std::vector<AppPrefs> records(3, RandomRecord(random, 0x20));
    ASSERT_EQ(WriteFile(path, {gDefaultGlobalPrefs}), noErr);
    const std::string old = test::ReadWhole(path);
    for (const bool reads : {true, false}) {
        for (int failAt = 1;; ++failAt) {
            ASSERT_LT(failAt, 100);
            Reading reading = {};
            bool hit = false;
            {
                const test::FaultyDisk faults(failAt, test::Lasts::Once, EIO);
                reading = reads ? ReadFile(path) : Reading{WriteFile(path, records), {}};
                hit = faults.WasHit();
            }
            if (!hit) {
                EXPECT_EQ(reading.status, noErr);
                break;
            }
            if (reading.status != noErr) {
                EXPECT_TRUE(reading.records.empty());
                EXPECT_EQ(test::ReadWhole(path), old) << failAt;
            } else if (!reads) { // a call whose failure is not the file's: that of closing or asking
                ASSERT_EQ(ReadFile(path).records.size(), records.size()) << failAt;
                test::WriteWhole(path, old);
            }
        }
    }
}

TEST(PrefsFile, CallerOutOfMemory_IsAStatus) {
    const test::ScratchFolder scratch;
    const std::string path = scratch.Path("export");
    ASSERT_EQ(WriteFile(path, {gDefaultGlobalPrefs, gDefaultGlobalPrefs}), noErr);
    const std::string old = test::ReadWhole(path);
    EXPECT_EQ(ReadAppPrefsFile(path, [](const AppPrefs &) { throw std::bad_alloc(); }), memFullErr);
    bool given = false;
    const auto next = [&]() -> const AppPrefs * {
        if (std::exchange(given, true)) {
            throw std::bad_alloc();
        }
        return &gDefaultGlobalPrefs;
    };
    EXPECT_EQ(WriteAppPrefsFile(path, next), memFullErr);
    EXPECT_EQ(test::ReadWhole(path), old);
}

} // namespace
} // namespace drevix
