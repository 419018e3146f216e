// The command that lists the companion dial's menu entries.

#include "cli/commands.h"
#include "cli/menu_titles.h"
#include "cli/record_text.h"
#include "cli/session.h"
#include "cli/text_table.h"
#include "companion/korvane_crc.h"
#include "platform/base/translation.h"
#include "platform/plist/json.h"
#include "settings/action_commands.h"

namespace drevix {
namespace {

// The key of the button that runs the entry, or empty.
std::string ControlOf(const AppPrefs &record, const std::string &title) {
    const std::uint32_t crc = KorvaneStringCRC(title);
    for (const ControlSlot &control : kControlSlots) {
        const ActionSlot &slot = record.device[0].action[control.slot];
        if (IsToolMenuSlot(control.slot) && slot.command == kActionToolMenu && slot.crc == crc) {
            return std::string(control.key);
        }
    }
    return {};
}

void PrintMenu(const Request &request, const AppPrefs &record, const MenuTitles &titles) {
    PropertyListArray entries;
    std::vector<TableRow> rows;
    for (const std::string &title : titles.All()) {
        const std::string control = ControlOf(record, title);
        rows.push_back({title, control});
        PropertyListDictionary entry;
        entry.Add("title", title);
        entry.Add("control", control);
        entries.emplace_back(std::move(entry));
    }
    if (request.line.json) {
        request.Out() << JsonText(std::move(entries)) << "\n";
    } else {
        request.Out() << request.Table({Translated("TITLE"), Translated("CONTROL")}, rows);
    }
}

} // namespace

Outcome ListMenu(const Request &request) {
    Session session(request);
    AppPrefs record{};
    if (Outcome outcome = session.OpenForReading(&record); !outcome.IsDone()) {
        return outcome;
    }
    const MenuTitles titles(record);
    if (!titles.HasFile()) {
        return Failed(
            Translated("the companion dial has no menu entries for %1; set them up with its own program",
                       QuotedText(ShownName(record))));
    }
    PrintMenu(request, record, titles);
    return Done();
}

} // namespace drevix
