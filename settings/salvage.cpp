#include "settings/salvage.h"

#include "platform/base/status.h"
#include "settings/app_prefs.h"

#include <array>

namespace drevix {

std::vector<std::string_view> FindWholeRecords(std::string_view bytes) {
    constexpr std::uint32_t kSize = kQBaseRecordHeaderSize + sizeof(AppPrefs);
    constexpr std::array<std::uint32_t, 2> kHead = {kSize, sizeof(AppPrefs)}; // size and length; any flags
    const std::string_view head(reinterpret_cast<const char *>(kHead.data()), sizeof kHead);
    std::vector<std::string_view> records;
    for (std::size_t at = bytes.find(head); at != bytes.npos && bytes.size() - at >= kSize;) {
        records.push_back(bytes.substr(at + kQBaseRecordHeaderSize, sizeof(AppPrefs)));
        at = bytes.find(head, at + kSize);
    }
    return records;
}

OSErr AddWholeRecords(QBaseHandle base, std::string_view bytes) {
    for (const std::string_view record : FindWholeRecords(bytes)) {
        if (QBaseAddRecord(base, record.data(), static_cast<std::int32_t>(record.size())) == kNoRecord) {
            return memFullErr;
        }
    }
    return noErr;
}

} // namespace drevix
