#include "device/device_map.h"

#include "platform/base/field_words.h"
#include "platform/base/translation.h"

#include <algorithm>
#include <array>
#include <linux/input-event-codes.h>
#include <tuple>

namespace drevix {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kUsualRest{150};
constexpr std::int32_t kMostCounts = 1000000;
constexpr std::int32_t kFarthest = 1000000000; // middle and travel; twice this fits in 32 bits

constexpr std::uint8_t BitOf(InputKind kind) {
    return static_cast<std::uint8_t>(1U << static_cast<unsigned>(kind));
}
constexpr std::uint8_t kAxis = BitOf(InputKind::Axis);
constexpr std::uint8_t kDial = BitOf(InputKind::Dial);

// A control with two sides. A key can also be mapped to each side by name, except the rests.
struct TwoSided {
    std::string_view name;
    SlotIndex low;
    SlotIndex high;
    std::uint8_t kinds; // bits of BitOf
};
constexpr auto kTwoSided = std::to_array<TwoSided>({
    {"ringX", 0, 1, kAxis | kDial},
    {"ringY", 2, 3, kAxis | kDial},
    {"ringZ", 4, 5, kAxis | kDial},
    {"tuner", 6, 7, kDial},
});

// The keyword for an input, and the kernel events it can be.
struct KindWord {
    std::string_view word;
    InputKind kind;
    std::string_view form; // the form of its value, for messages
    bool (*takes)(std::uint16_t type);
};
constexpr auto kKindWords = std::to_array<KindWord>({
    {"axis", InputKind::Axis, ToTranslate("an axis such as ABS_X"),
     [](std::uint16_t type) { return type == kAxisEvents; }},
    {"dial", InputKind::Dial, ToTranslate("a dial such as REL_DIAL, or a counter such as ABS_WHEEL"),
     [](std::uint16_t type) { return type == kDialEvents || type == kAxisEvents; }},
    {"key", InputKind::Key, ToTranslate("a key or button such as KEY_F13 or BTN_0"),
     [](std::uint16_t type) { return type == kKeyEvents; }},
});

// Further keywords of an input.
struct Detail {
    std::string_view word;
    std::uint8_t kinds; // kinds that may have it
    std::int32_t least;
    std::int32_t most;
    void (*store)(MappedInput &input, std::int32_t number);
};
constexpr auto kDetails = std::to_array<Detail>({
    {"reverse", kAxis | kDial, 0, 1, [](auto &input, auto number) { input.isReversed = number != 0; }},
    {"centre", kAxis, -kFarthest, kFarthest, [](auto &input, auto number) { input.middle = number; }},
    {"travel", kAxis, 1, kFarthest, [](auto &input, auto number) { input.travel = number; }},
    {"per", kDial, 1, kMostCounts, [](auto &input, auto number) { input.countsPerStep = number; }},
    {"wraps", kDial, 2, kFarthest, [](auto &input, auto number) { input.wraps = number; }},
    {"rest", kDial, 1, static_cast<std::int32_t>(kLongestRest.count()),
     [](auto &input, auto number) { input.restsAfter = milliseconds{number}; }},
});

// One line being parsed.
struct Line {
    std::string_view control; // first word
    std::vector<FieldWord> words;
};

bool ReadLine(std::string_view text, Line *line, std::string *problem) {
    while (!text.empty() && !text.starts_with('#')) {
        FieldWord word;
        if (!TakeFieldWord(&text, &word, problem)) {
            return false;
        }
        if (line->control.empty() && word.value) {
            *problem = Translated("a line starts with \"device\" or a control, not with %1",
                                  QuotedWord(word.name) + "=");
            return false;
        }
        if (line->control.empty()) {
            line->control = word.name;
            continue;
        }
        if (!word.value) {
            *problem = Translated("%1 needs a value: %2", QuotedWord(word.name),
                                  std::string(word.name.substr(0, 40)) + "=...");
            return false;
        }
        if (std::ranges::count(line->words, word.name, &FieldWord::name) > 0) {
            *problem = Translated("%1 is given twice", word.name.substr(0, 40));
            return false;
        }
        line->words.push_back(word);
    }
    return true;
}

std::string UnknownWord(std::string_view word) {
    return Translated("unknown field %1", QuotedWord(word));
}

bool TakeIdentifier(const FieldWord &word, std::optional<std::uint16_t> *field, std::string *problem) {
    const std::optional<std::int64_t> number = FieldNumber(*word.value, 0, UINT16_MAX);
    if (!number) {
        *problem = Translated("%1 must be %2", word.name, Translated("a number up to 65535 or 0xFFFF"));
        return false;
    }
    *field = static_cast<std::uint16_t>(*number);
    return true;
}

bool ReadMatch(const Line &line, DeviceMatch *match, std::string *problem) {
    for (const FieldWord &word : line.words) {
        if (word.name == "name") {
            match->name = std::string(*word.value);
        } else if (word.name == "vendor" || word.name == "product") {
            if (!TakeIdentifier(word, word.name == "vendor" ? &match->vendor : &match->product, problem)) {
                return false;
            }
        } else {
            *problem = UnknownWord(word.name);
            return false;
        }
    }
    if (!match->vendor && !match->product && !match->name) {
        *problem = Translated("a device needs vendor=, product= or name=");
        return false;
    }
    return true;
}

// The control's slots and the kinds of input allowed for it; 0 for an unknown control.
std::uint8_t SlotsOfControl(std::string_view control, SlotIndex *low, SlotIndex *high) {
    const auto *two = std::ranges::find(kTwoSided, control, &TwoSided::name);
    if (two != kTwoSided.end()) {
        std::tie(*low, *high) = std::pair(two->low, two->high);
        return two->kinds;
    }
    const ControlSlot *one = FindControlSlot(control);
    const bool isPressed = one != nullptr && (one->group == ControlGroup::Buttons ||
                                              std::ranges::any_of(kTwoSided, [one](const TwoSided &row) {
                                                  return row.low == one->slot || row.high == one->slot;
                                              }));
    std::tie(*low, *high) = std::pair(kNoSlot, isPressed ? one->slot : kNoSlot);
    return isPressed ? BitOf(InputKind::Key) : std::uint8_t{0};
}

// The keywords for a set of kinds: "axis= or dial=".
std::string KindNames(std::uint8_t kinds) {
    std::string names;
    for (const KindWord &row : kKindWords) {
        if ((kinds & BitOf(row.kind)) != 0) {
            const std::string word = std::string(row.word) + "=";
            names = names.empty() ? word : Translated("%1 or %2", names, word);
        }
    }
    return names;
}

// Reads which event the input is.
bool ReadEvent(const Line &line, std::uint8_t kinds, MappedInput *input, std::string *problem) {
    const KindWord *kind = nullptr;
    for (const FieldWord &word : line.words) {
        const auto *row = std::ranges::find(kKindWords, word.name, &KindWord::word);
        if (row == kKindWords.end()) {
            continue;
        }
        if (kind != nullptr) {
            *problem = Translated("a line has one of axis=, dial= and key=");
            return false;
        }
        kind = row;
        if (!FindEventCode(*word.value, &input->event) || !kind->takes(input->event.type)) {
            *problem = Translated("%1 must be %2, not %3", word.name, Translated(row->form),
                                  QuotedWord(*word.value));
            return false;
        }
    }
    if (kind == nullptr || (kinds & BitOf(kind->kind)) == 0) {
        *problem = Translated("%1 takes %2", line.control, KindNames(kinds));
        return false;
    }
    input->kind = kind->kind;
    return true;
}

bool ReadDetails(const Line &line, MappedInput *input, std::string *problem) {
    for (const FieldWord &word : line.words) {
        if (std::ranges::count(kKindWords, word.name, &KindWord::word) > 0) {
            continue;
        }
        const auto *detail = std::ranges::find(kDetails, word.name, &Detail::word);
        if (detail == kDetails.end()) {
            *problem = UnknownWord(word.name);
            return false;
        }
        if ((detail->kinds & BitOf(input->kind)) == 0) {
            *problem = Translated("%1 is for %2", word.name, KindNames(detail->kinds));
            return false;
        }
        const std::optional<std::int64_t> number = FieldNumber(*word.value, detail->least, detail->most);
        if (!number) {
            *problem =
                Translated("%1 must be a number from %2 to %3", word.name, detail->least, detail->most);
            return false;
        }
        detail->store(*input, static_cast<std::int32_t>(*number));
    }
    return true;
}

bool IsOnRing(const MappedInput &input) {
    const ControlSlot *control = FindControlSlot(input.high);
    return control != nullptr && control->group == ControlGroup::Ring;
}

bool ReadInput(const Line &line, MappedInput *input, std::string *problem) {
    const std::uint8_t kinds = SlotsOfControl(line.control, &input->low, &input->high);
    if (kinds == 0) {
        *problem = Translated("unknown control %1", QuotedWord(line.control));
        return false;
    }
    input->countsPerStep = 1;
    if (!ReadEvent(line, kinds, input, problem) || !ReadDetails(line, input, problem)) {
        return false;
    }
    if (input->wraps != 0 && input->event.type == kDialEvents) {
        *problem = Translated("wraps is for a counter such as ABS_WHEEL: %1 tells how far it was turned",
                              EventCodeName(input->event));
        return false;
    }
    if (input->kind == InputKind::Dial && !IsOnRing(*input) && input->restsAfter != milliseconds{}) {
        *problem = Translated("rest is for the ring: the tuner has none");
        return false;
    }
    if (input->kind == InputKind::Dial && IsOnRing(*input) && input->restsAfter == milliseconds{}) {
        input->restsAfter = kUsualRest;
    }
    return true;
}

// Builds the maps of a text.
class MapReader {
  public:
    explicit MapReader(std::vector<MapProblem> *problems) : fProblems(problems) {}

    void Take(int number, std::string_view text) {
        Line line;
        std::string problem;
        if (!ReadLine(text, &line, &problem)) {
            fProblems->push_back({number, problem});
        } else if (line.control == "device") {
            TakeDevice(number, line);
        } else if (!line.control.empty()) {
            TakeInput(number, line);
        }
    }

    std::vector<DeviceMap> TakeMaps() {
        Finish();
        return std::move(fMaps);
    }

  private:
    // Consecutive device lines belong to one map; a device line after a control starts the next map.
    void TakeDevice(int number, const Line &line) {
        if (fHasControls) {
            Finish();
        }
        fDeviceLine = number;
        DeviceMatch match;
        std::string problem;
        if (ReadMatch(line, &match, &problem)) {
            fMap.devices.push_back(match);
        } else {
            fProblems->push_back({number, problem});
        }
    }

    void TakeInput(int number, const Line &line) {
        fHasControls = true;
        MappedInput input{};
        std::string problem;
        const bool isGood = ReadInput(line, &input, &problem);
        const auto earlier = std::ranges::find(fMap.inputs, input.event, &MappedInput::event);
        if (!isGood) {
            fProblems->push_back({number, problem});
        } else if (earlier != fMap.inputs.end()) {
            fProblems->push_back(
                {number, Translated("%1 has a control already, in line %2", EventCodeName(input.event),
                                    fLines[static_cast<std::size_t>(earlier - fMap.inputs.begin())])});
        } else if (fDeviceLine == 0) {
            fProblems->push_back({number, Translated("a \"device\" line must come before this")});
        } else {
            fMap.inputs.push_back(input);
            fLines.push_back(number);
        }
    }

    void Finish() {
        if (!fMap.devices.empty() && !fMap.inputs.empty()) {
            fMaps.push_back(std::move(fMap));
        } else if (fDeviceLine != 0 && !fHasControls) {
            fProblems->push_back({fDeviceLine, Translated("this device has no controls")});
        }
        fMap = {};
        fLines.clear();
        fHasControls = false;
        fDeviceLine = 0;
    }

    std::vector<MapProblem> *fProblems;
    std::vector<DeviceMap> fMaps;
    DeviceMap fMap;          // the one being parsed
    std::vector<int> fLines; // line numbers of its inputs
    int fDeviceLine = 0;     // line of its last device, or 0
    bool fHasControls = false;
};

bool Fits(const DeviceMatch &match, const InputDescription &device) {
    return (!match.vendor || *match.vendor == device.vendor) &&
           (!match.product || *match.product == device.product) &&
           (!match.name || *match.name == device.name);
}

bool HasInput(const InputDescription &device, const MappedInput &input) {
    const std::uint16_t code = input.event.code;
    switch (input.event.type) {
    case kKeyEvents:
        return code < device.keys.size() && device.keys.test(code);
    case kDialEvents:
        return code < device.dials.size() && device.dials.test(code);
    default:
        return FindAxis(device, code) != nullptr;
    }
}

} // namespace

std::vector<DeviceMap> ParseDeviceMaps(std::string_view text, std::vector<MapProblem> *problems) {
    MapReader reader(problems);
    for (int line = 1; !text.empty(); ++line) {
        reader.Take(line, TakeTextLine(&text));
    }
    return reader.TakeMaps();
}

bool MustLeaveAlone(const InputDescription &device) {
    return (device.keys.test(KEY_A) && device.keys.test(KEY_SPACE)) || device.name == kOwnInputDeviceName;
}

const DeviceMap *FindDeviceMap(std::span<const DeviceMap> maps, const InputDescription &device) {
    if (MustLeaveAlone(device)) {
        return nullptr;
    }
    const auto found = std::ranges::find_if(maps, [&](const DeviceMap &map) {
        return std::ranges::any_of(map.devices, [&](const auto &match) { return Fits(match, device); }) &&
               std::ranges::any_of(map.inputs, [&](const auto &input) { return HasInput(device, input); });
    });
    return found == maps.end() ? nullptr : &*found;
}

const InputAxis *FindAxis(const InputDescription &device, std::uint16_t code) {
    const auto found = std::ranges::find(device.axes, code, &InputAxis::code);
    return found == device.axes.end() ? nullptr : &*found;
}

} // namespace drevix
