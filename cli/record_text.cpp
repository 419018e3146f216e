#include "cli/record_text.h"

#include "platform/base/plain_text.h"
#include "platform/base/translation.h"
#include "platform/plist/json.h"
#include "settings/pascal_strings.h"

namespace drevix {

std::string RecordName(const AppPrefs &record) {
    return record.application == kGlobalSignature ? "Global Settings"
                                                  : stringWithPascalString(record.appName.data());
}

std::string ShownName(const AppPrefs &record) {
    return record.application == kGlobalSignature ? Translated("Global Settings") : RecordName(record);
}

std::string FileName(const AppPrefs &record) {
    return stringWithPascalString(record.appFileName.data());
}

std::string YesOrNo(std::uint8_t flag) {
    return flag != 0 ? Translated("yes") : Translated("no");
}

PropertyListDictionary RecordEntry(const AppPrefs &record) {
    PropertyListDictionary entry;
    entry.Add("name", RecordName(record));
    entry.Add("fileName", FileName(record));
    entry.Add("signature", std::int64_t{record.application});
    entry.Add("factory", record.factory != 0);
    entry.Add("active", record.active != 0);
    return entry;
}

void SayWhatWasDone(const Request &request, std::string_view done, const AppPrefs &record) {
    if (request.line.json) {
        request.Out() << JsonText(RecordEntry(record)) << "\n";
    } else {
        request.Out() << PlainText(Translated(done, QuotedText(ShownName(record)))) << "\n";
    }
}

} // namespace drevix
