#include "helper/stand_in.h"

#include "platform/base/field_words.h"
#include "platform/base/translation.h"
#include "platform/input/input_codes.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace drevix {
namespace {

std::optional<std::uint16_t> CodeOf(std::string_view name, std::uint16_t type) {
    EventCode event{};
    return FindEventCode(name, &event) && event.type == type ? std::optional(event.code) : std::nullopt;
}

bool TakeFile(std::string_view text, StandIn *standIn) {
    standIn->path = text;
    return !text.empty();
}

bool TakeStandInName(std::string_view text, StandIn *standIn) {
    standIn->description.name = text;
    return true;
}

template <std::uint16_t InputDescription::*kField>
bool TakeNumber(std::string_view text, StandIn *standIn) {
    const std::optional<std::int64_t> number = FieldNumber(text, 0, UINT16_MAX);
    standIn->description.*kField = static_cast<std::uint16_t>(number.value_or(0));
    return number.has_value();
}

bool TakeKey(std::string_view text, StandIn *standIn) {
    const std::optional<std::uint16_t> code = CodeOf(text, kKeyEvents);
    if (code) {
        standIn->description.keys.set(*code);
    }
    return code.has_value();
}

bool TakeDial(std::string_view text, StandIn *standIn) {
    const std::optional<std::uint16_t> code = CodeOf(text, kDialEvents);
    if (code) {
        standIn->description.dials.set(*code);
    }
    return code.has_value();
}

// It rests half-way.
bool TakeAxis(std::string_view text, StandIn *standIn) {
    const std::size_t first = std::min(text.find(','), text.size());
    const std::size_t second = std::min(text.find(',', first + 1), text.size());
    const std::optional<std::uint16_t> code = CodeOf(text.substr(0, first), kAxisEvents);
    if (!code || second == text.size()) {
        return false;
    }
    const auto least = FieldNumber(text.substr(first + 1, second - first - 1), INT32_MIN, INT32_MAX);
    const auto most = FieldNumber(text.substr(second + 1), INT32_MIN, INT32_MAX);
    if (!least || !most || *least >= *most) {
        return false;
    }
    standIn->description.axes.push_back({*code, static_cast<std::int32_t>(*least),
                                         static_cast<std::int32_t>(*most),
                                         static_cast<std::int32_t>((*least + *most) / 2)});
    return true;
}

constexpr auto kStandInFields = std::to_array<Field<StandIn>>({
    {"file", ToTranslate("the path of a pipe"), TakeFile},
    {"name", ToTranslate("a text"), TakeStandInName},
    {"vendor", ToTranslate("a number up to 65535 or 0xFFFF"), TakeNumber<&InputDescription::vendor>},
    {"product", ToTranslate("a number up to 65535 or 0xFFFF"), TakeNumber<&InputDescription::product>},
    {"version", ToTranslate("a number up to 65535 or 0xFFFF"), TakeNumber<&InputDescription::version>},
    {"axis", ToTranslate("such as ABS_X,-127,127"), TakeAxis},
    {"dial", ToTranslate("such as REL_WHEEL"), TakeDial},
    {"key", ToTranslate("such as BTN_0"), TakeKey},
});

} // namespace

bool ParseStandIn(std::string_view text, StandIn *standIn, std::string *problem) {
    StandIn found;
    for (std::string_view rest = TrimmedText(text); !rest.empty();) {
        if (!TakeField(kStandInFields, &rest, &found, problem)) {
            return false;
        }
    }
    if (found.path.empty()) {
        *problem = Translated("file= is missing");
        return false;
    }
    *standIn = std::move(found);
    return true;
}

} // namespace drevix
