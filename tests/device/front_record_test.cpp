#include "device/front_record.h"

#include "settings/action_commands.h"
#include "tests/settings/settings_files.h"

namespace drevix::test {
namespace {

AppPrefs WithCommands(AppPrefs record, std::initializer_list<std::pair<SlotIndex, ActionCommand>> commands) {
    for (const auto &[slot, command] : commands) {
        record.device[0].action[slot].command = command;
    }
    return record;
}

TEST(FrontRecord, TheFirstRuleThatFindsOneDecides) {
    const QBaseOwner base =
        MakeBase({MakeRecord(0, ""), MakeRecord(1, "gimp"), MakeRecord(1, "org.gnome.gedit"),
                  MakeRecord(1, "kate"), MakeRecord(1, "libreoffice-writer"), MakeRecord(1, "org.one.viewer"),
                  MakeRecord(1, "org.two.viewer"), MakeRecord(1, "photoshop"), MakeRecord(1, "com.paint.app"),
                  MakeRecord(1, "python3"), MakeRecord(1, "Zeichnen für alle")});
    const std::map<std::string, RecordEntry> entries = {
        {"libreoffice-writer", {"libreoffice-Writer", {"/usr/lib/libreoffice/program/soffice", "--writer"}}},
        {"gimp", {"", {"/usr/bin/env", "-u", "A=b", "/opt/Gimp-2.10", "file"}}},
        {"com.paint.app",
         {"", {"/usr/bin/flatpak", "run", "--branch=stable", "--command=/app/bin/mypaint", "x"}}},
        {"org.one.viewer", {"kate", {}}},
    };
    std::vector<std::string> asked;
    const FrontRecords records(base.get(), [&](const std::string &name) {
        asked.push_back(name);
        const auto found = entries.find(name);
        return found == entries.end() ? std::nullopt : std::optional(found->second);
    });
    EXPECT_EQ(asked.size(), 10U);
    static const std::tuple<const char *, FrontWindow, const char *> kRows[] = {
        {"1, before an entry that names it", {"", "Kate", "", "", 0}, "kate"},
        {"1, the id of an entry", {"org.gnome.gedit.desktop", "", "", "", 0}, "org.gnome.gedit"},
        {"1, a Windows program", {"", "photoshop.EXE", "", "", 0}, "photoshop"},
        {"1, the name when the class is none's", {"", "Main", "gimp", "", 0}, "gimp"},
        {"1, beyond ASCII", {"", "zeichnen für alle", "", "", 0}, "Zeichnen für alle"},
        {"2", {"", "libreoffice-writer", "libreoffice", "/usr/lib/soffice.bin", 0}, "libreoffice-writer"},
        {"3, the record's last part", {"", "Gedit", "gedit", "", 0}, "org.gnome.gedit"},
        {"3, the window's last part", {"org.kde.Kate", "", "", "", 0}, "kate"},
        {"3, two would fit", {"", "viewer", "", "", 0}, ""},
        {"4, behind env", {"", "Gimp-2.10", "", "", 0}, "gimp"},
        {"4, in a sandbox", {"", "", "mypaint", "", 0}, "com.paint.app"},
        {"5", {"", "Tk", "main", "/usr/bin/python3", 0}, "python3"},
        {"the class before the program", {"", "Gedit", "", "/usr/bin/python3", 0}, "org.gnome.gedit"},
        {"nothing fits", {"org.other", "Other", "other", "/usr/bin/other", 0}, ""},
        {"no window", {}, ""},
    };
    for (const auto &[what, front, record] : kRows) {
        const RecordNumber number = records.Find(front);
        EXPECT_EQ(number == 0 ? "" : NameOf(*GetAppPrefs(base.get(), number)), record) << what;
    }
}

TEST(FrontRecord, SlotsInForce_FollowGlobalSettingAndRingMode) {
    AppPrefs off = MakeRecord(1, "off");
    off.active = 0;
    const QBaseOwner base = MakeBase({
        WithCommands(MakeRecord(0, ""), {{0, 224}, {1, 4}, {2, 225}, {16, 182}, {17, 4}}),
        WithCommands(MakeRecord(1, "own"), {{0, 226}, {1, 4}, {2, 7}, {6, 131}, {16, 4}, {17, 4}, {18, 7}}),
        off,
    });
    static const struct {
        RecordNumber record;
        SlotIndex slot;
        int command, inGlobalMode; // -1: nothing is done
    } kRows[] = {
        {1, 0, 226, 224}, // the ring by turns
        {1, 1, -1, -1},   // left to a record that leaves it again
        {1, 2, 7, 7},     // the way back stays
        {1, 6, 131, 131}, // not on the ring
        {1, 16, 182, 182}, {1, 17, -1, -1}, {1, 18, 7, 7},   {0, 0, 224, 224},
        {0, 17, -1, -1},   {2, 0, -1, -1},  {1, 10, -1, -1}, // no control
        {1, -1, -1, -1},   {9, 0, -1, -1},
    };
    for (const auto &row : kRows) {
        const RecordsInForce records(base.get(), row.record);
        const auto command = [&](RingMode mode) {
            const ActionSlot *slot = records.SlotOf(row.slot, mode);
            return slot != nullptr ? slot->command : -1;
        };
        EXPECT_EQ(command(RingMode::Application), row.command) << row.record << ' ' << row.slot;
        EXPECT_EQ(command(RingMode::Global), row.inGlobalMode) << row.record << ' ' << row.slot;
    }
}

TEST(FrontRecord, SensitivityAndSpeed_AreThoseOfTheRecordThatTheRingFollows) {
    AppPrefs own = MakeRecord(1, "own");
    DevicePrefs &device = own.device[0];
    device.useSeparateNavSens = device.useSeparateNavSpeed = 1;
    std::tie(device.navSensitivityX, device.navSensitivityY, device.navSensitivityZ) = std::tuple(1, 2, 3);
    std::tie(device.navSpeedX, device.navSpeedY, device.navSpeedZ) = std::tuple(4, 5, 6);
    device.toolSensitivity = 9;
    AppPrefs global = MakeRecord(0, "");
    global.device[0].navSensitivity = 70;
    global.device[0].navSpeed = 80;
    const QBaseOwner base = MakeBase({global, own});
    const auto text = [](const RecordsInForce &records, RingMode mode) {
        const Sensitivities values = records.SensitivitiesOf(mode);
        std::vector<int> all = {values.x, values.y, values.z, values.tuner};
        for (const SlotIndex slot : std::initializer_list<SlotIndex>{8, 3, 5, 7, 16}) {
            all.push_back(records.SpeedOf(slot, mode));
        }
        return all;
    };
    const RecordsInForce records(base.get(), 1);
    EXPECT_EQ(text(records, RingMode::Application), (std::vector{1, 2, 3, 9, 4, 5, 6, 100, 100}));
    EXPECT_EQ(text(records, RingMode::Global), (std::vector{70, 70, 70, 9, 80, 80, 80, 100, 100}));
    EXPECT_EQ(text({}, RingMode::Application), (std::vector{100, 100, 100, 100, 100, 100, 100, 100, 100}));
}

} // namespace
} // namespace drevix::test
