#include "helper/devices_file.h"

#include "platform/shared_file.h"
#include "platform/status.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <optional>

namespace drevix {
namespace {

constexpr std::string_view kBlanks = " \t\r";
constexpr std::size_t kSerialDigits = 14;
constexpr std::size_t kMostBytes = 65536; // of a file
constexpr std::size_t kShownBytes = 40;   // of a word that is no field

// Reads all of a text as a number.
std::optional<unsigned> ReadNumber(std::string_view text, int base) {
    unsigned number = 0;
    const char *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, base);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

std::optional<unsigned> ReadBounded(std::string_view text, unsigned most) {
    const bool isHex = text.starts_with("0x");
    const std::optional<unsigned> number = ReadNumber(text.substr(isHex ? 2 : 0), isHex ? 16 : 10);
    return number && *number <= most ? number : std::nullopt;
}

bool TakeIdentifier(std::string_view text, std::uint16_t *field) {
    const std::optional<unsigned> number = ReadBounded(text, UINT16_MAX);
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
    const std::optional<unsigned> number = ReadBounded(text, UINT8_MAX);
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
    device->productVers = static_cast<std::uint16_t>(ReadNumber(digits, 16).value_or(0));
    return AreDigits(digits);
}

bool TakeSerial(std::string_view text, ConnectedDevice *device) {
    if (text.size() != kSerialDigits) {
        return false;
    }
    device->serialNumber[0] = 1;
    for (std::size_t i = 0; i < kSerialDigits; i += 2) {
        const std::optional<unsigned> byte = ReadNumber(text.substr(i, 2), 16);
        if (!byte) {
            return false;
        }
        device->serialNumber[(kSerialDigits - i) / 2] = static_cast<std::uint8_t>(*byte);
    }
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

struct Field {
    std::string_view name;
    std::string_view form; // what it must be, for people
    bool (*take)(std::string_view text, ConnectedDevice *device);
};

constexpr auto kFields = std::to_array<Field>({
    {"version", "such as 1.05", TakeVersion},
    {"serial", "14 hexadecimal digits", TakeSerial},
    {"vendor", "a number up to 65535 or 0xFFFF", TakeVendor},
    {"product", "a number up to 65535 or 0xFFFF", TakeProduct},
    {"interface", "a number up to 255", TakeInterface},
    {"vendorName", "at most 127 bytes", TakeName<&ConnectedDevice::vendorName>},
    {"productName", "at most 127 bytes", TakeName<&ConnectedDevice::productName>},
});

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == text.npos ? std::string_view()
                              : text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

// Takes the next "field=value" off the front of a text.
bool TakeWord(std::string_view *text, ConnectedDevice *device, std::string *problem) {
    const std::size_t equals = std::min(text->find('='), text->size());
    const std::string_view name = text->substr(0, equals);
    const auto *field = std::ranges::find(kFields, name, &Field::name);
    if (equals == text->size() || field == kFields.end()) {
        const std::string_view word = name.substr(0, name.find_first_of(kBlanks)).substr(0, kShownBytes);
        *problem = "there is no field \"" + std::string(word) + "\"";
        return false;
    }
    text->remove_prefix(equals + 1);
    const bool isQuoted = text->starts_with('"');
    text->remove_prefix(isQuoted ? 1 : 0);
    const std::size_t end = std::min(isQuoted ? text->find('"') : text->find_first_of(kBlanks), text->size());
    if (isQuoted && end == text->size()) {
        *problem = "the quote of " + std::string(name) + " is not closed";
        return false;
    }
    if (!field->take(text->substr(0, end), device)) {
        *problem = std::string(name) + " must be " + std::string(field->form);
        return false;
    }
    text->remove_prefix(std::min(end + 1, text->size()));
    *text = Trimmed(*text);
    return true;
}

} // namespace

bool AddDevice(std::string_view line, DeviceList *list, std::string *problem) {
    std::string_view rest = Trimmed(line);
    if (rest.empty() || rest.starts_with('#')) {
        return true;
    }
    ConnectedDevice device{};
    while (!rest.empty()) {
        if (!TakeWord(&rest, &device, problem)) {
            return false;
        }
    }
    if (list->count >= kMostDevices) {
        *problem = "there may be " + std::to_string(kMostDevices) + " devices at most";
        return false;
    }
    list->device[list->count++] = device;
    return true;
}

bool ParseDevices(std::string_view text, DeviceList *list, std::string *problem) {
    DeviceList found{};
    for (int line = 1; !text.empty(); ++line) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        if (!AddDevice(text.substr(0, end), &found, problem)) {
            *problem = "line " + std::to_string(line) + ": " + *problem;
            return false;
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    *list = found;
    return true;
}

bool ReadDevices(const std::string &path, DeviceList *list, std::string *problem) {
    std::string text;
    const OSErr status = ReadSharedFile(path, kMostBytes, &text);
    if (status != noErr && status != fnfErr && status != dirNFErr) {
        *problem = status == -1 ? "it is no file of at most 64 KiB" : StatusText(status);
        return false;
    }
    return ParseDevices(text, list, problem);
}

} // namespace drevix
