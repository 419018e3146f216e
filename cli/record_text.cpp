#include "cli/record_text.h"

#include "platform/json.h"
#include "platform/plain_text.h"
#include "settings/pascal_strings.h"

#include <array>

namespace drevix {

std::string RecordName(const AppPrefs &record) {
    return record.application == kGlobalSignature ? "Global Settings"
                                                  : stringWithPascalString(record.appName.data());
}

std::string FileName(const AppPrefs &record) {
    return stringWithPascalString(record.appFileName.data());
}

std::string SignatureText(OSType signature) {
    if (signature == kGlobalSignature) {
        return "";
    }
    if (signature == kWildcardSignature) {
        return "any";
    }
    std::array<std::uint8_t, 5> text{4};
    for (std::size_t i = 0; i < 4; ++i) {
        text[i + 1] = static_cast<std::uint8_t>(signature >> (24 - 8 * i));
    }
    return stringWithPascalString(text.data());
}

std::string YesOrNo(std::uint8_t flag) {
    return flag != 0 ? "yes" : "no";
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
        request.Out() << PlainText(QuotedText(RecordName(record))) << " " << done << "\n";
    }
}

} // namespace drevix
