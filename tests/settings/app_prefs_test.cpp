#include "settings/app_prefs.h"
#include "settings/pascal_strings.h"
#include "tests/support/testing.h"

namespace drevix::test {
namespace {

// The bytes of a page's example: 16 a line, behind their place; what is left out is 0.
std::string PublishedExample(const std::string &page) {
    std::istringstream lines(FencedBlock(DREVIX_TEST_DATA "/../../docs/" + page, "hex"));
    std::string bytes(sizeof(AppPrefs), '\0');
    for (std::string line; std::getline(lines, line);) {
        bytes.replace(std::stoul(line.substr(0, 4), nullptr, 16), 16, FromHex(line.substr(4)));
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
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(&prefs), sizeof prefs),
              PublishedExample("settings-record.md"));
}

TEST(ControlSlots, EachSlot_HasItsAxis) {
    const std::string axes = "XXYYZZ--XZ......-----..........."; // a dot for a slot without a control
    for (SlotIndex slot = 0; slot < kActionSlots; ++slot) {
        const ControlSlot *const row = FindControlSlot(slot);
        EXPECT_EQ(row != nullptr ? "-XYZ"[static_cast<int>(row->axis)] : '.', axes[slot]) << slot;
    }
}

} // namespace
} // namespace drevix::test
