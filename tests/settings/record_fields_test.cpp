// The fields of a record, in its bytes and in a property list.
#include "platform/plist/json.h"
#include "tests/settings/settings_files.h"

#include <array>
#include <bit>

namespace drevix::test {
namespace {

// The application of the pages' examples, with the other values of a base's global record.
AppPrefs Sketch(const QBaseOwner &base) {
    return MakeAppPrefs(base.get(), FourCharCode("SkCh"), "Sketch", "Sketch Caf\xC3\xA9");
}

// Its bytes: 16 a line, behind their place; what is left out is 0.
std::string PublishedRecord() {
    std::istringstream lines(FencedBlock(DREVIX_TEST_DATA "/../../docs/settings-record.md", "hex"));
    std::string bytes(sizeof(AppPrefs), '\0');
    for (std::string line; std::getline(lines, line);) {
        bytes.replace(std::stoul(line.substr(0, 4), nullptr, 16), 16, FromHex(line.substr(4)));
    }
    return bytes;
}

TEST(AppPrefs, ExampleOfItsPage_IsBuiltFromItsFields) {
    AppPrefs prefs = Sketch(MakeBase({gDefaultGlobalPrefs}));
    DevicePrefs &device = prefs.device[0];
    device.useSeparateNavSens = device.useSeparateNavSpeed = 1;
    device.navSensitivityX = 80;
    const auto set = [&](std::string_view key, std::uint16_t command, int modifiers, std::uint8_t keyCode) {
        ActionSlot &slot = device.action[FindControlSlot(key)->slot];
        slot.command = command;
        slot.modifiers = static_cast<std::uint16_t>(modifiers);
        slot.keyCode = keyCode;
    };
    set("ringUp", 224, kShiftModifier, kNoKeyCode);
    set("ringCW", 4, 0, kNoKeyCode);
    set("buttonP", 64, 0, kNoKeyCode);
    getPascalString("Notes", device.action[17].data.data(), kMaxAppNameLength);
    set("buttonII", 32, kCommandModifier | kShiftModifier, 1);
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(&prefs), sizeof prefs), PublishedRecord());
}

TEST(ControlSlots, EachSlot_HasItsAxis) {
    const std::string axes = "XXYYZZ--XZ......-----..........."; // a dot for a slot without a control
    for (SlotIndex slot = 0; slot < kActionSlots; ++slot) {
        const ControlSlot *const row = FindControlSlot(slot);
        EXPECT_EQ(row != nullptr ? "-XYZ"[static_cast<int>(row->axis)] : '.', axes[slot]) << slot;
    }
}

using Image = std::array<std::uint8_t, sizeof(AppPrefs)>; // a record's bytes

Image ImageOf(const AppPrefs &prefs) {
    return std::bit_cast<Image>(prefs);
}

AppPrefs RecordOf(const PropertyListDictionary &dictionary) {
    AppPrefs prefs = {};
    EXPECT_TRUE(GetAppPrefsFromDictionary(&prefs, dictionary));
    return prefs;
}

// The documented fields: offset, bytes (0: a flag, -1: text), path; of the slots, offsets within one.
struct Field {
    int offset, width;
    std::string path;
};
// clang-format off
const std::string kDevice = "devices/veltrana/";
const std::vector<Field> kRecordFields = {
    {0, 4, "signature"}, {4, -1, "fileName"}, {68, -1, "configName"}, {100, 0, "active"},
    {116, 0, kDevice + "clickEnabled"}, {117, 1, kDevice + "ringSensitivity"},
    {118, 1, kDevice + "tunerSensitivity"}, {119, 1, kDevice + "ringSpeed"},
    {120, 1, kDevice + "ringSensitivitySeparate"}, {121, 1, kDevice + "ringSensitivityX"},
    {122, 1, kDevice + "ringSensitivityY"}, {123, 1, kDevice + "ringSensitivityZ"},
    {124, 1, kDevice + "ringSpeedSeparate"}, {125, 1, kDevice + "ringSpeedX"},
    {126, 1, kDevice + "ringSpeedY"}, {127, 1, kDevice + "ringSpeedZ"},
};
const std::vector<Field> kSlotFields = {
    {0, 2, "action"}, {2, 2, "modifiers"}, {4, 1, "keyCode"}, {5, 1, "repeat"}, {6, 2, "delay"},
    {8, 4, "menu"}, {16, -1, "data"},
};
const std::map<std::string, int> kSlots = {
    {"ringLeft", 0}, {"ringRight", 1}, {"ringUp", 2}, {"ringDown", 3}, {"ringXYRest", 8}, {"ringCCW", 4},
    {"ringCW", 5}, {"ringZRest", 9}, {"tunerCCW", 6}, {"tunerCW", 7}, {"buttonV", 16}, {"buttonP", 17},
    {"buttonI", 18}, {"buttonII", 19}, {"buttonIII", 20},
};
// clang-format on

// All fields that travel, with their offset in the record and their path in the dictionary.
std::vector<Field> AllFields() {
    std::vector<Field> fields = kRecordFields;
    for (const auto &[key, slot] : kSlots) {
        for (const auto &[offset, width, name] : kSlotFields) {
            fields.push_back({132 + 48 * slot + offset, width, kDevice + "assignments/" + key + "/" + name});
        }
    }
    return fields;
}

// A dictionary with one value at the end of a path.
PropertyListDictionary Nest(std::string_view path, PropertyList value) {
    PropertyListDictionary dictionary;
    const std::size_t end = std::min(path.find('/'), path.size());
    dictionary.Add(std::string(path.substr(0, end)),
                   end == path.size() ? std::move(value) : Nest(path.substr(end + 1), std::move(value)));
    return dictionary;
}

// Reading alone shows that each key is its own field's; writing then cannot have mixed them up.
TEST(PrefsDictionary, EachKey_IsReadIntoItsFieldAndWrittenFromIt) {
    std::set<std::size_t> travels; // the offsets whose bytes have a key
    for (const auto &[offset, width, path] : AllFields()) {
        for (int byte = 0; byte < std::max(width, 1); ++byte) {
            const auto at = static_cast<std::size_t>(offset + byte);
            Image expected = {};
            expected[at] = 1;
            const PropertyList number = std::int64_t{1} << (8 * byte);
            const PropertyList text = std::string(1, '\0'); // its length alone shows
            EXPECT_EQ(ImageOf(RecordOf(Nest(path, width < 0 ? text : number))), expected) << path;
            travels.insert(at);
        }
    }
    for (std::size_t offset = 0; offset < sizeof(AppPrefs); ++offset) {
        Image image = {};
        image[offset] = 1;
        const AppPrefs back = RecordOf(GetAppPrefsDictionary(std::bit_cast<AppPrefs>(image)));
        EXPECT_EQ(ImageOf(back), travels.contains(offset) ? image : Image{}) << offset;
    }
    const std::string written = JsonText(GetAppPrefsDictionary(gDefaultGlobalPrefs));
    EXPECT_EQ(std::ranges::count(written, ':'), 4 + 12 + 15 * 7 + 15 + 3) << "a key is missing or too many";
    EXPECT_THAT(written, testing::HasSubstr("\"active\": true"));
    EXPECT_THAT(written, testing::HasSubstr("\"clickEnabled\": true"));
    EXPECT_THAT(written, testing::HasSubstr("\"ringSpeedSeparate\": 0"));
}

TEST(PrefsDictionary, OddValues_KeepTheirLowBitsOrCountAsAbsent) {
    const std::string slot = "devices/veltrana/assignments/ringLeft/";
    const struct {
        std::string path;
        PropertyList value;
        std::size_t offset;
        std::string bytes; // what the zero record then has there; the rest of it stays zero
    } rows[] = {
        {slot + "keyCode", std::int64_t{-1}, 136, "\xFF"},
        {slot + "menu", std::int64_t{0x7123456789ABCDEF}, 140, "\xEF\xCD\xAB\x89"},
        {"fileName", std::string(80, 'x'), 4, "\x3F" + std::string(63, 'x')},
        {"factory", true, 101, "\1"},
        {"active", std::int64_t{256}, 100, "\1"},
        {"active", std::string("1"), 100, ""},
        {"signature", 5.0, 0, ""},
        {"fileName", std::int64_t{5}, 4, ""},
        {"devices/veltrana/assignments/ringLeft", PropertyListArray{std::int64_t{5}}, 132, ""},
    };
    for (const auto &row : rows) {
        Image expected = {};
        std::memcpy(expected.data() + row.offset, row.bytes.data(), row.bytes.size());
        EXPECT_EQ(ImageOf(RecordOf(Nest(row.path, row.value))), expected) << row.path;
    }
}

TEST(PrefsFile, ExampleOfItsPage_IsRead) {
    const ScratchFolder scratch;
    const std::string path = scratch.Path("import");
    AppPrefs expected = Sketch(MakeBase({}));
    expected.device[0].click = 1;
    expected.device[0].navSensitivity = 100;
    expected.device[0].action[17].command = 64;
    expected.device[0].action[17].keyCode = kNoKeyCode;
    getPascalString("Notes", expected.device[0].action[17].data.data(), kMaxAppNameLength);

    std::string example = FencedBlock(DREVIX_TEST_DATA "/../../docs/property-list.md", "xml");
    const std::string array = "<array>\n";
    // Beside other elements, which are skipped.
    example.insert(example.find(array) + array.size(), "<true/><string>x</string><array><dict/></array>");
    std::vector<Image> records;
    const auto take = [&](const AppPrefs &record) { records.push_back(ImageOf(record)); };
    WriteWhole(path, example);
    EXPECT_EQ(ReadAppPrefsFile(path, take), noErr);
    EXPECT_EQ(records, std::vector{ImageOf(expected)});
    WriteWhole(path, example.substr(0, example.find("</plist>")));
    EXPECT_EQ(ReadAppPrefsFile(path, take), -1);
    EXPECT_EQ(records.size(), 1U) << "a damaged file gives no record at all";
}

} // namespace
} // namespace drevix::test
