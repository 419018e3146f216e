// The commands that show: list, show, actions.

#include "cli/action_names.h"
#include "cli/commands.h"
#include "cli/menu_titles.h"
#include "cli/record_text.h"
#include "cli/session.h"
#include "cli/text_table.h"
#include "keyboard/key_names.h"
#include "platform/base/plain_text.h"
#include "platform/base/translation.h"
#include "platform/plist/json.h"
#include "settings/prefs_dictionary.h"
#include "wording/action_text.h"

namespace drevix {
namespace {

PropertyListDictionary ActionEntry(const ActionInfo &action) {
    PropertyListDictionary entry;
    entry.Add("code", std::int64_t{action.code});
    entry.Add("name", std::string(action.title));
    entry.Add("group", std::string(ActionGroupTitle(action.group)));
    PropertyListArray restrictions;
    for (const RestrictionInfo *restriction : RestrictionsOf(action)) {
        restrictions.emplace_back(std::string(restriction->key));
    }
    entry.Add("restrictions", std::move(restrictions));
    return entry;
}

TableRow ActionRow(const ActionInfo &action) {
    std::string restrictions;
    for (const RestrictionInfo *restriction : RestrictionsOf(action)) {
        restrictions.append(restrictions.empty() ? "" : ", ").append(Translated(restriction->summary));
    }
    return {std::to_string(action.code), std::string(action.title),
            Translated(ActionGroupTitle(action.group)), restrictions};
}

std::string AxesText(std::uint8_t all, std::uint8_t separate, std::uint8_t x, std::uint8_t y,
                     std::uint8_t z) {
    return separate == 0 ? std::to_string(all)
                         : "X " + std::to_string(x) + ", Y " + std::to_string(y) + ", Z " + std::to_string(z);
}

std::vector<TableRow> ValueRows(const AppPrefs &record) {
    const DevicePrefs &device = record.device[0];
    std::vector<TableRow> rows;
    if (record.application != kGlobalSignature) {
        rows.push_back({Translated("File name"), FileName(record)});
        rows.push_back({Translated("Signature"), SignatureText(record.application)});
        rows.push_back({Translated("Came with the panel"), YesOrNo(record.factory)});
    }
    rows.push_back({Translated("Active"), YesOrNo(record.active)});
    rows.push_back({Translated("Click sound"), YesOrNo(device.click)});
    rows.push_back({Translated("Ring sensitivity"),
                    AxesText(device.navSensitivity, device.useSeparateNavSens, device.navSensitivityX,
                             device.navSensitivityY, device.navSensitivityZ)});
    rows.push_back(
        {Translated("Ring speed"), AxesText(device.navSpeed, device.useSeparateNavSpeed, device.navSpeedX,
                                            device.navSpeedY, device.navSpeedZ)});
    rows.push_back({Translated("Tuner sensitivity"), std::to_string(device.toolSensitivity)});
    return rows;
}

// The controls that do something.
std::vector<TableRow> ControlRows(const AppPrefs &record) {
    const MenuTitles titles(record);
    std::vector<TableRow> rows;
    for (const ControlSlot &control : kControlSlots) {
        const ActionSlot &slot = record.device[0].action[control.slot];
        if (slot.command != kActionNone) {
            rows.push_back({std::string(control.key), ActionTitle(slot.command),
                            ActionDetails(slot, titles.Find(slot.crc))});
        }
    }
    return rows;
}

} // namespace

Outcome ListRecords(const Request &request) {
    Session session(request);
    if (Outcome outcome = session.OpenForReading(); !outcome.IsDone()) {
        return outcome;
    }
    if (request.line.json) {
        PropertyListArray entries;
        for (const AppPrefs *record : session.Records()) {
            PropertyListDictionary entry = RecordEntry(*record);
            entry.Add("number", static_cast<std::int64_t>(entries.size()));
            entries.emplace_back(std::move(entry));
        }
        request.Out() << JsonText(entries) << "\n";
        return Done();
    }
    std::vector<TableRow> rows;
    for (const AppPrefs *record : session.Records()) {
        rows.push_back({ShownName(*record), FileName(*record), SignatureText(record->application),
                        YesOrNo(record->factory), YesOrNo(record->active), std::to_string(rows.size())});
    }
    request.Out() << request.Table({Translated("NAME"), Translated("FILE NAME"), Translated("SIGNATURE"),
                                    Translated("FACTORY"), Translated("ACTIVE"), Translated("NUMBER")},
                                   rows);
    return Done();
}

Outcome ShowRecord(const Request &request) {
    Session session(request);
    AppPrefs record{};
    if (Outcome outcome = session.OpenForReading(&record); !outcome.IsDone()) {
        return outcome;
    }
    if (request.line.json) {
        PropertyListDictionary dictionary = GetAppPrefsDictionary(record);
        dictionary.Add("factory", record.factory != 0);
        request.Out() << JsonText(std::move(dictionary)) << "\n";
        return Done();
    }
    GetKeyboardInformation();
    request.Out() << PlainText(ShownName(record)) << "\n\n"
                  << request.Table({}, ValueRows(record)) << "\n"
                  << request.Table({Translated("CONTROL"), Translated("ACTION"), Translated("DETAILS")},
                                   ControlRows(record));
    return Done();
}

Outcome ListActions(const Request &request) {
    if (request.line.json) {
        PropertyListArray entries;
        for (const ActionInfo &action : AllActions()) {
            entries.emplace_back(ActionEntry(action));
        }
        request.Out() << JsonText(entries) << "\n";
        return Done();
    }
    std::vector<TableRow> rows;
    for (const ActionInfo &action : AllActions()) {
        rows.push_back(ActionRow(action));
    }
    request.Out() << request.Table(
        {Translated("CODE"), Translated("NAME"), Translated("GROUP"), Translated("RESTRICTIONS")}, rows);
    return Done();
}

} // namespace drevix
