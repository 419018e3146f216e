#include "helper/devices_file.h"

#include "platform/base/field_words.h"
#include "platform/base/status.h"
#include "platform/base/translation.h"
#include "platform/files/shared_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <optional>
#include <tuple>

namespace drevix {
namespace {

constexpr std::size_t kSerialDigits = 14;
constexpr std::size_t kMostBytes = 65536; // of a file

// Reads all of a text as hexadecimal digits.
std::optional<unsigned> ReadHexDigits(std::string_view text) {
    unsigned number = 0;
    const char *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, 16);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

bool TakeIdentifier(std::string_view text, std::uint16_t *field) {
    const std::optional<std::int64_t> number = FieldNumber(text, 0, UINT16_MAX);
    *field = static_cast<std::uint16_t>(number.value_or(0));
    return number.has_value();
}

bool TakeVendor(std::string_view text, ConnectedDevice *device) {
    return TakeIdentifier(text, &device->vendorID);
}

bool TakeProduct(std::string_view text, ConnectedDevice *device) {
    return TakeIdentifier(text, &device->productID);
}

bool TakeInterface(std::string_view text, ConnectedDevice *device) {
    const std::optional<std::int64_t> number = FieldNumber(text, 0, UINT8_MAX);
    device->interfaceNum = static_cast<std::uint8_t>(number.value_or(0));
    return number.has_value();
}

bool AreDigits(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

// Decimal digits read as hexadecimal ones are binary-coded decimal.
bool TakeVersion(std::string_view text, ConnectedDevice *device) {
    const std::size_t point = text.find('.');
    if (point == 0 || point > 2 || text.size() != point + 3) {
        return false;
    }
    const std::string digits = std::string(text.substr(0, point)) + std::string(text.substr(point + 1));
    device->productVers = static_cast<std::uint16_t>(ReadHexDigits(digits).value_or(0));
    return AreDigits(digits);
}

bool TakeSerial(std::string_view text, ConnectedDevice *device) {
    if (text.size() != kSerialDigits) {
        return false;
    }
    for (std::size_t i = 0; i < kSerialDigits; i += 2) {
        const std::optional<unsigned> byte = ReadHexDigits(text.substr(i, 2));
        if (!byte) {
            return false;
        }
        device->serialNumber[(kSerialDigits - i) / 2] = static_cast<std::uint8_t>(*byte);
    }
    device->serialNumber[0] = 1;
    return true;
}

template <std::uint8_t (ConnectedDevice::*kName)[128]>
bool TakeName(std::string_view text, ConnectedDevice *device) {
    // A zero byte ends the name.
    if (text.size() >= sizeof(device->*kName)) {
        return false;
    }
    std::memcpy(device->*kName, text.data(), text.size());
    return true;
}

constexpr auto kDeviceFields = std::to_array<Field<ConnectedDevice>>({
    {"version", ToTranslate("such as 1.05"), TakeVersion},
    {"serial", ToTranslate("14 hexadecimal digits"), TakeSerial},
    {"vendor", ToTranslate("a number up to 65535 or 0xFFFF"), TakeVendor},
    {"product", ToTranslate("a number up to 65535 or 0xFFFF"), TakeProduct},
    {"interface", ToTranslate("a number up to 255"), TakeInterface},
    {"vendorName", ToTranslate("at most 127 bytes"), TakeName<&ConnectedDevice::vendorName>},
    {"productName", ToTranslate("at most 127 bytes"), TakeName<&ConnectedDevice::productName>},
});

} // namespace

bool AddDevice(std::string_view line, DeviceList *list, std::string *problem) {
    std::string_view rest = TrimmedText(line);
    if (rest.empty() || rest.starts_with('#')) {
        return true;
    }
    ConnectedDevice device{};
    while (!rest.empty()) {
        if (!TakeField(kDeviceFields, &rest, &device, problem)) {
            return false;
        }
    }
    if (list->count >= kMostDevices) {
        *problem = Translated("more than %1 devices", kMostDevices);
        return false;
    }
    list->device[list->count++] = device;
    return true;
}

bool ParseDevices(std::string_view text, DeviceList *list, std::string *problem) {
    DeviceList found{};
    for (int line = 1; !text.empty(); ++line) {
        if (!AddDevice(TakeTextLine(&text), &found, problem)) {
            *problem = Translated("line %1: %2", line, *problem);
            return false;
        }
    }
    *list = found;
    return true;
}

bool ReadDevices(const std::string &path, DeviceList *list, std::string *problem) {
    std::string text;
    const OSErr status = ReadSharedFile(path, kMostBytes, &text);
    if (status != noErr && status != fnfErr && status != dirNFErr) {
        *problem = Translated(status == -1 ? ToTranslate("it is not a regular file of at most 64 KiB")
                                           : StatusText(status));
        return false;
    }
    return ParseDevices(text, list, problem);
}

ConnectedDevice DeviceOfDescription(const InputDescription &description) {
    ConnectedDevice device{};
    device.vendorID = description.vendor;
    device.productID = description.product;
    device.productVers = description.version;
    std::ignore = TakeSerial(description.serial, &device);
    std::memcpy(device.productName, description.name.data(),
                std::min(description.name.size(), sizeof device.productName - 1));
    return device;
}

} // namespace drevix
