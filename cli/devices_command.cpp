// The command that asks the device helper: devices.

#include "cli/commands.h"
#include "cli/text_table.h"
#include "helperlink/device_text.h"
#include "platform/base/plain_text.h"
#include "platform/base/translation.h"
#include "platform/plist/json.h"

#include <algorithm>
#include <chrono>
#include <span>

namespace drevix {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint16_t kUnanswered = UINT16_MAX; // no helper reports that many devices
constexpr std::chrono::milliseconds kPatience{2000};
constexpr std::chrono::milliseconds kBetweenQuestions{1000};

// Receives answers in a list during its lifetime.
class AnswersInto {
  public:
    explicit AnswersInto(DeviceList *list) { InstallAppleEventHandlers(list); }
    AnswersInto(const AnswersInto &) = delete;
    AnswersInto &operator=(const AnswersInto &) = delete;
    ~AnswersInto() { RemoveAppleEventHandlers(); }
};

Outcome AskHelper(DeviceList *list) {
    const AnswersInto answers(list);
    const Clock::time_point end = Clock::now() + kPatience;
    list->count = kUnanswered;
    // Limits how often a helper that answers something else at once is asked.
    for (Clock::time_point next = Clock::now(); list->count == kUnanswered;) {
        const Clock::time_point now = Clock::now();
        if (now >= end) {
            return Failed(Translated("the device helper does not list its devices; stop it and try again"));
        }
        if (now >= next) {
            if (GetConnectedDevices(list) != noErr) {
                return Failed(
                    Translated("the device helper is not running; start the settings panel or DrevixHelper"));
            }
            next = now + kBetweenQuestions;
        }
        WaitForAppleEvents(std::chrono::ceil<std::chrono::milliseconds>(std::min(next, end) - now));
    }
    return Done();
}

PropertyListDictionary DeviceEntry(const ConnectedDevice &device) {
    PropertyListDictionary entry;
    entry.Add("productName", DeviceNameText(device.productName));
    entry.Add("vendorName", DeviceNameText(device.vendorName));
    entry.Add("version", DeviceVersionText(device.productVers));
    entry.Add("serialNumber", device.serialNumber[0] != 0 ? DeviceSerialText(device) : std::string());
    entry.Add("vendorID", std::int64_t{device.vendorID});
    entry.Add("productID", std::int64_t{device.productID});
    return entry;
}

} // namespace

Outcome ListDevices(const Request &request) {
    DeviceList list{};
    if (Outcome outcome = AskHelper(&list); !outcome.IsDone()) {
        return outcome;
    }
    const std::span devices(list.device, std::min<std::size_t>(list.count, kMostDevices));
    if (request.line.json) {
        PropertyListArray entries;
        for (const ConnectedDevice &device : devices) {
            entries.emplace_back(DeviceEntry(device));
        }
        request.Out() << JsonText(entries) << "\n";
        return Done();
    }
    if (devices.empty()) {
        request.Out() << Translated("no device is connected") << "\n";
        return Done();
    }
    std::vector<TableRow> rows;
    for (const ConnectedDevice &device : devices) {
        rows.push_back({PlainText(DeviceNameText(device.productName)), DeviceVersionText(device.productVers),
                        DeviceSerialText(device)});
    }
    request.Out() << request.Table({Translated("DEVICE"), Translated("VERSION"), Translated("SERIAL NUMBER")},
                                   rows);
    return Done();
}

} // namespace drevix
