#include "settings/app_prefs.h"
#include "settings/pascal_strings.h"
#include "tests/support/scratch.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <sstream>
#include <string>

namespace drevix {
namespace {

std::string BytesOf(const AppPrefs &prefs) {
    std::string bytes(sizeof prefs, '\0');
    std::memcpy(bytes.data(), &prefs, sizeof prefs);
    return bytes;
}

TEST(AppPrefs, DefaultGlobalRecord_HasTheseBytes) {
    std::string expected(1668, '\0');
    expected[100] = expected[116] = 1;
    for (const std::size_t at : {117U, 118U, 119U, 121U, 122U, 123U, 125U, 126U, 127U}) {
        expected[at] = 100;
    }
    EXPECT_EQ(BytesOf(gDefaultGlobalPrefs), expected);
}

// The bytes of docs/settings-record.md, row by row.
std::string DocumentedExample() {
    std::istringstream page(test::ReadWhole(DREVIX_TEST_DATA "/../../docs/settings-record.md"));
    std::string bytes(sizeof(AppPrefs), '\0');
    bool inside = false;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("```")) {
            inside = line == "```hex";
        } else if (inside) {
            const std::string row = test::FromHex(line.substr(4));
            EXPECT_EQ(row.size(), 16U) << line;
            bytes.replace(std::stoul(line.substr(0, 4), nullptr, 16), row.size(), row);
        }
    }
    return bytes;
}

TEST(AppPrefs, ExampleOfItsPage_IsBuiltFromItsFields) {
    AppPrefs prefs = gDefaultGlobalPrefs;
    prefs.application = FourCharCode("SkCh");
    getPascalString("Sketch", prefs.appFileName.data(), kMaxFileNameLength);
    getPascalString("Sketch Caf\xC3\xA9", prefs.appName.data(), kMaxAppNameLength);
    DevicePrefs &device = prefs.device[0];
    device.useSeparateNavSens = device.useSeparateNavSpeed = 1;
    device.navSensitivityX = 80;
    ActionSlot scroll = {};
    scroll.command = 224;
    scroll.modifiers = kShiftModifier;
    scroll.keyCode = kNoKeyCode;
    device.action[FindControlSlot("ringUp")->slot] = scroll;
    ActionSlot global = {};
    global.command = 4;
    global.keyCode = kNoKeyCode;
    device.action[FindControlSlot("ringCW")->slot] = global;
    ActionSlot item = {};
    item.command = 64;
    item.keyCode = kNoKeyCode;
    getPascalString("Notes", item.data.data(), kMaxAppNameLength);
    device.action[FindControlSlot("buttonP")->slot] = item;
    ActionSlot keystroke = {};
    keystroke.command = 32;
    keystroke.modifiers = kCommandModifier | kShiftModifier;
    keystroke.keyCode = 1;
    device.action[FindControlSlot("buttonII")->slot] = keystroke;
    EXPECT_EQ(BytesOf(prefs), DocumentedExample());
}

TEST(ControlSlots, FoundBySlotAndByExactKey) {
    std::set<std::string_view> keys;
    int controls = 0;
    for (SlotIndex slot = -2; slot < 40; ++slot) {
        const ControlSlot *row = FindControlSlot(slot);
        ASSERT_EQ(row != nullptr, (slot >= 0 && slot <= 9) || (slot >= 16 && slot <= 20)) << slot;
        if (row != nullptr) {
            ++controls;
            EXPECT_EQ(row->slot, slot);
            EXPECT_EQ(FindControlSlot(row->key), row) << "a key stands twice";
            const bool tuner = slot == 6 || slot == 7;
            EXPECT_EQ(row->group, slot >= 16 ? ControlGroup::Buttons
                                  : tuner    ? ControlGroup::Tuner
                                             : ControlGroup::Ring);
            const Axis ring[] = {Axis::X, Axis::X,    Axis::Y,    Axis::Y, Axis::Z,
                                 Axis::Z, Axis::None, Axis::None, Axis::X, Axis::Z};
            EXPECT_EQ(row->axis, slot < 10 ? ring[slot] : Axis::None) << slot;
        }
    }
    EXPECT_EQ(controls, 15);
    for (const char *key : {"", "ringleft", "ringLeft ", "button", "buttonIIII"}) {
        EXPECT_EQ(FindControlSlot(key), nullptr) << key;
    }
}

} // namespace
} // namespace drevix
