#include "platform/plist/property_list_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <limits>

namespace drevix {
namespace {

// White space as XML 1.0 has it (production 3, S).
constexpr bool IsBlank(char character) {
    return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

std::string_view SkipBlanks(std::string_view text) {
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    return text;
}

std::string_view TrimBlanks(std::string_view text) {
    text = SkipBlanks(text);
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

// Dates

using std::chrono::sys_days;
using std::chrono::sys_seconds;
using Seconds = std::chrono::seconds;

constexpr sys_seconds kEpoch = sys_days(std::chrono::year(2001) / 1 / 1);
constexpr sys_seconds kFirstSecond = sys_days(std::chrono::year(1) / 1 / 1);
constexpr sys_seconds kLastSecond = sys_days(std::chrono::year(10000) / 1 / 1) - Seconds(1);
constexpr std::string_view kDatePattern = "0000-00-00T00:00:00Z"; // 0: any digit

bool FitsDatePattern(std::string_view text) {
    return std::ranges::equal(text, kDatePattern, [](char character, char wanted) {
        return wanted == '0' ? character >= '0' && character <= '9' : character == wanted;
    });
}

// Base 64

constexpr std::string_view kBase64Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kNoDigit = 64;
constexpr std::uint8_t kBlank = 65;
constexpr std::uint8_t kPadding = 66;

constexpr std::array<std::uint8_t, 256> kBase64Values = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(kNoDigit);
    for (std::size_t i = 0; i < kBase64Digits.size(); ++i) {
        values[static_cast<std::uint8_t>(kBase64Digits[i])] = static_cast<std::uint8_t>(i);
    }
    for (const char blank : {' ', '\t', '\r', '\n'}) {
        values[static_cast<std::uint8_t>(blank)] = kBlank;
    }
    values['='] = kPadding;
    return values;
}();

template <typename Integer>
void AppendDigits(std::string &out, Integer value) {
    std::array<char, 24> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    out.append(digits.data(), result.ptr);
}

} // namespace

std::optional<PropertyList> ParseIntegerText(std::string_view text) {
    text = TrimBlanks(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text = SkipBlanks(text.substr(1));
    }
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        base = 16;
        text.remove_prefix(2);
    }
    std::uint64_t magnitude = 0;
    const char *end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, magnitude, base);
    constexpr std::uint64_t kMostNegative = std::uint64_t{1} << 63;
    if (error != std::errc() || stopped != end || (negative && magnitude > kMostNegative)) {
        return std::nullopt;
    }
    return negative ? PropertyList(static_cast<std::int64_t>(0 - magnitude))
                    : PropertyListUnsigned(magnitude);
}

std::optional<double> ParseRealText(std::string_view text) {
    text = TrimBlanks(text);
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) {
            return std::nullopt;
        }
    }
    double value = 0;
    const char *end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, value);
    // "nan(...)" is C syntax, not ours.
    if (error != std::errc() || stopped != end || text.ends_with(')')) {
        return std::nullopt;
    }
    return value;
}

std::optional<PropertyListDate> ParseDateText(std::string_view text) {
    text = TrimBlanks(text);
    if (!FitsDatePattern(text)) {
        return std::nullopt;
    }
    const auto number = [&](std::size_t at, std::size_t digits) {
        int value = 0;
        std::from_chars(text.data() + at, text.data() + at + digits, value);
        return value;
    };
    const std::chrono::year_month_day day(std::chrono::year(number(0, 4)),
                                          std::chrono::month(static_cast<unsigned>(number(5, 2))),
                                          std::chrono::day(static_cast<unsigned>(number(8, 2))));
    const int hour = number(11, 2);
    const int minute = number(14, 2);
    const int second = number(17, 2);
    if (!day.ok() || hour > 23 || minute > 59 || second > 59 || sys_days(day) < kFirstSecond) {
        return std::nullopt;
    }
    const sys_seconds time =
        sys_days(day) + std::chrono::hours(hour) + std::chrono::minutes(minute) + Seconds(second);
    return PropertyListDate{static_cast<double>((time - kEpoch).count())};
}

std::optional<PropertyListData> ParseBase64Text(std::string_view text) {
    PropertyListData data;
    data.bytes.reserve(text.size() / 4 * 3);
    std::uint32_t group = 0;
    std::size_t digits = 0;
    std::size_t padding = 0;
    for (const char character : text) {
        const std::uint8_t value = kBase64Values[static_cast<std::uint8_t>(character)];
        if (value == kBlank) {
            continue;
        }
        if (value == kPadding) {
            ++padding;
            continue;
        }
        if (value == kNoDigit || padding > 0) {
            return std::nullopt;
        }
        group = (group << 6) | value;
        ++digits;
        // From a group's second digit on, each completes a byte.
        if (const std::size_t place = digits % 4; place != 1) {
            const std::size_t spare = place == 0 ? 0 : 8 - 2 * place;
            data.bytes.push_back(static_cast<char>(group >> spare));
        }
    }
    if (padding > 2 || (digits + padding) % 4 != 0) {
        return std::nullopt;
    }
    return data;
}

void AppendIntegerText(std::string &out, std::int64_t value) {
    AppendDigits(out, value);
}

void AppendIntegerText(std::string &out, std::uint64_t value) {
    AppendDigits(out, value);
}

void AppendRealText(std::string &out, double value) {
    if (std::isnan(value)) {
        out += "nan";
    } else if (std::isinf(value)) {
        out += value < 0 ? "-infinity" : "+infinity";
    } else {
        std::array<char, 32> digits{};
        const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
        out.append(digits.data(), result.ptr);
    }
}

void AppendDateText(std::string &out, PropertyListDate date) {
    constexpr auto kFirst = static_cast<double>((kFirstSecond - kEpoch).count());
    constexpr auto kLast = static_cast<double>((kLastSecond - kEpoch).count());
    const double seconds = std::isnan(date.seconds) ? 0 : std::clamp(std::floor(date.seconds), kFirst, kLast);
    const sys_seconds time = kEpoch + Seconds(static_cast<std::int64_t>(seconds));
    const auto days = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day day(days);
    const std::chrono::hh_mm_ss clock(time - days);
    std::array<char, kDatePattern.size()> text{};
    std::ranges::copy(kDatePattern, text.begin());
    const auto put = [&](std::size_t at, std::size_t digits, std::int64_t value) {
        for (std::size_t i = at + digits; i-- > at; value /= 10) {
            text[i] = static_cast<char>('0' + value % 10);
        }
    };
    put(0, 4, static_cast<int>(day.year()));
    put(5, 2, static_cast<unsigned>(day.month()));
    put(8, 2, static_cast<unsigned>(day.day()));
    put(11, 2, clock.hours().count());
    put(14, 2, clock.minutes().count());
    put(17, 2, clock.seconds().count());
    out.append(text.data(), text.size());
}

void AppendBase64Text(std::string &out, std::string_view bytes) {
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t j = i; j < i + 3; ++j) {
            group = (group << 8) | (j < bytes.size() ? static_cast<std::uint8_t>(bytes[j]) : 0U);
        }
        for (std::size_t j = 0; j < 4; ++j) {
            out.push_back(i + j <= bytes.size() ? kBase64Digits[(group >> (18 - 6 * j)) & 63] : '=');
        }
    }
}

} // namespace drevix
