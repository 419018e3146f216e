#include "platform/bus/process_names.h"

#include "platform/base/mac_roman.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace drevix {
namespace {

constexpr char kEscape = '_';
constexpr std::string_view kHexDigits = "0123456789abcdef";

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsPlain(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || IsDigit(c);
}

std::string LabelOf(std::string_view name) {
    std::string label;
    for (const char c : name) {
        // No part of a bus name may start with a digit.
        if (IsPlain(c) && !(label.empty() && IsDigit(c))) {
            label += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            label += {kEscape, kHexDigits[byte >> 4], kHexDigits[byte & 0xF]};
        }
    }
    return label;
}

// Lenient: the caller compares with the label that the name would have.
std::string NameOf(std::string_view label) {
    std::string name;
    for (std::size_t i = 0; i < label.size(); ++i) {
        if (label[i] != kEscape || i + 2 >= label.size()) {
            name += label[i];
            continue;
        }
        const std::size_t high = kHexDigits.find(label[i + 1]);
        const std::size_t low = kHexDigits.find(label[i + 2]);
        name += static_cast<char>((high << 4) | low);
        i += 2;
    }
    return name;
}

} // namespace

std::string BusNameOfProcess(const NamedProcess &process) {
    return std::string(kProcessNamespace) + "." + LabelOf(process.name) + ".p" + std::to_string(process.id);
}

bool ParseBusName(std::string_view busName, NamedProcess *process) {
    const std::string_view beginning = kProcessNamespace;
    const std::size_t dot = busName.rfind('.');
    if (!busName.starts_with(beginning) || dot <= beginning.size()) {
        return false;
    }
    const std::string_view number = busName.substr(std::min(dot + 2, busName.size()));
    NamedProcess found{0, NameOf(busName.substr(beginning.size() + 1, dot - beginning.size() - 1))};
    std::from_chars(number.data(), number.data() + number.size(), found.id);
    if (found.id == 0 || found.name.empty() || BusNameOfProcess(found) != busName) {
        return false;
    }
    *process = std::move(found);
    return true;
}

Str255 PascalProcessName(std::string_view name) {
    const std::string characters = MacRomanFromUtf8(name);
    Str255 result{};
    result[0] = static_cast<std::uint8_t>(std::min<std::size_t>(characters.size(), 255));
    std::copy_n(characters.begin(), result[0], result.begin() + 1);
    return result;
}

} // namespace drevix
