#include "settings/app_prefs.h"
#include "settings/pascal_strings.h"
#include "tests/support/scratch.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>

namespace drevix {
namespace {

std::string BytesOf(const AppPrefs &prefs) {
    return {reinterpret_cast<const char *>(&prefs), sizeof prefs};
}

// The bytes of docs/settings-record.md, row by row.
std::string DocumentedExample() {
    const auto docs = std::filesystem::path(DREVIX_TEST_DATA).parent_path().parent_path() / "docs";
    std::istringstream page(test::ReadWhole(docs / "settings-record.md"));
    std::string bytes(sizeof(AppPrefs), '\0');
    bool inside = false;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("```")) {
            inside = line == "```hex";
        } else if (inside) {
            bytes.replace(std::stoul(line.substr(0, 4), nullptr, 16), 16, test::FromHex(line.substr(4)));
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
    EXPECT_EQ(BytesOf(prefs), DocumentedExample());
}

TEST(ControlSlots, EachSlot_HasItsAxisAndGroup) {
    // Axis and group of the slots 0 to 31; a dot for a slot without a control.
    const std::string_view axes = "XXYYZZ--XZ......-----...........";
    const std::string_view groups = "RRRRRRTTRR......BBBBB...........";
    for (SlotIndex slot = -1; slot <= kActionSlots; ++slot) {
        const ControlSlot *row = FindControlSlot(slot);
        const bool inside = slot >= 0 && slot < kActionSlots;
        const auto at = static_cast<std::size_t>(slot);
        ASSERT_EQ(row != nullptr, inside && axes[at] != '.') << slot;
        if (row != nullptr) {
            EXPECT_EQ("-XYZ"[static_cast<int>(row->axis)], axes[at]) << slot;
            EXPECT_EQ("RTB"[static_cast<int>(row->group)], groups[at]) << slot;
            EXPECT_EQ(FindControlSlot(row->key), row) << "a key stands twice";
        }
    }
    EXPECT_EQ(FindControlSlot("ringleft"), nullptr);
}

} // namespace
} // namespace drevix
